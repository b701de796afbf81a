// orn-overlay: reads raw frames from standard input, burns the overlays of a script into each, and
// writes them to standard output.
#include "overlay_options.h"
#include "overlay_script.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr size_t kStreamBuffer = size_t{1} << 20;
constexpr Seconds kProgressInterval{0.5};

// ---- Inputs ----

// All errors of a file; false when there is one.
bool SayErrors(const std::string &path, const FileErrors &errors) {
    for (const FileErrors::Entry &error : errors.list)
        Say(path + ":" + std::to_string(error.line) + ": " + error.reason);
    if (!errors.complete)
        Say(path + ": too many errors, the rest is not checked");
    return errors.list.empty();
}

// Nothing when there are errors, of which it has told.
std::optional<std::vector<Overlay>> LoadScript(const Options &options) {
    FontStore fonts;
    if (!options.fontPath.empty())
        fonts.Get(options.fontPath, OrnMinRenderTextDirection::Normal);
    const ScriptSettings settings{options.fontPath, !options.tracksPath.empty(), options.colours,
                                  options.shape,
                                  std::filesystem::path(options.scriptPath).parent_path()};
    Script script;
    if (!options.scriptPath.empty())
        script = ParseScript(ReadFile(options.scriptPath), settings, fonts);
    if (!SayErrors(options.scriptPath, script.errors))
        return std::nullopt;
    const auto isPerBox = [](const Overlay &overlay) { return overlay.perBox; };
    if (settings.hasTracks &&
        std::none_of(script.overlays.begin(), script.overlays.end(), isPerBox)) {
        const Script shown = ParseScript(TrackScript(!options.fontPath.empty()), settings, fonts);
        script.overlays.insert(script.overlays.end(), shown.overlays.begin(), shown.overlays.end());
    }
    return script.overlays;
}

std::optional<Tracks> LoadTracks(const Options &options) {
    if (options.tracksPath.empty())
        return Tracks();
    FileErrors errors;
    Tracks tracks(ReadFile(options.tracksPath), options.tracks, errors);
    if (!SayErrors(options.tracksPath, errors))
        return std::nullopt;
    return tracks;
}

// ---- Streams ----

// False at the end of the input.
bool ReadFrame(Frame &frame, int64_t frameNumber) {
    const size_t count = frame.Read(stdin);
    if (std::ferror(stdin))
        throw FileFailure("standard input");
    if (count > 0 && count < frame.InputBytes())
        throw Failure("standard input: frame " + std::to_string(frameNumber) +
                      " is cut short: " + std::to_string(count) + " of " +
                      std::to_string(frame.InputBytes()) + " bytes; are size and format right?");
    return count > 0;
}

// Flushed, so that a reader sees the frame before the next one has come.
void WriteFrame(Frame &frame) {
    if (frame.Write(stdout) < frame.OutputBytes() || std::fflush(stdout) != 0)
        throw FileFailure("standard output");
}

// ---- What is told of the work ----

class Report {
  public:
    explicit Report(const Options &all)
        : options(all), terminal(isatty(STDERR_FILENO) != 0), progress(terminal && WritesFile()) {
    }

    void Drawn(int64_t frames, Seconds drawing) {
        drawingTime += drawing;
        const Clock::time_point now = Clock::now();
        if (!progress || now - lastProgress < kProgressInterval)
            return;
        lastProgress = now;
        std::fprintf(stderr, "\r%lld frames, %.0f fps ", static_cast<long long>(frames),
                     static_cast<double>(frames) / Seconds(now - start).count());
    }

    void Finish(int64_t frames) const {
        if (progress)
            std::fputs("\r", stderr);
        if (frames == 0)
            Say("note: no frames on standard input");
        else if (options.stats || terminal)
            SayStats(static_cast<double>(frames), Seconds(Clock::now() - start).count());
    }

  private:
    // Into a pipe, the next program is the one to show progress.
    static bool WritesFile() {
        struct stat status {};
        return fstat(STDOUT_FILENO, &status) == 0 && S_ISREG(status.st_mode);
    }

    void SayStats(double frames, double total) const {
        char realTime[64] = "";
        if (options.framesPerSecond)
            std::snprintf(realTime, sizeof realTime, " (%.1f times real time)",
                          frames / total / *options.framesPerSecond);
        char text[300];
        std::snprintf(text, sizeof text,
                      "%.0f frames in %.3f s: %.1f fps%s; drawing %.3f s: %.4f ms a frame, %.2f %% "
                      "of the time",
                      frames, total, frames / total, realTime, drawingTime.count(),
                      1000 * drawingTime.count() / frames, 100 * drawingTime.count() / total);
        Say(text);
    }

    const Options &options;
    bool terminal;
    bool progress;
    Clock::time_point start = Clock::now();
    Clock::time_point lastProgress = start;
    Seconds drawingTime{0};
};

// ---- Run ----

void DrawFrames(const std::vector<Overlay> &overlays, Frame &frame, Canvas &canvas,
                Report &report) {
    Timeline timeline(overlays);
    int64_t frameNumber = 0;
    for (; ReadFrame(frame, frameNumber); ++frameNumber) {
        const auto start = Clock::now();
        BeginFrame(canvas, frameNumber);
        for (const size_t i : timeline.Advance(frameNumber))
            DrawOverlay(canvas, overlays[i]);
        report.Drawn(frameNumber + 1, Clock::now() - start);
        WriteFrame(frame);
    }
    report.Finish(frameNumber);
}

void OverlayFrames(const Options &options, const std::vector<Overlay> &overlays,
                   const Tracks &tracks) {
    const std::unique_ptr<OrnMinRenderContext, decltype(&OrnMinRenderDestroyContext)> context(
        OrnMinRenderCreateContext(), OrnMinRenderDestroyContext);
    if (!context)
        throw std::bad_alloc();
    Frame frame(options.shape);
    Canvas canvas{frame.Image(),
                  options.shape,
                  context.get(),
                  tracks,
                  MakePalette(options.colours),
                  options.framesPerSecond.value_or(kUsualRate)};
    for (std::FILE *stream : {stdin, stdout})
        std::setvbuf(stream, nullptr, _IOFBF, kStreamBuffer);
    Report report(options);
    DrawFrames(overlays, frame, canvas, report);
}

int Run(const Options &options) {
    const std::optional<std::vector<Overlay>> overlays = LoadScript(options);
    const std::optional<Tracks> tracks = LoadTracks(options);
    if (!overlays || !tracks)
        return 1;
    if (options.check)
        return 0;
    if (isatty(STDIN_FILENO) != 0 || isatty(STDOUT_FILENO) != 0) {
        Say("standard input and output are raw frames: use pipes or files, not a terminal");
        return 2;
    }
    OverlayFrames(options, *overlays, *tracks);
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    std::signal(SIGPIPE, SIG_IGN); // a closed output is reported like any other failure to write
    Options options;
    if (const std::optional<int> code = ParseCommandLine(argc, argv, options))
        return *code;
    try {
        return Run(options);
    } catch (const Failure &failure) {
        Say(failure.what());
    } catch (const std::bad_alloc &) {
        Say("not enough memory");
    }
    return 1;
}
