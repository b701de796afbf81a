// SPDX-License-Identifier: MIT
// The command line of orn-overlay.
#pragma once

#include "overlay/frame.h"
#include "overlay/tracks_csv.h"

#include <cstdint>
#include <optional>
#include <string>

constexpr char kProgram[] = "orn-overlay";

struct Options {
    std::string scriptPath; // empty: none
    std::string fontPath;
    std::string tracksPath;
    overlay::TrackSettings tracks;
    overlay::FrameShape shape; // without a size only when check is set
    int64_t inputStride = 0;   // bytes from row to row of both planes; 0: rows without padding
    std::optional<int64_t> outputStride; // as that of the input unless given
    std::optional<double> framesPerSecond;
    bool stats = false;
    bool check = false;
};

// What the options are called in messages.
overlay::InputNames OptionNames();

// Nothing when --help or --version was asked for, which it has told. Throws tool::Failure.
std::optional<Options> ReadOptions(int argc, char **argv);
