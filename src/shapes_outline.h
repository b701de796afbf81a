// SPDX-License-Identifier: MIT
// The outline of an ellipse, whole or with its quarters moved apart.
#pragma once

#include "orn_min_render.h"

namespace orn {

// Draws the quarters of an ellipse of the given size, kMaxEllipseSize at the most, into the corners
// of a box that is at least as large. The box need not be ordered.
void DrawOutline(const OrnMinRenderImage *image, const OrnMinRenderRect &box, int64_t width,
                 int64_t height, OrnMinRenderColour colour);

} // namespace orn
