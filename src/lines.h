// SPDX-License-Identifier: MIT
// Lines two pixels thick. Axis-aligned ones clip by clamping their ends, sloped ones by
// intersection.
#pragma once

#include "orn_min_render.h"

namespace orn {

// Cuts the segment down to columns 0..xmax and rows 0..ymax (both included) by Cohen-Sutherland.
// False: none of it lies there, and the points are of no further use.
bool ClipLine(OrnMinRenderPoint *p0, OrnMinRenderPoint *p1, int32_t xmax, int32_t ymax);

} // namespace orn
