// SPDX-License-Identifier: MIT
// Ellipses and rounded rectangles, outlined and filled. All of them are stepped in integers along a
// quarter of an ellipse, which the other three mirror: a rounded rectangle's corners are the
// quarters of one ellipse, moved apart. An outline plots blocks of 2 x 2 pixels; a fill lists row
// pairs in the context's scratch memory, one list for each plane, and paints the lists.
#include "min_render.h"
#include "pixop.h"

using namespace orn;

// ---- The stepping ----

// An arc of an ellipse from one end of an axis to where the curve has turned by half, each step
// going onward by one, along the other axis, and some of them inward by one, too. The steep arc
// starts at an end of the horizontal axis, goes onward by rows and inward by columns. The flat arc
// is the same with rows and columns, width and height exchanged.
//
// After k steps of which j went inward, with the starting values g0, l0 and e0,
//     gradient = g0 + k * onwardStep
//     limit    = l0 - j * inwardStep
//     error    = e0 + j * inwardStep
//     sum      = k * g0 + onwardStep * k (k - 1) / 2 + j * e0 + inwardStep * j (j - 1) / 2
// and the sign of error + 2 * sum tells on which side of the curve the middle between the next two
// columns lies: when it is positive, outside, the step goes inward.
struct Arc {
    int64_t onwardStep;
    int64_t inwardStep;
    int64_t gradient; // of the curve, along the arc
    int64_t limit;    // the arc ends when the gradient has passed it
    int64_t error;
    int64_t sum;
};

// Beyond this width or height the terms would leave 64 bits; nothing is drawn.
constexpr int64_t kMaxEllipseSize = 65536;

// The steep arc of an outline, in doubled units: its radii are the width and the height. With
// x = width - j - 1/2 and y = k + 1/2, and but for the rounding of halves, its condition is that
// width^2 y^2 + height^2 x^2 - width^2 height^2 exceeds width^2 / 4 - height^2 (j + 3/4).
static Arc OutlineArc(int64_t width, int64_t height) {
    const int64_t onwardStep = width * width / 2;
    const int64_t inwardStep = height * height / 2;
    return {onwardStep,
            inwardStep,
            onwardStep,
            inwardStep * width + onwardStep,
            height * height * (1 - width) / 2,
            0};
}

// The steep arc of a fill, whose radii a and b are half the width and half the height. With
// x = a - j - 1/2 and y = k, and but for the rounding of quarters, its condition is that
// a^2 y^2 + b^2 x^2 - a^2 b^2 exceeds -b^2 / 4.
static Arc FillArc(int64_t width, int64_t height) {
    const int64_t onwardStep = width * width / 2;
    const int64_t inwardStep = height * height / 2;
    const int64_t gradient = width * width / 4;
    return {onwardStep,
            inwardStep,
            gradient,
            width * inwardStep / 2 + gradient,
            (1 - width) * height * height / 4,
            0};
}

// Goes onward; true: and inward.
static inline bool Step(Arc *arc) {
    arc->sum += arc->gradient;
    arc->gradient += arc->onwardStep;
    if (arc->error + 2 * arc->sum <= 0)
        return false;
    arc->sum += arc->error;
    arc->error += arc->inwardStep;
    arc->limit -= arc->inwardStep;
    return true;
}

static int64_t Distance(int32_t a, int32_t b) {
    return a < b ? int64_t{b} - a : int64_t{a} - b;
}

// ---- Plotting outlines ----

// What turns an offset from the centre, in doubled units, into blocks of pixels.
struct EllipsePlot {
    const OrnMinRenderImage *image;
    OrnMinRenderColour colour;
    int64_t centreX2; // doubled, so that a centre between two pixels is exact
    int64_t centreY2;
    int64_t shiftX; // how far each offset is moved outward: for the corners of a rounded rectangle
    int64_t shiftY;
    int64_t width; // of the ellipse
    int64_t height;
    bool inside; // all blocks of offsets within the width and height lie in the frame
};

struct BlockColumn {
    bool enabled;
    int32_t x;
    int32_t cx;
};

struct BlockRow {
    bool enabled;
    int32_t y;
    int32_t cy;
};

