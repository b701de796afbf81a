// SPDX-License-Identifier: MIT
// Tracked boxes as tables: rows of comma-separated values as in MOTChallenge, frame,id,left,top,
// width,height,confidence and whatever follows.
#pragma once

#include "messages.h"
#include "tracks.h"

#include <limits>
#include <optional>

namespace overlay {

// Of edges, sides and confidences, either way from 0: sums, and what lies between two of them, stay
// finite, and it is far outside every frame.
constexpr double kMaxTrackReal = 1e12;

struct TrackSettings {
    // The number by which the file calls the first frame. Boxes may lie before a given one; if none
    // is given, it is 1, and a row before that is an error.
    std::optional<int64_t> firstFrame;
    int64_t maxGap = 0; // frames; rows of an id that lie no further apart are joined
    double minConfidence = -std::numeric_limits<double>::infinity();
};

// Reads a whole table. A row that can't be understood gives an error in place of a box.
Tracks ParseTracks(std::string_view content, const std::string &file, const TrackSettings &settings,
                   const InputNames &names, Errors &errors);

} // namespace overlay
