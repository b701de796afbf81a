// SPDX-License-Identifier: MIT
// Progress is for people who wait at a terminal; figures are for them and for who asks.
#include "report.h"

#include "common/failure.h"
#include "common/streams.h"
#include "common/text.h"

#include <cstdio>

#include <sys/stat.h>
#include <unistd.h>

namespace {

constexpr Report::Seconds kProgressInterval{0.5};

// Into a pipe, the next program is the one to show progress.
bool WritesFile(const Options &options) {
    struct stat status {};
    if (!options.input.empty())
        return options.output != "-";
    return fstat(STDOUT_FILENO, &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

bool NoErrors(const overlay::Errors &errors) {
    for (const overlay::Error &error : errors)
        tool::Say(kProgram, error.Message());
    return errors.empty();
}

Report::Report(const Options &all)
    : options(all), terminal(isatty(STDERR_FILENO) != 0),
      progress(terminal && WritesFile(options)) {
}

void Report::Expect(double filmSeconds) {
    length = filmSeconds;
}

void Report::Drawn(Seconds drawing, double filmSeconds) {
    ++frames;
    drawingTime += drawing;
    position = filmSeconds;
    const Clock::time_point now = Clock::now();
    if (!progress || now - lastProgress < kProgressInterval)
        return;
    lastProgress = now;
    SayProgress(Seconds(now - start).count());
}

void Report::SayProgress(double seconds) const {
    std::string rest;
    if (length > position && position > 0) {
        const auto left = static_cast<long long>((length - position) / position * seconds + 0.5);
        rest = tool::Format(", %.1f times real time, %lld:%02lld left", position / seconds,
                            left / 60, left % 60);
    }
    std::fprintf(stderr, "\r%lld frames, %.0f fps%s \033[K", static_cast<long long>(frames),
                 static_cast<double>(frames) / seconds, rest.c_str());
}

void Report::Finish(const std::string &input) const {
    if (progress)
        std::fputs("\r\033[K", stderr);
    if (frames == 0)
        tool::Say(kProgram, "note: no frames on " + input);
    else if (options.stats || terminal)
        SayStats();
}

void Report::SayStats() const {
    const double total = Seconds(Clock::now() - start).count();
    const auto count = static_cast<double>(frames);
    std::string realTime;
    if (position > 0)
        realTime = tool::Format(" (%.1f times real time)", position / total);
    const double drawing = drawingTime.count();
    tool::Say(kProgram,
              tool::Format("%.0f frames in %.3f s: %.1f fps%s; drawing %.3f s: %.4f ms a frame, "
                           "%.2f %% of the time",
                           count, total, count / total, realTime.c_str(), drawing,
                           1000 * drawing / count, 100 * drawing / total));
}
