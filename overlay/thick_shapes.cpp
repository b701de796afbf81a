// SPDX-License-Identifier: MIT
// A shape is told row by row, as the interval that it covers of each row of the frame. A pixel
// belongs to it when its middle does. Doubles hold every int32 with fractions below a millionth of
// a pixel, and nothing is clipped before the rows of the frame are taken.
#include "thick_shapes.h"

#include "draw_shapes.h"

#include <cmath>
#include <limits>

namespace overlay {

namespace {

constexpr double kFar = std::numeric_limits<double>::infinity();

// Of the middles of a row's pixels, both ends included.
struct Interval {
    double first = kFar;
    double last = -kFar;

    bool IsEmpty() const {
        return !(first <= last);
    }
};

Interval Both(const Interval &a, const Interval &b) {
    return {std::max(a.first, b.first), std::min(a.last, b.last)};
}

// Of intervals that touch, or of which one is empty.
Interval Either(const Interval &a, const Interval &b) {
    if (a.IsEmpty() || b.IsEmpty())
        return a.IsEmpty() ? b : a;
    return {std::min(a.first, b.first), std::max(a.last, b.last)};
}

// Columns from first up to, but without, end.
struct Columns {
    int32_t first = 0;
    int32_t end = 0;
};

Columns ColumnsOf(const Interval &interval, int32_t width) {
    const double first = std::ceil(std::max(interval.first, 0.0));
    const double last = std::floor(std::min(interval.last, width - 1.0));
    if (!(first <= last))
        return {};
    return {static_cast<int32_t>(first), static_cast<int32_t>(last) + 1};
}

struct Rows {
    int32_t first;
    int32_t end;
};

Rows RowsOf(double first, double last, int32_t height) {
    return {static_cast<int32_t>(std::ceil(std::clamp(first, 0.0, double(height)))),
            static_cast<int32_t>(std::floor(std::clamp(last, -1.0, height - 1.0))) + 1};
}

// Takes the rows of a shape from the top down. What is the same in rows below each other is painted
// as one rectangle.
class RowFiller {
  public:
    RowFiller(const Canvas &intoCanvas, OrnMinRenderColour withColour)
        : canvas(intoCanvas), colour(withColour) {
    }
    RowFiller(const RowFiller &) = delete;
    RowFiller &operator=(const RowFiller &) = delete;
    ~RowFiller() {
        Paint();
    }

    void Add(int32_t row, const Columns &columns) {
        const bool goesOn =
            row == rect.bottom && columns.first == rect.left && columns.end == rect.right;
        if (!goesOn) {
            Paint();
            rect = {columns.first, row, columns.end, row};
        }
        rect.bottom = row + 1;
    }

  private:
    void Paint() const {
        if (rect.left < rect.right)
            FillRect(canvas, rect, colour);
    }

    const Canvas &canvas;
    OrnMinRenderColour colour;
    OrnMinRenderRect rect{};
};

// Where low <= slope * x + constant <= high.
Interval Between(double slope, double constant, double low, double high) {
    if (slope == 0)
        return low <= constant && constant <= high ? Interval{-kFar, kFar} : Interval{};
    const double one = (low - constant) / slope;
    const double other = (high - constant) / slope;
    return {std::min(one, other), std::max(one, other)};
}

Interval OfDisc(double x, double y, double radius, double row) {
    const double half = std::sqrt(radius * radius - (row - y) * (row - y));
    return half >= 0 ? Interval{x - half, x + half} : Interval{};
}

// A line with round ends.
struct Stroke {
    double x0, y0, x1, y1;
    double radius;

    // The rectangle along the line, and the discs at its ends. A point dp before or beyond the
    // start has the dot product of dp with the line's direction, and the cross product with it is
    // the distance from the line, both times the length.
    Interval At(double row) const {
        const double dx = x1 - x0;
        const double dy = y1 - y0;
        const double length = std::sqrt(dx * dx + dy * dy);
        const Interval ends = Either(OfDisc(x0, y0, radius, row), OfDisc(x1, y1, radius, row));
        if (length == 0)
            return ends;
        const double reach = radius * length;
        const Interval beside = Between(-dy, dx * (row - y0) + dy * x0, -reach, reach);
        const Interval along = Between(dx, dy * (row - y0) - dx * x0, 0, length * length);
        return Either(ends, Both(beside, along));
    }
};

RoundRect Inset(const RoundRect &rect, double by) {
    return {rect.left + by,
            rect.top + by,
            rect.right - by,
            rect.bottom - by,
            std::max(0.0, std::min(rect.radiusX, (rect.right - rect.left) / 2) - by),
            std::max(0.0, std::min(rect.radiusY, (rect.bottom - rect.top) / 2) - by)};
}

// The middle of pixel n is n here, so that the edge of pixel 0 is at -0.5. Corners are quarters of
// ellipses.
Interval RowOf(const RoundRect &rect, double row) {
    const double middle = row + 0.5;
    if (middle < rect.top || middle > rect.bottom)
        return {};
    const double intoCorner =
        std::max({rect.top + rect.radiusY - middle, middle - (rect.bottom - rect.radiusY), 0.0});
    double inset = 0;
    if (intoCorner > 0 && rect.radiusX > 0) {
        const double share = std::min(1.0, intoCorner / rect.radiusY);
        inset = rect.radiusX * (1 - std::sqrt(1 - share * share));
    }
    return {rect.left + inset - 0.5, std::nextafter(rect.right - inset - 0.5, -kFar)};
}

} // namespace

// A line of an even number of pixels has its middle between two of them.
void FillThickLine(const Canvas &canvas, OrnMinRenderPoint from, OrnMinRenderPoint to,
                   int32_t thickness, OrnMinRenderColour colour) {
    const double shift = thickness % 2 == 0 ? 0.5 : 0;
    const Stroke stroke{from.x + shift, from.y + shift, to.x + shift, to.y + shift,
                        thickness / 2.0};
    const Rows rows = RowsOf(std::min(stroke.y0, stroke.y1) - stroke.radius,
                             std::max(stroke.y0, stroke.y1) + stroke.radius, canvas.shape.height);
    RowFiller filler(canvas, colour);
    for (int32_t row = rows.first; row < rows.end; ++row)
        filler.Add(row, ColumnsOf(stroke.At(row), canvas.shape.width));
}

void FillRing(const Canvas &canvas, const RoundRect &outside, int32_t thickness,
              OrnMinRenderColour colour) {
    const RoundRect outer = Inset(outside, 0);
    const RoundRect inner = Inset(outside, thickness);
    const bool hasHole = inner.left < inner.right && inner.top < inner.bottom;
    const Rows rows = RowsOf(outer.top - 0.5, outer.bottom - 0.5, canvas.shape.height);
    RowFiller left(canvas, colour);
    RowFiller right(canvas, colour);
    for (int32_t row = rows.first; row < rows.end; ++row) {
        const Interval all = RowOf(outer, row);
        const Interval hole = hasHole ? RowOf(inner, row) : Interval{};
        if (hole.IsEmpty()) {
            left.Add(row, ColumnsOf(all, canvas.shape.width));
            continue;
        }
        left.Add(row,
                 ColumnsOf({all.first, std::nextafter(hole.first, -kFar)}, canvas.shape.width));
        right.Add(row, ColumnsOf({std::nextafter(hole.last, kFar), all.last}, canvas.shape.width));
    }
}

} // namespace overlay
