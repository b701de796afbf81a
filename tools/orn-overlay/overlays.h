// SPDX-License-Identifier: MIT
// The overlays of a run: what they are made of, which may change between two frames, and their
// drawing.
#pragma once

#include "control_pipe.h"
#include "live_tracks.h"
#include "options.h"
#include "report.h"
#include "watched_files.h"

#include "overlay/engine.h"

#include <optional>

class Overlays {
  public:
    // The options must outlive this.
    explicit Overlays(const Options &all);

    // Reads what is there before the first frame. False when something is wrong, of which it has
    // told. Throws tool::Failure.
    bool Load();

    // The shape of the frames is known, and they are about to flow. Throws tool::Failure.
    void Begin(const overlay::FrameShape &shape);

    // Takes what has changed, waits for the frame's tracks, draws, and tells what it noted. Returns
    // how long drawing took. Throws tool::Failure.
    Report::Seconds Draw(const OrnMinRenderImage &image, int64_t number,
                         const overlay::FrameTime &time);

    // After the last frame. Throws tool::Failure when something had to be left out.
    void Finish();

  private:
    bool LoadFont();
    bool LoadScript();
    bool LoadTracks();
    void Reload();
    void Watch();
    void TakeChanges(int64_t number);
    void TellNotes();

    const Options &options;
    overlay::Engine engine;
    overlay::TrackSettings trackSettings;
    WatchedFiles watched;
    std::optional<LiveTracks> live;
    std::optional<ControlPipe> control;
};
