// SPDX-License-Identifier: MIT
// Regions that detectors and trackers have attached to buffers, as the tracked boxes of a script.
#pragma once

#include "overlay/tracks.h"

#include <gst/gst.h>
#include <vector>

// Replaces the boxes by those of the buffer's regions. Of a region without a confidence it is 1;
// one without an id is not tracked.
void ReadRegions(GstBuffer &buffer, std::vector<overlay::TrackedBox> &boxes);
