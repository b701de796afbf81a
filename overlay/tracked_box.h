// SPDX-License-Identifier: MIT
// A tracked box of one frame, and its places in pixels.
#pragma once

#include <cstdint>
#include <orn_min_render.h>
#include <string>

namespace overlay {

// Edges in pixels, right and bottom being the first outside.
struct TrackedBox {
    int64_t frame; // from 0; below, before the first
    int64_t id;    // negative: not tracked, just detected
    double left;
    double top;
    double right;
    double bottom;
    double confidence;
    std::string className = {}; // empty: not known
};

// With all edges multiplied by the sides of a frame.
TrackedBox Scaled(TrackedBox box, double width, double height);

// Between two boxes of a track: every edge moves evenly.
TrackedBox BoxBetween(const TrackedBox &from, const TrackedBox &to, int64_t frame);

// Rounded to whole pixels.
OrnMinRenderRect RectOf(const TrackedBox &box);

// The middle of the lower edge.
OrnMinRenderPoint FeetOf(const TrackedBox &box);

} // namespace overlay
