// SPDX-License-Identifier: MIT
// Commands of the script that show or measure text, one function each.
#pragma once

#include "canvas.h"

namespace overlay {

void DrawText(Canvas &canvas, const Overlay &overlay);
void DrawOutlined(Canvas &canvas, const Overlay &overlay);
void DrawLabel(Canvas &canvas, const Overlay &overlay);
void DrawParagraph(Canvas &canvas, const Overlay &overlay);
void DrawMeasure(Canvas &canvas, const Overlay &overlay);

// Draws the labels that have waited, upon everything that was drawn since.
void DrawWaitingLabels(Canvas &canvas);

} // namespace overlay
