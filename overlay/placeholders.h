// SPDX-License-Identifier: MIT
// Texts with values that change from frame to frame: "{frame}" and its like.
#pragma once

#include "canvas.h"

namespace overlay {

// The overlay's text as this frame and box show it.
std::string TextOf(const Canvas &canvas, const Overlay &overlay);

} // namespace overlay
