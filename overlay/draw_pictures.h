// SPDX-License-Identifier: MIT
// Commands of the script that draw bitmaps, pictures and parts of the frame, one function each.
#pragma once

#include "canvas.h"

namespace overlay {

void DrawBitmap(Canvas &canvas, const Overlay &overlay);
void DrawPicture(Canvas &canvas, const Overlay &overlay);
void DrawCopy(Canvas &canvas, const Overlay &overlay);

} // namespace overlay
