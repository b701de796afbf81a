// Overlays of orn-overlay: what one line of the script asks for, and the functions that draw it
// into a frame. Each function is one command of the script.
#pragma once

#include "overlay_colour.h"
#include "overlay_fonts.h"
#include "overlay_frame.h"
#include "overlay_place.h"
#include "overlay_tracks.h"
#include "pbm.h"

#include <array>
#include <memory>
#include <optional>
#include <orn_min_render.h>
#include <string>
#include <vector>

// The frame being drawn into, and what drawing into it takes.
struct Canvas {
    OrnMinRenderImage image; // without a chroma plane, the Y8 calls draw
    FrameShape shape;
    OrnMinRenderContext *context;
    const Tracks &tracks;
    Palette palette; // of the tracked boxes
    double framesPerSecond;
    int64_t frameNumber = 0;         // from 0
    const TrackedBox *box = nullptr; // that a command of tracks draws now
    Surroundings surroundings{};
    std::vector<int32_t> coordinates{}; // of the overlay being drawn, as pixels
    std::unique_ptr<Frame> spare{};     // another of the shape, once something was copied
};

struct Overlay;
using DrawFunction = void (*)(Canvas &canvas, const Overlay &overlay);

struct Paint {
    OrnMinRenderColour colour{};
    bool ofId = false; // the tracked box's own instead
};

// Which part of a text lies at its place: an edge, or Origin, where the pen starts.
struct TextStyle {
    int32_t direction = OrnMinRenderTextDirection::Normal;
    std::optional<Edge> horizontal;
    std::optional<Edge> vertical;
    bool inside = false; // moved into the frame
};

// A command uses the members that its arguments fill.
struct Overlay {
    int64_t firstFrame = 0;
    int64_t lastFrame = 0;
    bool perBox = false; // drawn for each tracked box of the frame
    DrawFunction draw = nullptr;
    std::vector<Place> places;     // in the order of the script
    std::array<Paint, 2> paints{}; // the second: outline or background
    int32_t style = OrnMinRenderLineSolid;
    bool halfTransparent = false;
    Font font;
    TextStyle textStyle;
    std::string text;
    bool hasPlaceholders = false;
    Bitmap bitmap;
    std::shared_ptr<Clip> clip;
};

constexpr char kFramePlaceholder[] = "{frame}";
constexpr char kTimePlaceholder[] = "{time}";
constexpr char kIdPlaceholder[] = "{id}";
constexpr char kConfidencePlaceholder[] = "{conf}";

// Prepares the canvas for a new frame.
void BeginFrame(Canvas &canvas, int64_t frameNumber);

// Draws an overlay once, or once for each tracked box; not where its places can't be resolved.
void DrawOverlay(Canvas &canvas, const Overlay &overlay);

// In these, the canvas holds the overlay's coordinates as pixels.
void DrawBox(Canvas &canvas, const Overlay &overlay);
void DrawFill(Canvas &canvas, const Overlay &overlay);
void DrawHLine(Canvas &canvas, const Overlay &overlay);
void DrawVLine(Canvas &canvas, const Overlay &overlay);
void DrawLine(Canvas &canvas, const Overlay &overlay);
void DrawPolygon(Canvas &canvas, const Overlay &overlay);
void DrawPolyline(Canvas &canvas, const Overlay &overlay);
void DrawLoop(Canvas &canvas, const Overlay &overlay);
void DrawEllipse(Canvas &canvas, const Overlay &overlay);
void DrawDisc(Canvas &canvas, const Overlay &overlay);
void DrawRoundBox(Canvas &canvas, const Overlay &overlay);
void DrawRoundFill(Canvas &canvas, const Overlay &overlay);
void DrawBitmap(Canvas &canvas, const Overlay &overlay);
void DrawPicture(Canvas &canvas, const Overlay &overlay);
void DrawCopy(Canvas &canvas, const Overlay &overlay);
void DrawText(Canvas &canvas, const Overlay &overlay);
void DrawOutlined(Canvas &canvas, const Overlay &overlay);
void DrawLabel(Canvas &canvas, const Overlay &overlay);
void DrawParagraph(Canvas &canvas, const Overlay &overlay);
void DrawMeasure(Canvas &canvas, const Overlay &overlay);
void DrawTrail(Canvas &canvas, const Overlay &overlay);
