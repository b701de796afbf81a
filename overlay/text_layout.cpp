// SPDX-License-Identifier: MIT
// Texts are measured from a pen at 0, then moved: a coordinate names the wanted part of the text.
#include "text_layout.h"

#include <algorithm>

namespace overlay {

namespace {

// Of one axis: a text from start up to end, when its pen starts at 0.
struct Extent {
    int64_t start;
    int64_t end;
};

// Where the pen has to start so that the wanted part of the text lies at a coordinate.
int64_t PenFor(int32_t at, Edge part, const Extent &text) {
    switch (part) {
    case Edge::Start:
        return at - text.start;
    case Edge::Middle:
        return at - (text.start + text.end) / 2;
    case Edge::End:
        return at - text.end;
    default:
        return at;
    }
}

// The pen start nearest to the wanted one that keeps the text inside 0..size; a text that is too
// long starts at 0.
int64_t PenInside(int64_t pen, const Extent &text, int32_t size) {
    const int64_t latest = std::max<int64_t>(size - (text.end - text.start), 0);
    return std::clamp<int64_t>(pen + text.start, 0, latest) - text.start;
}

// What is asked for, or else the edge of the frame that the place names.
Edge PartAt(const std::optional<Edge> &asked, const Place &place, Edge unasked) {
    const bool named =
        place.edge == Edge::Middle || (place.edge != Edge::Origin && place.source == Source::Frame);
    return asked.value_or(named ? place.edge : unasked);
}

} // namespace

PlacedText PlaceText(const Canvas &canvas, const Overlay &overlay, const char *text,
                     const TextShape &shape) {
    OrnMinRenderPoint end{0, 0};
    OrnMinRenderRect r{};
    OrnMinRenderGetTextRect(canvas.context, overlay.font.get(), text, &end, 0, &r);
    const Extent x{int64_t{r.left} - shape.margin, int64_t{r.right} + shape.margin};
    const Extent y{int64_t{r.top} - shape.margin, int64_t{r.bottom} + shape.margin};
    const TextStyle &style = overlay.textStyle;
    const Edge partX = PartAt(style.horizontal, overlay.places[0], shape.unasked);
    const Edge partY = PartAt(style.vertical, overlay.places[1], shape.unasked);
    int64_t penX = PenFor(canvas.coordinates[0], partX, x);
    int64_t penY = PenFor(canvas.coordinates[1], partY, y);
    if (style.inside) {
        penX = PenInside(penX, {x.start - shape.reach, x.end + shape.reach}, canvas.shape.width);
        penY = PenInside(penY, {y.start - shape.reach, y.end + shape.reach}, canvas.shape.height);
    }
    const OrnMinRenderRect rect{Saturated(penX + x.start), Saturated(penY + y.start),
                                Saturated(penX + x.end), Saturated(penY + y.end)};
    return {{Saturated(penX), Saturated(penY)}, rect};
}

} // namespace overlay
