// SPDX-License-Identifier: MIT
// What the element does from frame to frame: the engine of overlays, and what was set for it.
#pragma once

#include "frame_images.h"
#include "frame_numbers.h"

#include "overlay/engine.h"

#include <gst/video/video.h>
#include <optional>
#include <string>
#include <vector>

// Inputs of the engine, as sets of them.
using Inputs = unsigned;
constexpr Inputs kFont = 1;
constexpr Inputs kScript = 2;
constexpr Inputs kTracks = 4;
constexpr Inputs kClock = 8;
constexpr Inputs kAllInputs = kFont | kScript | kTracks | kClock;
constexpr Inputs kControl = 16;

struct Switches {
    bool drawRegions = true;
    bool enabled = true;
};

// What the user has set. Empty: nothing.
struct Wishes {
    std::string fontLocation;
    std::string scriptLocation;
    std::string tracksLocation;
    std::string tracksFormat;
    std::string classesLocation;
    std::string start; // of the clock in texts
    bool utc = false;
    int64_t maxGap = 0;
    std::optional<std::string> script;     // in place of the file
    std::vector<std::string> controlLines; // since they were taken
    Switches switches;
    Inputs changed = kAllInputs; // since they were loaded
};

// What is wrong with what the user has set, one thing each.
using Problems = std::vector<std::string>;

// Serves one thread at a time. May throw std::bad_alloc.
class Drawing {
  public:
    Drawing();

    // Loads what has changed. What is wrong stays as it was before.
    Problems Load(const Wishes &wishes);

    // What the engine noted since the last time.
    Problems TakeNotes();

    // Pictures of the script that don't fit the frames are left out.
    Problems SetFrames(const GstVideoInfo &frames);

    // The next frame is number 0.
    void Restart() {
        numbers.Restart();
    }

    // Has a look at the next frame, before it is known whether it can be written to. False when
    // nothing will be drawn into it.
    bool Begin(GstBuffer &buffer, const GstSegment &segment, const Switches &switches);

    // Draws into the frame that was begun. Throws overlay::Failure.
    void Draw(GstVideoFrame &frame);

  private:
    Problems SetScript(const Wishes &wishes);
    Problems SetTracks(const Wishes &wishes);
    Problems SetClock(const Wishes &wishes);
    overlay::FrameTime TimeOf(GstClockTime timeStamp, const GstSegment &segment) const;

    overlay::Engine engine;
    GstVideoInfo info;
    FrameNumbers numbers;
    FrameImages images;
    std::vector<overlay::TrackedBox> boxes;

    // Of the frame that was begun.
    int64_t number = 0;
    overlay::FrameTime time;
    overlay::Planes planes = overlay::Planes::None;
};
