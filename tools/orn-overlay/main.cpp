// SPDX-License-Identifier: MIT
// orn-overlay: burns the overlays of a script into a video, or into raw frames from standard input,
// which go to standard output.
#include "options.h"
#include "raw_frames.h"
#include "report.h"
#include "track_files.h"
#include "video.h"

#include "common/failure.h"
#include "common/input_file.h"
#include "common/program.h"
#include "common/streams.h"
#include "overlay/engine.h"

#include <csignal>
#include <string>

#include <unistd.h>

namespace {

bool LoadTracks(overlay::Engine &engine, const Options &options) {
    overlay::TrackSettings settings = options.tracks;
    if (!options.classesPath.empty()) {
        overlay::Errors errors;
        settings.classes = overlay::ParseClassNames(tool::ReadText(options.classesPath),
                                                    options.classesPath, errors);
        if (!NoErrors(errors))
            return false;
    }
    return NoErrors(engine.SetTracks(ReadTrackFiles(options.tracksPath), settings));
}

// False when something is wrong, of which it has told.
bool Load(overlay::Engine &engine, const Options &options) {
    if (!options.fontPath.empty() && !NoErrors(engine.SetFont(options.fontPath)))
        return false;
    const std::string script =
        options.scriptPath.empty() ? std::string() : tool::ReadText(options.scriptPath);
    const bool scriptIsRight = NoErrors(engine.SetScript(script, options.scriptPath));
    if (options.tracksPath.empty())
        return scriptIsRight;
    return LoadTracks(engine, options) && scriptIsRight;
}

void DrawRawFrames(overlay::Engine &engine, const Options &options) {
    if (isatty(STDIN_FILENO) != 0 || isatty(STDOUT_FILENO) != 0)
        throw tool::Failure(
            tool::kBadUsage,
            "standard input and output are raw frames: use pipes or files, not a terminal");
    TellFrames(engine, options.shape);
    const FrameRate rate = options.framesPerSecond.value_or(FrameRate());
    RawFrames frames(options);
    const OrnMinRenderImage image = frames.Image();
    Report report(options);
    for (int64_t number = 0; frames.Read(); ++number) {
        const auto start = Report::Clock::now();
        engine.Draw(image, number, rate.TimeOf(number));
        report.Drawn(Report::Clock::now() - start,
                     options.framesPerSecond ? rate.SecondsOf(number + 1) : 0);
        TellNotes(engine);
        frames.Write();
    }
    report.Finish("standard input");
}

int Run(int argc, char **argv) {
    std::signal(SIGPIPE, SIG_IGN); // a closed output is reported like any other failure to write
    const std::optional<Options> options = ReadOptions(argc, argv);
    if (!options)
        return 0;
    overlay::Engine engine({OptionNames(), !options->tracksPath.empty(), options->shape.hasChroma,
                            options->clock, PictureFileDecoder()});
    if (!Load(engine, *options))
        return tool::kBadData;
    TellNotes(engine);
    if (options->check)
        return 0;
    if (options->input.empty())
        DrawRawFrames(engine, *options);
    else
        DrawVideo(engine, *options);
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    return tool::RunProgram(kProgram, argc, argv, Run);
}
