// SPDX-License-Identifier: MIT
// Progress is for people who wait at a terminal; figures are for them and for who asks.
#include "report.h"

#include "common/streams.h"
#include "common/text.h"

#include <cstdio>
#include <string>

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr Report::Seconds kProgressInterval{0.5};

// Into a pipe, the next program is the one to show progress.
bool WritesFile() {
    struct stat status {};
    return fstat(STDOUT_FILENO, &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

Report::Report(const Options &all)
    : options(all), terminal(isatty(STDERR_FILENO) != 0), progress(terminal && WritesFile()) {
}

void Report::Drawn(int64_t frames, Seconds drawing) {
    drawingTime += drawing;
    const Clock::time_point now = Clock::now();
    if (!progress || now - lastProgress < kProgressInterval)
        return;
    lastProgress = now;
    std::fprintf(stderr, "\r%lld frames, %.0f fps ", static_cast<long long>(frames),
                 static_cast<double>(frames) / Seconds(now - start).count());
}

void Report::Finish(int64_t frames) const {
    if (progress)
        std::fputs("\r", stderr);
    if (frames == 0)
        tool::Say(kProgram, "note: no frames on standard input");
    else if (options.stats || terminal)
        SayStats(static_cast<double>(frames), Seconds(Clock::now() - start).count());
}

void Report::SayStats(double frames, double total) const {
    std::string realTime;
    if (options.framesPerSecond)
        realTime =
            tool::Format(" (%.1f times real time)", frames / total / *options.framesPerSecond);
    const double drawing = drawingTime.count();
    tool::Say(kProgram,
              tool::Format("%.0f frames in %.3f s: %.1f fps%s; drawing %.3f s: %.4f ms a frame, "
                           "%.2f %% of the time",
                           frames, total, frames / total, realTime.c_str(), drawing,
                           1000 * drawing / frames, 100 * drawing / total));
}