// Sets the 2 x 2 block at (x, y) and its chroma sample, less what lies outside the planes. The
// anchor is neither negative nor right of the frame.
static void PlotBlock(const EllipsePlot &plot, BlockColumn column, BlockRow row) {
    const OrnMinRenderImage *image = plot.image;
    if (!column.enabled || !row.enabled)
        return;
    for (int64_t y = row.y; image->yPlane && y <= int64_t{row.y} + 1 && y < image->height; ++y) {
        uint8_t *pixel = LumaAt(image, column.x, y);
        pixel[0] = plot.colour.y;
        if (column.x + 1 < image->width)
            pixel[1] = plot.colour.y;
    }
    if (image->uvPlane && column.cx < ChromaSize(image->width) &&
        row.cy < ChromaSize(image->height))
        StoreChroma(ChromaAt(image, column.cx, row.cy), plot.colour);
}

// outward: -1 on the left side, +1 on the right. The chroma sample is the one a pixel further out.
static BlockColumn MakeBlockColumn(const EllipsePlot &plot, int64_t x2, int32_t outward) {
    const int64_t x = x2 / 2;
    if (x2 < -1 || x >= plot.image->width)
        return {false, 0, 0};
    return {true, static_cast<int32_t>(x), static_cast<int32_t>((x + outward) / 2)};
}

// No block is anchored on row 0, although blocks on column 0 are: the rows start where the doubled
// coordinate reaches 2.
static BlockRow MakeBlockRow(const EllipsePlot &plot, int64_t y2, int32_t outward) {
    const int64_t y = y2 / 2;
    if (y2 < 2 || y > plot.image->height)
        return {false, 0, 0};
    return {true, static_cast<int32_t>(y), static_cast<int32_t>((y + outward) / 2)};
}

// The blocks of all four quadrants, clipped.
static void PlotClipped(const EllipsePlot &plot, int64_t ox, int64_t oy) {
    const BlockColumn left = MakeBlockColumn(plot, plot.centreX2 - plot.shiftX - ox, -1);
    const BlockColumn right = MakeBlockColumn(plot, plot.centreX2 + plot.shiftX + ox, +1);
    const BlockRow upper = MakeBlockRow(plot, plot.centreY2 - plot.shiftY - oy, -1);
    const BlockRow lower = MakeBlockRow(plot, plot.centreY2 + plot.shiftY + oy, +1);
    PlotBlock(plot, left, upper);
    PlotBlock(plot, right, upper);
    PlotBlock(plot, left, lower);
    PlotBlock(plot, right, lower);
}

// Two blocks side by side, without their chroma.
static inline void StoreBlocks(uint8_t *row, ptrdiff_t stride, ptrdiff_t left, ptrdiff_t right,
                               uint8_t luma) {
    StoreLumaPair(row + left, luma);
    StoreLumaPair(row + right, luma);
    StoreLumaPair(row + stride + left, luma);
    StoreLumaPair(row + stride + right, luma);
}

// The same as PlotClipped for blocks that lie in the frame, where no coordinate is negative.
static inline void PlotInside(const EllipsePlot &plot, int64_t ox, int64_t oy) {
    const OrnMinRenderImage *image = plot.image;
    const OrnMinRenderColour colour = plot.colour;
    const auto stride = static_cast<ptrdiff_t>(image->stride);
    const auto left = static_cast<ptrdiff_t>((plot.centreX2 - plot.shiftX - ox) >> 1);
    const auto right = static_cast<ptrdiff_t>((plot.centreX2 + plot.shiftX + ox) >> 1);
    const int64_t upper = (plot.centreY2 - plot.shiftY - oy) >> 1;
    const int64_t lower = (plot.centreY2 + plot.shiftY + oy) >> 1;
    if (image->yPlane) {
        StoreBlocks(LumaAt(image, 0, upper), stride, left, right, colour.y);
        StoreBlocks(LumaAt(image, 0, lower), stride, left, right, colour.y);
    }
    if (image->uvPlane) {
        uint8_t *upperRow = ChromaAt(image, 0, (upper - 1) >> 1);
        uint8_t *lowerRow = ChromaAt(image, 0, (lower + 1) >> 1);
        const ptrdiff_t leftByte = (left - 1) / 2 * kChromaBytes; // left may be 0
        const ptrdiff_t rightByte = (right + 1) / 2 * kChromaBytes;
        StoreChroma(upperRow + leftByte, colour);
        StoreChroma(upperRow + rightByte, colour);
        StoreChroma(lowerRow + leftByte, colour);
        StoreChroma(lowerRow + rightByte, colour);
    }
}

