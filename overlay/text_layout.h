// SPDX-License-Identifier: MIT
// Where a text goes, so that the wanted part of it lies at the wanted place.
#pragma once

#include "canvas.h"

namespace overlay {

// How a command shows its texts.
struct TextShape {
    int32_t margin = 0;          // pixels around the measured text that belong to it
    int32_t reach = 0;           // beyond these, pixels that stay in the frame with the text
    Edge unasked = Edge::Origin; // what lies at the place when neither it nor an option says so
};

struct PlacedText {
    OrnMinRenderPoint pen; // where drawing starts
    OrnMinRenderRect rect; // of the text and its margin
};

// The overlay says where and which part, the canvas holds its coordinates.
PlacedText PlaceText(const Canvas &canvas, const Overlay &overlay, const char *text,
                     const TextShape &shape);

} // namespace overlay
