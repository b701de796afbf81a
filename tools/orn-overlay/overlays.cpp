// SPDX-License-Identifier: MIT
#include "overlays.h"

#include "picture_decoder.h"
#include "signals.h"
#include "track_files.h"

#include "common/failure.h"
#include "common/input_file.h"
#include "common/streams.h"

Overlays::Overlays(const Options &all)
    : options(all), engine({OptionNames(), !all.tracksPath.empty(), all.shape.hasChroma, all.clock,
                            PictureFileDecoder()}),
      trackSettings(all.tracks) {
}

bool Overlays::LoadFont() {
    return options.fontPath.empty() || NoErrors(engine.SetFont(options.fontPath));
}

bool Overlays::LoadScript() {
    const std::string script =
        options.scriptPath.empty() ? std::string() : tool::ReadText(options.scriptPath);
    return NoErrors(engine.SetScript(script, options.scriptPath));
}

// Live ones come later.
bool Overlays::LoadTracks() {
    if (!options.classesPath.empty()) {
        overlay::Errors errors;
        trackSettings.classes = overlay::ParseClassNames(tool::ReadText(options.classesPath),
                                                         options.classesPath, errors);
        if (!NoErrors(errors))
            return false;
    }
    if (options.latestTracks && !AreLive(options.tracksPath))
        throw tool::Failure(tool::kBadUsage,
                            "--latest: is for tracks that come through a pipe, not " +
                                options.tracksPath);
    return options.tracksPath.empty() || AreLive(options.tracksPath) ||
           NoErrors(engine.SetTracks(ReadTrackFiles(options.tracksPath), trackSettings));
}

bool Overlays::Load() {
    if (!LoadFont())
        return false;
    const bool scriptIsRight = LoadScript();
    const bool tracksAreRight = LoadTracks();
    TellNotes();
    return scriptIsRight && tracksAreRight;
}

void Overlays::Begin(const overlay::FrameShape &shape) {
    if (!NoErrors(engine.SetFrames(shape)))
        throw tool::Failure(tool::kBadData, "nothing is drawn");
    if (!options.scriptPath.empty() || !options.fontPath.empty())
        HandleReloads();
    Watch();
    if (!options.controlPath.empty())
        control.emplace(options.controlPath);
    if (AreLive(options.tracksPath))
        live.emplace(LiveTracks::Settings{options.tracksPath, options.latestTracks, trackSettings,
                                          OptionNames(), shape});
}

void Overlays::Watch() {
    if (!options.watch)
        return;
    std::vector<std::string> files = engine.FontFiles();
    files.push_back(options.scriptPath);
    watched.Set(std::move(files));
}

// What can't be read may be on its way: what was there before is drawn on.
void Overlays::Reload() {
    try {
        if (!LoadFont() || !LoadScript())
            tool::Say(kProgram, "note: the script before is kept");
    } catch (const tool::Failure &failure) {
        tool::Say(kProgram, failure.what());
        tool::Say(kProgram, "note: the script before is kept");
    }
    Watch();
}

void Overlays::TakeChanges(int64_t number) {
    const bool requested = TakeReloadRequest();
    if ((options.watch && watched.HaveChanged()) || requested)
        Reload();
    if (control)
        control->Apply(engine);
    if (live)
        live->Give(engine, number);
}

Report::Seconds Overlays::Draw(const OrnMinRenderImage &image, int64_t number,
                               const overlay::FrameTime &time) {
    TakeChanges(number);
    const auto start = Report::Clock::now();
    engine.Draw(image, number, time);
    const Report::Seconds drawing = Report::Clock::now() - start;
    TellNotes();
    return drawing;
}

void Overlays::TellNotes() {
    for (const overlay::Error &note : engine.TakeNotes())
        tool::Say(kProgram, "note: " + note.Message());
}

void Overlays::Finish() {
    const size_t leftOut = live ? live->LeftOut() : 0;
    if (leftOut > 0)
        throw tool::Failure(tool::kBadData, options.tracksPath + ": " + std::to_string(leftOut) +
                                                (leftOut == 1 ? " line was" : " lines were") +
                                                " left out; all else is drawn");
}
