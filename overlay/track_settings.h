// SPDX-License-Identifier: MIT
// How files of tracks are written, and what of them is wanted.
#pragma once

#include "class_names.h"
#include "messages.h"

#include <limits>
#include <optional>

namespace overlay {

enum class TrackFormat {
    FromContent, // told by the first line
    Mot,         // frame,id,left,top,width,height,confidence,class,... as in MOTChallenge
    JsonLines,   // {"frame": 12, "boxes": [{"id": 3, "box": [left, top, right, bottom], ...}]}
    Yolo,        // frame class x y width height confidence id, in shares of the frame
    Coco,        // one array of {"image_id": 12, "bbox": [left, top, width, height], ...}
    Csv,         // with a first row that names the columns
};

// Of its name: mot, jsonl, yolo, coco or csv.
std::optional<TrackFormat> TrackFormatOf(std::string_view name);

struct TrackSettings {
    // The number by which the file calls the first frame. Boxes may lie before a given one; if none
    // is given, it is 1, and a row before that is an error.
    std::optional<int64_t> firstFrame = {};
    int64_t maxGap = 0; // frames; rows of an id that lie no further apart are joined
    double minConfidence = -std::numeric_limits<double>::infinity();
    TrackFormat format = TrackFormat::FromContent;
    ClassNames classes = {};
};

} // namespace overlay
