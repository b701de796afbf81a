// SPDX-License-Identifier: MIT
// The command line of orn-overlay.
#pragma once

#include "overlay/clock.h"
#include "overlay/frame.h"
#include "overlay/track_settings.h"

#include <cstdint>
#include <optional>
#include <string>

constexpr char kProgram[] = "orn-overlay";

// One frame of a clip: its number, or the one that is shown at a time.
struct Moment {
    std::optional<int64_t> number;
    double seconds = 0; // from the clip's first frame
};

// Frames per second. As a fraction, what no double holds stays exact: 30000/1001.
struct FrameRate {
    double numerator = 25;
    int64_t denominator = 1;

    overlay::FrameTime TimeOf(int64_t number) const { // of a frame
        return {number * denominator, numerator};
    }
    double SecondsOf(int64_t count) const { // that so many frames last
        return static_cast<double>(count * denominator) / numerator;
    }
};

// A contact sheet.
struct Sheet {
    int32_t columns = 1;
    int32_t rows = 1;
};

struct Options {
    std::string input;  // a clip, its address, or "-"; empty: raw frames
    std::string output; // a file, or "-"
    std::string encoder;
    std::string encoderOptions;
    std::optional<Moment> frame; // make a picture of this
    std::optional<Sheet> sheet;
    bool keepPartial = false;

    std::string scriptPath; // empty: none
    std::string fontPath;
    std::string tracksPath;
    std::string classesPath;
    int64_t tracksDelay = 0;   // frames that wait for live tracks
    bool latestTracks = false; // live tracks are not waited for
    std::string controlPath;   // empty: none
    bool watch = false;
    overlay::TrackSettings tracks;
    overlay::ClockSettings clock;
    overlay::FrameShape shape; // with a size for raw frames, unless check is set
    bool rangeIsGiven = false; // otherwise a clip's own is used
    bool matrixIsGiven = false;
    int64_t inputStride = 0; // bytes from row to row of both planes; 0: rows without padding
    std::optional<int64_t> outputStride; // as that of the input unless given
    std::optional<FrameRate> framesPerSecond;
    bool stats = false;
    bool check = false;
};

// What the options are called in messages.
overlay::InputNames OptionNames();

// Nothing when --help or --version was asked for, which it has told. Throws tool::Failure.
std::optional<Options> ReadOptions(int argc, char **argv);