// Plots a point of the curve in all four quadrants.
static inline void PlotEllipsePixel(const EllipsePlot &plot, int64_t ox, int64_t oy) {
    if (plot.inside && ox >= 0 && ox <= plot.width && oy >= 0 && oy <= plot.height)
        PlotInside(plot, ox, oy);
    else
        PlotClipped(plot, ox, oy);
}

// An ellipse of the given size whose quarters lie in the corners of the box. Blocks reach one pixel
// beyond the box to the right and downward, and none is anchored on row 0.
static EllipsePlot MakePlot(const OrnMinRenderImage *image, OrnMinRenderColour colour,
                            const OrnMinRenderRect &box, int64_t width, int64_t height) {
    const bool inside = Min(box.left, box.right) >= 0 && Min(box.top, box.bottom) >= 1 &&
                        Max(box.left, box.right) + 1 < image->width &&
                        Max(box.top, box.bottom) + 1 < image->height;
    return {image,
            colour,
            int64_t{box.left} + box.right,
            int64_t{box.top} + box.bottom,
            Distance(box.left, box.right) - width,
            Distance(box.top, box.bottom) - height,
            width,
            height,
            inside};
}

// Plots the steep arc or the flat one, in all four quadrants. The gradient grows with every step
// while its limit doesn't, so that it passes it; in an ellipse one pixel wide or high, whose
// gradient stays 0, the arc ends with the ellipse.
template <bool steep> static void TraceArcs(const EllipsePlot &plot) {
    const int64_t size = steep ? plot.height : plot.width;
    Arc arc = steep ? OutlineArc(plot.width, plot.height) : OutlineArc(plot.height, plot.width);
    int64_t inward = steep ? plot.width : plot.height;
    int64_t onward = 0;
    do {
        PlotEllipsePixel(plot, steep ? inward : onward, steep ? onward : inward);
        ++onward;
        if (Step(&arc))
            --inward;
    } while (arc.gradient <= arc.limit && onward <= size);
}

void OrnMinRenderDrawEllipseYUV420SP(OrnMinRenderContext *, const OrnMinRenderImage *image,
                                     const OrnMinRenderRect *rect, OrnMinRenderColour colour) {
    if (!image || !rect)
        return;
    const int64_t width = Distance(rect->left, rect->right);
    const int64_t height = Distance(rect->top, rect->bottom);
    if (width > kMaxEllipseSize || height > kMaxEllipseSize)
        return;
    const EllipsePlot plot = MakePlot(image, colour, *rect, width, height);
    TraceArcs<true>(plot);
    TraceArcs<false>(plot);
}

// ---- Listing the rows of fills ----

// Both planes' lists are built in one pass over the rows, side by side in the scratch memory, and
// painted whenever one may be full: a row pair adds two luma spans and one chroma span.
constexpr int32_t kLumaSpans = kScratchSpans / 3 * 2;
constexpr int32_t kChromaSpans = kScratchSpans - kLumaSpans;

struct RowPairLists {
    const OrnMinRenderImage *image;
    OrnMinRenderColour colour;
    int64_t centreX;
    int64_t centreY;
    OrnMinRenderScanline *luma;
    OrnMinRenderScanline *chroma;
    int32_t lumaCount; // spans
    int32_t chromaCount;
};

static RowPairLists StartLists(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                               const OrnMinRenderRect *rect, OrnMinRenderColour colour) {
    OrnMinRenderScanline *spans = ScratchSpans(context);
    return {image,
            colour,
            (int64_t{rect->left} + rect->right) / 2,
            (int64_t{rect->top} + rect->bottom) / 2,
            spans,
            spans + kLumaSpans,
            0,
            0};
}

static void PaintLists(RowPairLists *lists) {
    const OrnMinRenderImage *image = lists->image;
    if (image->yPlane)
        OrnMinRenderDrawScanlinesY8(image, lists->luma, 2 * lists->lumaCount, lists->colour.y);
    if (image->uvPlane)
        OrnMinRenderDrawScanlinesUV(image, lists->chroma, 2 * lists->chromaCount, lists->colour);
    lists->lumaCount = 0;
    lists->chromaCount = 0;
}

