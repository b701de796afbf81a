// SPDX-License-Identifier: MIT
// Texts by calls of the library. They have luma alone; a background gives them chroma. The last
// text that a frame has shown is what places may count from.
#include "draw_text.h"

#include "draw_shapes.h"
#include "paragraph.h"
#include "placeholders.h"
#include "text_layout.h"

#include <cerrno>
#include <new>
#include <utility>

namespace overlay {

namespace {

// How far outlines reach beyond the measured text, by the library's word; as much again stays free
// between them and the edge of a label.
constexpr int32_t kOutlineReach = 3;
constexpr int32_t kLabelMargin = 2 * kOutlineReach;

constexpr TextShape kPlain{};
constexpr TextShape kOutlined{0, kOutlineReach, Edge::Origin};
constexpr TextShape kLabel{kLabelMargin, 0, Edge::Start};

// What the font lacks of a text that stays the same has been told before.
std::string ShownText(Canvas &canvas, const Overlay &overlay) {
    std::string text = TextOf(canvas, overlay);
    if (Changes(overlay))
        NoteGaps(canvas, overlay, text);
    return text;
}

// Places a text that others may count from now, and returns where its pen starts.
OrnMinRenderPoint PlaceLastText(Canvas &canvas, const Overlay &overlay, const char *text,
                                const TextShape &shape) {
    const PlacedText placed = PlaceText(canvas, overlay, text, shape);
    canvas.surroundings.text = placed.rect;
    return placed.pen;
}

// Where a new line starts, across the direction of writing.
int32_t LineStart(const Overlay &overlay, OrnMinRenderPoint pen) {
    const int32_t direction = overlay.textStyle.direction;
    const bool vertical =
        direction == OrnMinRenderTextDirection::Down || direction == OrnMinRenderTextDirection::Up;
    return vertical ? pen.y : pen.x;
}

// A glyph that can't be decoded for want of memory is left out by the library, which says nothing
// of it; malloc does.
template <typename Draw> void DrawAll(Draw draw) {
    errno = 0;
    draw();
    if (errno == ENOMEM)
        throw std::bad_alloc();
}

void DrawOutlinedText(const Canvas &canvas, const Overlay &overlay, const char *text,
                      OrnMinRenderPoint pen, uint8_t outline, uint8_t luma) {
    const int32_t lineStart = LineStart(overlay, pen);
    DrawAll([&] {
        OrnMinRenderDrawOutlineTextY8(canvas.context, &canvas.image, overlay.font.get(), text, &pen,
                                      lineStart, outline, luma);
    });
}

// The first label of a frame that avoids boxes makes them known.
void TellBoxes(Canvas &canvas) {
    if (canvas.labelPlaces.HasBoxes())
        return;
    for (const TrackedBox &box : canvas.tracks.At(canvas.frameNumber))
        canvas.labelPlaces.AddBox(RectOf(box));
    for (const TrackedBox &box : canvas.live.At(canvas.frameNumber))
        canvas.labelPlaces.AddBox(RectOf(box));
}

// Outside of lines of tracks, a label goes around the point that its places name.
OrnMinRenderRect AvoidingPlace(Canvas &canvas, const Overlay &overlay,
                               const OrnMinRenderRect &asked) {
    TellBoxes(canvas);
    const OrnMinRenderPoint at = PointAt(canvas, 0);
    if (canvas.box)
        return canvas.labelPlaces.Choose(
            {overlay.line, canvas.box->id, *canvas.surroundings.box, asked});
    return canvas.labelPlaces.Choose({overlay.line, 0, {at.x, at.y, at.x, at.y}, asked});
}

// Texts of backgrounds side by side stay level, so they move along with the corner.
PlacedLabel PlaceLabel(Canvas &canvas, const Overlay &overlay, std::string text) {
    const PlacedText placed = PlaceText(canvas, overlay, text.c_str(), kLabel);
    const OrnMinRenderRect chosen =
        overlay.textStyle.avoids ? AvoidingPlace(canvas, overlay, placed.rect) : placed.rect;
    const OrnMinRenderRect rect = canvas.shape.hasChroma ? WholeSamples(chosen) : chosen;
    canvas.surroundings.text = rect;
    canvas.labelPlaces.AddLabel(rect);
    const auto moved = [](int32_t pen, int32_t from, int32_t to) {
        return Saturated(int64_t{pen} + to - from);
    };
    return {&overlay,
            std::move(text),
            {moved(placed.pen.x, placed.rect.left, rect.left),
             moved(placed.pen.y, placed.rect.top, rect.top)},
            rect,
            ColourFor(canvas, overlay.paints[0]),
            ColourFor(canvas, overlay.paints[1])};
}

// The background gives the text its chroma; an outline in the background's luma keeps neighbouring
// glyphs apart.
void DrawPlacedLabel(const Canvas &canvas, const PlacedLabel &label) {
    FillRect(canvas, label.rect, label.background);
    DrawOutlinedText(canvas, *label.overlay, label.text.c_str(), label.pen, label.background.y,
                     label.colour.y);
}

} // namespace

void DrawText(Canvas &canvas, const Overlay &overlay) {
    const std::string text = ShownText(canvas, overlay);
    OrnMinRenderPoint pen = PlaceLastText(canvas, overlay, text.c_str(), kPlain);
    const int32_t lineStart = LineStart(overlay, pen);
    DrawAll([&] {
        OrnMinRenderDrawTextY8(canvas.context, &canvas.image, overlay.font.get(), text.c_str(),
                               &pen, lineStart, ColourFor(canvas, overlay.paints[0]).y);
    });
}

void DrawOutlined(Canvas &canvas, const Overlay &overlay) {
    const std::string text = ShownText(canvas, overlay);
    DrawOutlinedText(
        canvas, overlay, text.c_str(), PlaceLastText(canvas, overlay, text.c_str(), kOutlined),
        ColourFor(canvas, overlay.paints[1]).y, ColourFor(canvas, overlay.paints[0]).y);
}

void DrawLabel(Canvas &canvas, const Overlay &overlay) {
    PlacedLabel label = PlaceLabel(canvas, overlay, ShownText(canvas, overlay));
    if (overlay.perBox && overlay.textStyle.avoids)
        canvas.waitingLabels.push_back(std::move(label));
    else
        DrawPlacedLabel(canvas, label);
}

void DrawWaitingLabels(Canvas &canvas) {
    for (const PlacedLabel &label : canvas.waitingLabels)
        DrawPlacedLabel(canvas, label);
    canvas.waitingLabels.clear();
}

void DrawParagraph(Canvas &canvas, const Overlay &overlay) {
    const std::string text = ShownText(canvas, overlay);
    const LineShape lines{canvas.context, overlay.font.get(), canvas.coordinates[2],
                          overlay.textStyle.hasMarkers ? "- " : ""};
    if (!text.empty() && lines.width > 0) // a percentage of the frame may come to nothing
        DrawPlacedLabel(canvas, PlaceLabel(canvas, overlay, FitLines(text, lines)));
}

void DrawMeasure(Canvas &canvas, const Overlay &overlay) {
    PlaceLastText(canvas, overlay, ShownText(canvas, overlay).c_str(), kPlain);
}

} // namespace overlay
