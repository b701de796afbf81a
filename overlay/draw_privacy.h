// SPDX-License-Identifier: MIT
// Commands of the script that hide a part of the picture, one function each.
#pragma once

#include "canvas.h"

namespace overlay {

void DrawMask(Canvas &canvas, const Overlay &overlay);
void DrawMosaic(Canvas &canvas, const Overlay &overlay);

} // namespace overlay
