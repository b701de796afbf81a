// SPDX-License-Identifier: MIT
// Lines and rings of any thickness, as filled rectangles.
#pragma once

#include "canvas.h"

namespace overlay {

// How far a line of some thickness begins before its own row or column. One of two pixels lies as
// the library's do.
constexpr int32_t BeforeLine(int32_t thickness) {
    return (thickness - 1) / 2;
}

// All pixels whose distance from the line is at most half the thickness: so ends are round, and
// lines that share an end have no notch between them.
void FillThickLine(const Canvas &canvas, OrnMinRenderPoint from, OrnMinRenderPoint to,
                   int32_t thickness, OrnMinRenderColour colour);

struct RoundRect {
    double left;
    double top;
    double right; // the first outside, as bottom
    double bottom;
    double radiusX; // of its corners; cut down to half the sides
    double radiusY;
};

// What lies inside of it and, by less than the thickness, within its edges.
void FillRing(const Canvas &canvas, const RoundRect &outside, int32_t thickness,
              OrnMinRenderColour colour);

} // namespace overlay
