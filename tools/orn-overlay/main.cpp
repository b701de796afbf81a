// SPDX-License-Identifier: MIT
// orn-overlay: burns the overlays of a script into a video, or into raw frames from standard input,
// which go to standard output.
#include "options.h"
#include "overlays.h"
#include "raw_frames.h"
#include "report.h"
#include "video.h"

#include "common/failure.h"
#include "common/program.h"

#include <csignal>

#include <unistd.h>

namespace {

void DrawRawFrames(Overlays &overlays, const Options &options) {
    if (isatty(STDIN_FILENO) != 0 || isatty(STDOUT_FILENO) != 0)
        throw tool::Failure(
            tool::kBadUsage,
            "standard input and output are raw frames: use pipes or files, not a terminal");
    overlays.Begin(options.shape);
    const FrameRate rate = options.framesPerSecond.value_or(FrameRate());
    RawFrames frames(options);
    Report report(options);
    for (int64_t number = 0; frames.ReadAhead(options.tracksDelay); ++number) {
        const Report::Seconds drawing = overlays.Draw(frames.Image(), number, rate.TimeOf(number));
        report.Drawn(drawing, options.framesPerSecond ? rate.SecondsOf(number + 1) : 0);
        frames.Write();
    }
    report.Finish("standard input");
}

int Run(int argc, char **argv) {
    std::signal(SIGPIPE, SIG_IGN); // a closed output is reported like any other failure to write
    const std::optional<Options> options = ReadOptions(argc, argv);
    if (!options)
        return 0;
    Overlays overlays(*options);
    if (!overlays.Load())
        return tool::kBadData;
    if (options->check)
        return 0;
    if (options->input.empty())
        DrawRawFrames(overlays, *options);
    else
        DrawVideo(overlays, *options);
    overlays.Finish();
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    return tool::RunProgram(kProgram, argc, argv, Run);
}
