// SPDX-License-Identifier: MIT
// Tracked boxes as JSON.
#pragma once

#include "track_settings.h"
#include "tracked_box.h"

#include <vector>

namespace overlay {

// Reads a line such as {"frame": 12, "boxes": [{"id": 3, "class": "person", "conf": 0.91,
// "box": [left, top, right, bottom]}]}, adds its boxes and returns its frame. Throws Failure, and
// has added those before the wrong one then.
int64_t ParseJsonLine(std::string_view line, const TrackSettings &settings, const InputNames &names,
                      std::vector<TrackedBox> &boxes);

// Reads a whole file of COCO results: an array of {"image_id": 12, "category_id": 1,
// "bbox": [left, top, width, height], "score": 0.91}, where "track_id" may stand, too.
std::vector<TrackedBox> ParseCoco(std::string_view content, const std::string &file,
                                  const TrackSettings &settings, const InputNames &names,
                                  Errors &errors);

} // namespace overlay
