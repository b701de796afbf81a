// SPDX-License-Identifier: MIT
// The frame being drawn into, and what drawing into it takes.
#pragma once

#include "class_colours.h"
#include "clock.h"
#include "colour.h"
#include "frame.h"
#include "frame_memory.h"
#include "glyph_gaps.h"
#include "label_places.h"
#include "live_boxes.h"
#include "notes.h"
#include "overlay.h"
#include "place.h"
#include "tracks.h"

#include <algorithm>

namespace overlay {

// A label or paragraph that has its place.
struct PlacedLabel {
    const Overlay *overlay;
    std::string text;
    OrnMinRenderPoint pen;
    OrnMinRenderRect rect; // of the background
    OrnMinRenderColour colour;
    OrnMinRenderColour background;
};

struct Canvas {
    OrnMinRenderContext *context = nullptr;
    FrameShape shape; // without chroma, the Y8 calls draw
    Palette palette;  // of the tracked boxes
    Tracks tracks;
    LiveBoxes live;
    GlyphGaps gaps; // of the script
    Notes notes;
    ClassColours classColours; // of all boxes so far
    ClockSettings clock;
    FrameRate frameRate;

    OrnMinRenderImage image{};
    int64_t frameNumber = 0;
    FrameTime time;
    int64_t clockTime = 0;           // of this frame, in nanoseconds since 1970
    const TrackedBox *box = nullptr; // that a command of tracks draws now
    bool boxIsLive = false;          // and not one of tracks
    Surroundings surroundings{};
    std::vector<int32_t> coordinates; // the places of the overlay being drawn, as pixels
    LabelPlaces labelPlaces;
    std::vector<PlacedLabel> waitingLabels; // for all lines of tracks to be drawn
    std::optional<FrameMemory> spare;       // another frame of the shape, once something was copied
};

// The first four coordinates, in order: the library's calls differ in what reversed corners draw.
inline OrnMinRenderRect Corners(const Canvas &canvas) {
    const auto &c = canvas.coordinates;
    return {std::min(c[0], c[2]), std::min(c[1], c[3]), std::max(c[0], c[2]), std::max(c[1], c[3])};
}

// Coordinates i and i + 1.
inline OrnMinRenderPoint PointAt(const Canvas &canvas, size_t i) {
    return {canvas.coordinates[i], canvas.coordinates[i + 1]};
}

// Notes what the overlay's font lacks of a text, and was not noted of the same line before.
void NoteGaps(Canvas &canvas, const Overlay &overlay, const std::string &text);

// The colour of an overlay's paint; for colours of ids, that of the box being drawn.
OrnMinRenderColour ColourFor(const Canvas &canvas, const Paint &paint);

// Draws an overlay once, or once for each tracked box of the frame; not where its places count from
// what is not there.
void DrawOverlay(Canvas &canvas, const Overlay &overlay);

} // namespace overlay