// A row pair's columns in luma pixels, and in chroma samples, rounded inward.
struct RowExtent {
    int32_t first;
    int32_t end;
    int32_t chromaFirst;
    int32_t chromaEnd;
};

static inline void AddRow(RowPairLists *lists, int64_t row, const RowExtent &extent,
                          bool withChroma) {
    if (row < 0 || row >= lists->image->height)
        return;
    const auto y = static_cast<int32_t>(row);
    lists->luma[lists->lumaCount++] = MakeSpan(extent.first, extent.end, y);
    if (withChroma)
        lists->chroma[lists->chromaCount++] = MakeSpan(extent.chromaFirst, extent.chromaEnd, y / 2);
}

// Adds the rows distance above and below the centre, each halfWidth to either side. The chroma row
// is taken from the lower half at even distances and from the upper half at odd ones, so that each
// comes once (the centre's, when odd, twice).
static inline void FillEllipseAddLine(RowPairLists *lists, int64_t halfWidth, int64_t distance) {
    if (lists->lumaCount + 2 > kLumaSpans || lists->chromaCount + 1 > kChromaSpans)
        PaintLists(lists);
    const int32_t width = lists->image->width;
    const int32_t first = ClampToSize(lists->centreX - halfWidth, width);
    const int32_t end = ClampToSize(lists->centreX + halfWidth, width);
    const int32_t chromaFirst = ChromaSize(first);
    const RowExtent extent = {first, end, chromaFirst,
                              static_cast<int32_t>(Max(chromaFirst, end / 2))};
    const bool odd = distance % 2 != 0;
    AddRow(lists, lists->centreY - distance, extent, odd);
    AddRow(lists, lists->centreY + distance, extent, !odd);
}

// Lists the rows of the steep arc outward from the given one; returns the first that is not listed.
// The gradient grows with every row and its limit doesn't.
static int64_t ListSteepRows(RowPairLists *lists, Arc arc, int64_t halfWidth, int64_t distance) {
    while (arc.gradient <= arc.limit) {
        FillEllipseAddLine(lists, halfWidth, distance);
        ++distance;
        if (Step(&arc))
            --halfWidth;
    }
    return distance;
}

// Lists the rows of the flat arc from the given one inward, each when the curve first reaches it,
// so that the outermost one never is. Ends with the arc, or with the rows above the last distance.
static void ListFlatRows(RowPairLists *lists, Arc arc, int64_t halfWidth, int64_t distance,
                         int64_t last) {
    while (distance > last && arc.gradient <= arc.limit) {
        ++halfWidth;
        if (Step(&arc)) {
            --distance;
            FillEllipseAddLine(lists, halfWidth, distance);
        }
    }
}

void OrnMinRenderFillEllipseYUV420SP(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                                     const OrnMinRenderRect *rect, OrnMinRenderColour colour) {
    if (!context || !image || !rect)
        return;
    const int64_t width = Distance(rect->left, rect->right);
    const int64_t height = Distance(rect->top, rect->bottom);
    // At width 1 the steps along y are 0 and would not end.
    if (width == 1 || width > kMaxEllipseSize || height > kMaxEllipseSize)
        return;
    RowPairLists lists = StartLists(context, image, rect, colour);
    Arc steep = FillArc(width, height);
    --steep.limit; // ends as soon as the curve has turned by half, which a thin one has from the
                   // start
    const int64_t listedRows = ListSteepRows(&lists, steep, width / 2, 0);
    Arc flat = FillArc(height, width);
    flat.limit = INT64_MAX; // goes on down to the rows that are listed
    ListFlatRows(&lists, flat, 0, height / 2, listedRows);
    PaintLists(&lists);
}

// ---- Rounded rectangles ----

// Radii cut down to half the sides.
struct CornerRadii {
    int64_t x;
    int64_t y;
};

static CornerRadii ClampRadii(const OrnMinRenderRect *rect, const OrnMinRenderPoint *radii) {
    return {Min(Distance(rect->left, rect->right) / 2, radii->x),
            Min(Distance(rect->top, rect->bottom) / 2, radii->y)};
}

static bool AreSquare(CornerRadii radii) {
    return radii.x <= 0 || radii.y <= 0;
}

