// SPDX-License-Identifier: MIT
// What one line of a script asks for.
#pragma once

#include "box_condition.h"
#include "font_set.h"
#include "frame.h"
#include "place.h"
#include "resources.h"
#include "text_file.h"
#include "timeline.h"

#include <array>

namespace overlay {

struct Canvas;
struct Overlay;
struct TextPiece;

// Draws an overlay into the frame of the canvas, which holds the overlay's places as pixels.
using DrawFunction = void (*)(Canvas &canvas, const Overlay &overlay);

// What gives a tracked box a colour of its own.
enum class Own { Nothing, Id, Class };

struct Paint {
    uint32_t rgb = 0;            // 0xrrggbb
    Own own = Own::Nothing;      // or else the tracked box's own colour
    OrnMinRenderColour colour{}; // rgb in the frames' colour space, once that is known
};

// Which part of a text lies at its place: an edge, or Origin, where the pen starts.
struct TextStyle {
    int32_t direction = OrnMinRenderTextDirection::Normal;
    std::optional<Edge> horizontal;
    std::optional<Edge> vertical;
    bool inside = false;    // moved into the frame
    bool avoids = false;    // labels and boxes; of a label
    bool hasMarkers = true; // of a paragraph's new lines
};

// A part of a text: as it stands, or a value that changes from frame to frame.
struct TextPiece {
    std::string (*value)(const Canvas &canvas, const TextPiece &piece) = nullptr;
    std::string argument; // of the value; without one, what the piece shows
    std::shared_ptr<TextFile> file;
};

// A command uses the members that its arguments fill.
struct Overlay {
    size_t line = 0; // of the script, from 1
    FrameRange frames;
    bool perBox = false;                  // drawn for each tracked box of the frame
    std::vector<BoxCondition> conditions; // that a box has to meet, all of them
    DrawFunction draw = nullptr;
    Planes planes = Planes::None;  // that it may change
    std::vector<Place> places;     // in the order of the script
    std::array<Paint, 2> paints{}; // the second: outline or background
    int32_t style = OrnMinRenderLineSolid;
    std::optional<Place> thickness; // else the library's own lines
    bool halfTransparent = false;
    FontChoice fontChoice; // of texts
    Font font;             // that fits the frames, once they are known
    TextStyle textStyle;
    std::vector<TextPiece> text;
    Bitmap bitmap;
    std::unique_ptr<Picture> picture; // of raw frames
    std::unique_ptr<StillFile> still; // or of one picture
};

} // namespace overlay
