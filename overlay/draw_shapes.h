// SPDX-License-Identifier: MIT
// Commands of the script that draw shapes, one function each.
#pragma once

#include "canvas.h"

namespace overlay {

// A filled rectangle; right and bottom are the first outside.
void FillRect(const Canvas &canvas, const OrnMinRenderRect &rect, OrnMinRenderColour colour);

// Widened to even edges, so that colour ends where luma does.
OrnMinRenderRect WholeSamples(const OrnMinRenderRect &rect);

void DrawBox(Canvas &canvas, const Overlay &overlay);
void DrawFill(Canvas &canvas, const Overlay &overlay);
void DrawHLine(Canvas &canvas, const Overlay &overlay);
void DrawVLine(Canvas &canvas, const Overlay &overlay);
void DrawLine(Canvas &canvas, const Overlay &overlay);
void DrawPolyline(Canvas &canvas, const Overlay &overlay);
void DrawLoop(Canvas &canvas, const Overlay &overlay);
void DrawPolygon(Canvas &canvas, const Overlay &overlay);
void DrawEllipse(Canvas &canvas, const Overlay &overlay);
void DrawDisc(Canvas &canvas, const Overlay &overlay);
void DrawRoundBox(Canvas &canvas, const Overlay &overlay);
void DrawRoundFill(Canvas &canvas, const Overlay &overlay);
void DrawTrail(Canvas &canvas, const Overlay &overlay);

} // namespace overlay