static bool AreTooLarge(CornerRadii radii) {
    return 2 * radii.x > kMaxEllipseSize || 2 * radii.y > kMaxEllipseSize;
}

static OrnMinRenderRect OrderCorners(const OrnMinRenderRect *rect) {
    return {static_cast<int32_t>(Min(rect->left, rect->right)),
            static_cast<int32_t>(Min(rect->top, rect->bottom)),
            static_cast<int32_t>(Max(rect->left, rect->right)),
            static_cast<int32_t>(Max(rect->top, rect->bottom))};
}

// The corners are the quarters of one ellipse, moved apart to the corners of the rectangle.
static void DrawCorners(const OrnMinRenderImage *image, const OrnMinRenderRect &box,
                        CornerRadii radii, OrnMinRenderColour colour) {
    const EllipsePlot plot = MakePlot(image, colour, box, 2 * radii.x, 2 * radii.y);
    TraceArcs<true>(plot);
    TraceArcs<false>(plot);
}

static void DrawSides(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                      const OrnMinRenderRect &box, CornerRadii radii, OrnMinRenderColour colour) {
    const auto x0 = static_cast<int32_t>(box.left + radii.x);
    const auto x1 = static_cast<int32_t>(box.right - radii.x);
    const auto y0 = static_cast<int32_t>(box.top + radii.y);
    const auto y1 = static_cast<int32_t>(box.bottom - radii.y);
    const int32_t solid = OrnMinRenderLineSolid;
    OrnMinRenderDrawHLineYUV420SP(context, image, x0, x1, box.top, colour, solid);
    OrnMinRenderDrawHLineYUV420SP(context, image, x0, x1, box.bottom, colour, solid);
    OrnMinRenderDrawVLineYUV420SP(context, image, box.left, y0, y1, colour, solid);
    OrnMinRenderDrawVLineYUV420SP(context, image, box.right, y0, y1, colour, solid);
}

void OrnMinRenderDrawRoundRectYUV420SP(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                                       const OrnMinRenderRect *rect, const OrnMinRenderPoint *radii,
                                       OrnMinRenderColour colour) {
    if (!image || !rect || !radii)
        return;
    const OrnMinRenderRect box = OrderCorners(rect);
    const CornerRadii corners = ClampRadii(rect, radii);
    if (AreSquare(corners)) {
        // A frame ends a pixel before the ring of a rounded rectangle does.
        const OrnMinRenderRect ring = {box.left, box.top, Saturate(int64_t{box.right} + 1),
                                       Saturate(int64_t{box.bottom} + 1)};
        OrnMinRenderDrawFrameYUV420SP(context, image, &ring, colour, OrnMinRenderLineSolid);
        return;
    }
    if (AreTooLarge(corners))
        return;
    DrawCorners(image, box, corners, colour);
    DrawSides(context, image, box, corners, colour);
}

void OrnMinRenderFillRoundRectYUV420SP(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                                       const OrnMinRenderRect *rect, const OrnMinRenderPoint *radii,
                                       OrnMinRenderColour colour) {
    if (!context || !image || !rect || !radii)
        return;
    const CornerRadii corners = ClampRadii(rect, radii);
    if (AreSquare(corners)) {
        OrnMinRenderFillRectYUV420SP(context, image, rect, colour);
        return;
    }
    if (AreTooLarge(corners))
        return;
    RowPairLists lists = StartLists(context, image, rect, colour);
    const int64_t halfWidth = Distance(rect->left, rect->right) / 2;
    const int64_t halfHeight = Distance(rect->top, rect->bottom) / 2;
    ListSteepRows(&lists, FillArc(2 * corners.x, 2 * corners.y), halfWidth, halfHeight - corners.y);
    // Some rows of the flat arc are already listed, and are painted twice.
    ListFlatRows(&lists, FillArc(2 * corners.y, 2 * corners.x), halfWidth - corners.x, halfHeight,
                 INT64_MIN);
    PaintLists(&lists);

    const OrnMinRenderRect box = OrderCorners(rect);
    const OrnMinRenderRect band = {box.left, static_cast<int32_t>(box.top + corners.y), box.right,
                                   static_cast<int32_t>(box.bottom - corners.y)};
    OrnMinRenderFillRectYUV420SP(context, image, &band, colour);
}
