// Overlays of orn-overlay: what one line of the script asks for, and the functions that draw it
// into a frame. Each function is one command of the script.
#pragma once

#include "pbm.h"

#include <array>
#include <orn_min_render.h>
#include <string>
#include <vector>

// The frame being drawn into, and what drawing into it takes.
struct Canvas {
    OrnMinRenderImage image; // without a chroma plane, the Y8 calls draw
    OrnMinRenderImage spare; // of the same size, for what is copied within the frame
    OrnMinRenderContext *context;
    OrnMinRenderFont *font; // null when the script draws no text
    double framesPerSecond;
    int64_t frameNumber; // from 0
};

struct Overlay;
using DrawFunction = void (*)(const Canvas &canvas, const Overlay &overlay);

// A command uses the members that its arguments fill.
struct Overlay {
    int64_t firstFrame = 0;
    int64_t lastFrame = 0;
    DrawFunction draw = nullptr;
    std::array<int32_t, 6> coordinates{};        // in the order of the script
    std::array<OrnMinRenderColour, 2> colours{}; // the second: outline or background
    int32_t style = OrnMinRenderLineSolid;
    bool halfTransparent = false;
    std::vector<OrnMinRenderPoint> points;
    std::string text;
    Bitmap bitmap;
    bool hasPlaceholders = false;
};

constexpr char kFramePlaceholder[] = "{frame}";
constexpr char kTimePlaceholder[] = "{time}";

void DrawBox(const Canvas &canvas, const Overlay &overlay);
void DrawFill(const Canvas &canvas, const Overlay &overlay);
void DrawHLine(const Canvas &canvas, const Overlay &overlay);
void DrawVLine(const Canvas &canvas, const Overlay &overlay);
void DrawLine(const Canvas &canvas, const Overlay &overlay);
void DrawPolygon(const Canvas &canvas, const Overlay &overlay);
void DrawPolyline(const Canvas &canvas, const Overlay &overlay);
void DrawLoop(const Canvas &canvas, const Overlay &overlay);
void DrawEllipse(const Canvas &canvas, const Overlay &overlay);
void DrawDisc(const Canvas &canvas, const Overlay &overlay);
void DrawRoundBox(const Canvas &canvas, const Overlay &overlay);
void DrawRoundFill(const Canvas &canvas, const Overlay &overlay);
void DrawBitmap(const Canvas &canvas, const Overlay &overlay);
void DrawCopy(const Canvas &canvas, const Overlay &overlay);
void DrawText(const Canvas &canvas, const Overlay &overlay);
void DrawOutlined(const Canvas &canvas, const Overlay &overlay);
void DrawLabel(const Canvas &canvas, const Overlay &overlay);
void DrawParagraph(const Canvas &canvas, const Overlay &overlay);
