// SPDX-License-Identifier: MIT
// Shapes by calls of the library. Where a shape has a call for frames with a chroma plane and one
// for frames without, the frame decides; the others leave out a missing plane by themselves.
#include "draw_shapes.h"

#include "thick_shapes.h"

#include <algorithm>
#include <limits>

namespace overlay {

namespace {

constexpr int32_t kMaxInt32 = std::numeric_limits<int32_t>::max();

std::vector<OrnMinRenderPoint> AllPoints(const Canvas &canvas) {
    std::vector<OrnMinRenderPoint> points;
    for (size_t i = 0; i < canvas.coordinates.size(); i += 2)
        points.push_back(PointAt(canvas, i));
    return points;
}

int32_t Thickness(const Canvas &canvas, const Overlay &overlay) {
    return PixelsOf(*overlay.thickness, canvas.shape.height);
}

// A line of some thickness along one that is told as a rectangle without a width or a height.
void FillAlong(const Canvas &canvas, const Overlay &overlay, OrnMinRenderRect line) {
    const int32_t thickness = Thickness(canvas, overlay);
    const auto widen = [thickness](int32_t &first, int32_t &end) {
        const int64_t start = int64_t{first} - BeforeLine(thickness);
        first = Saturated(start);
        end = Saturated(start + thickness);
    };
    const bool isVertical = overlay.places[1].axis == Axis::Y;
    isVertical ? widen(line.left, line.right) : widen(line.top, line.bottom);
    FillRect(canvas, line, ColourFor(canvas, overlay.paints[0]));
}

// more: columns and rows that the outline of the library has from right and bottom on.
void DrawRing(const Canvas &canvas, const Overlay &overlay, OrnMinRenderPoint radii, int more) {
    const OrnMinRenderRect rect = Corners(canvas);
    FillRing(canvas,
             {double(rect.left), double(rect.top), double(rect.right) + more,
              double(rect.bottom) + more, double(radii.x), double(radii.y)},
             Thickness(canvas, overlay), ColourFor(canvas, overlay.paints[0]));
}

void DrawSegment(const Canvas &canvas, const Overlay &overlay, OrnMinRenderPoint from,
                 OrnMinRenderPoint to) {
    const OrnMinRenderColour colour = ColourFor(canvas, overlay.paints[0]);
    if (overlay.thickness)
        return FillThickLine(canvas, from, to, Thickness(canvas, overlay), colour);
    if (canvas.shape.hasChroma)
        OrnMinRenderDrawLineYUV420SP(canvas.context, &canvas.image, from, to, colour,
                                     overlay.style);
    else
        OrnMinRenderDrawLineY8(canvas.context, &canvas.image, from, to, colour.y, overlay.style);
}

void DrawSegments(const Canvas &canvas, const Overlay &overlay,
                  const std::vector<OrnMinRenderPoint> &points) {
    for (size_t i = 1; i < points.size(); ++i)
        DrawSegment(canvas, overlay, points[i - 1], points[i]);
}

// In luma alone, the library's dashed horizontal lines are one row thick, and so are those of its
// frames; with chroma, they are two.
void DrawSecondDashes(const Canvas &canvas, const Overlay &overlay, int32_t x0, int32_t x1,
                      int32_t y) {
    if (overlay.style == OrnMinRenderLineDashed && y < canvas.shape.height)
        OrnMinRenderDrawHLineY8(canvas.context, &canvas.image, x0, x1, y + 1,
                                ColourFor(canvas, overlay.paints[0]).y, overlay.style);
}

} // namespace

void FillRect(const Canvas &canvas, const OrnMinRenderRect &rect, OrnMinRenderColour colour) {
    if (canvas.shape.hasChroma)
        OrnMinRenderFillRectYUV420SP(canvas.context, &canvas.image, &rect, colour);
    else
        OrnMinRenderFillRectY8(canvas.context, &canvas.image, &rect, colour.y);
}

OrnMinRenderRect WholeSamples(const OrnMinRenderRect &rect) {
    const auto up = [](int32_t edge) { return Saturated(int64_t{edge} + (edge & 1)); };
    return {rect.left & ~1, rect.top & ~1, up(rect.right), up(rect.bottom)};
}

void DrawBox(Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(canvas);
    if (overlay.thickness) // inside of the frame that else is drawn, which holds right and bottom
        return DrawRing(canvas, overlay, {0, 0}, 1);
    const OrnMinRenderColour colour = ColourFor(canvas, overlay.paints[0]);
    if (canvas.shape.hasChroma)
        return OrnMinRenderDrawFrameYUV420SP(canvas.context, &canvas.image, &rect, colour,
                                             overlay.style);
    OrnMinRenderDrawFrameY8(canvas.context, &canvas.image, &rect, colour.y, overlay.style);
    DrawSecondDashes(canvas, overlay, rect.left, rect.right, rect.top);
    DrawSecondDashes(canvas, overlay, rect.left, rect.right, Saturated(int64_t{rect.bottom} - 1));
}

void DrawFill(Canvas &canvas, const Overlay &overlay) {
    FillRect(canvas, Corners(canvas), ColourFor(canvas, overlay.paints[0]));
}

void DrawHLine(Canvas &canvas, const Overlay &overlay) {
    const int32_t x0 = canvas.coordinates[0];
    const int32_t x1 = canvas.coordinates[1];
    const int32_t y = canvas.coordinates[2];
    if (overlay.thickness)
        return FillAlong(canvas, overlay, {std::min(x0, x1), y, std::max(x0, x1), y});
    const OrnMinRenderColour colour = ColourFor(canvas, overlay.paints[0]);
    if (canvas.shape.hasChroma)
        return OrnMinRenderDrawHLineYUV420SP(canvas.context, &canvas.image, x0, x1, y, colour,
                                             overlay.style);
    OrnMinRenderDrawHLineY8(canvas.context, &canvas.image, x0, x1, y, colour.y, overlay.style);
    DrawSecondDashes(canvas, overlay, x0, x1, y);
}

void DrawVLine(Canvas &canvas, const Overlay &overlay) {
    const int32_t x = canvas.coordinates[0];
    const auto [y0, y1] = std::minmax(canvas.coordinates[1], canvas.coordinates[2]);
    if (overlay.thickness)
        return FillAlong(canvas, overlay, {x, y0, x, y1});
    const OrnMinRenderColour colour = ColourFor(canvas, overlay.paints[0]);
    if (canvas.shape.hasChroma)
        OrnMinRenderDrawVLineYUV420SP(canvas.context, &canvas.image, x, y0, y1, colour,
                                      overlay.style);
    else
        OrnMinRenderDrawVLineY8(canvas.context, &canvas.image, x, y0, y1, colour.y, overlay.style);
}

void DrawLine(Canvas &canvas, const Overlay &overlay) {
    DrawSegment(canvas, overlay, PointAt(canvas, 0), PointAt(canvas, 2));
}

void DrawPolyline(Canvas &canvas, const Overlay &overlay) {
    DrawSegments(canvas, overlay, AllPoints(canvas));
}

void DrawLoop(Canvas &canvas, const Overlay &overlay) {
    std::vector<OrnMinRenderPoint> points = AllPoints(canvas);
    points.push_back(points.front());
    DrawSegments(canvas, overlay, points);
}

void DrawPolygon(Canvas &canvas, const Overlay &overlay) {
    const std::vector<OrnMinRenderPoint> points = AllPoints(canvas);
    const OrnMinRenderColour colour = ColourFor(canvas, overlay.paints[0]);
    if (canvas.shape.hasChroma)
        OrnMinRenderFillPolygonYUV420SP(canvas.context, &canvas.image, points.data(), points.size(),
                                        colour);
    else
        OrnMinRenderFillPolygonY8(canvas.context, &canvas.image, points.data(), points.size(),
                                  colour.y);
}

void DrawEllipse(Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(canvas);
    if (overlay.thickness)
        return DrawRing(canvas, overlay, {kMaxInt32, kMaxInt32}, 2);
    OrnMinRenderDrawEllipseYUV420SP(canvas.context, &canvas.image, &rect,
                                    ColourFor(canvas, overlay.paints[0]));
}

void DrawDisc(Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(canvas);
    OrnMinRenderFillEllipseYUV420SP(canvas.context, &canvas.image, &rect,
                                    ColourFor(canvas, overlay.paints[0]));
}

void DrawRoundBox(Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(canvas);
    const OrnMinRenderPoint radii = PointAt(canvas, 4);
    if (overlay.thickness)
        return DrawRing(canvas, overlay, radii, 2);
    OrnMinRenderDrawRoundRectYUV420SP(canvas.context, &canvas.image, &rect, &radii,
                                      ColourFor(canvas, overlay.paints[0]));
}

void DrawRoundFill(Canvas &canvas, const Overlay &overlay) {
    const OrnMinRenderRect rect = Corners(canvas);
    const OrnMinRenderPoint radii = PointAt(canvas, 4);
    OrnMinRenderFillRoundRectYUV420SP(canvas.context, &canvas.image, &rect, &radii,
                                      ColourFor(canvas, overlay.paints[0]));
}

void DrawTrail(Canvas &canvas, const Overlay &overlay) {
    const int32_t frames = canvas.coordinates[0];
    DrawSegments(canvas, overlay,
                 canvas.boxIsLive ? canvas.live.Trail(*canvas.box, frames)
                                  : canvas.tracks.Trail(*canvas.box, frames));
}

} // namespace overlay
