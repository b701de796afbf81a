// Frames, filled rectangles, polygons, ellipses and rounded rectangles. A frame is four lines, a
// filled rectangle a building block, an elliptic outline blocks of 2 x 2 pixels; all other areas
// become span lists in the context's scratch memory, one list per plane, and are painted from
// there.
#include "shapes.h"

#include "pixop.h"

// ---- Frames and filled rectangles ----

// Where the lines of a frame lie besides its rectangle's own corners.
struct FrameEdges {
    int32_t lower; // first row of the lower line
    int32_t right; // first column of the right line
    int32_t end;   // of the vertical lines
};

static FrameEdges FindEdges(const OrnMinRenderRect *rect) {
    return {Saturate(int64_t{rect->bottom} - 1), Saturate(int64_t{rect->right} - 1),
            Saturate(int64_t{rect->bottom} + 1)};
}

void OrnMinRenderDrawFrameY8(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                             const OrnMinRenderRect *rect, uint8_t luma, int32_t style) {
    if (!rect)
        return;
    const FrameEdges edges = FindEdges(rect);
    OrnMinRenderDrawHLineY8(context, image, rect->left, rect->right, rect->top, luma, style);
    OrnMinRenderDrawHLineY8(context, image, rect->left, rect->right, edges.lower, luma, style);
    OrnMinRenderDrawVLineY8(context, image, rect->left, rect->top, edges.end, luma, style);
    OrnMinRenderDrawVLineY8(context, image, edges.right, rect->top, edges.end, luma, style);
}

void OrnMinRenderDrawFrameYUV420SP(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                                   const OrnMinRenderRect *rect, OrnMinRenderColour colour,
                                   int32_t style) {
    if (!rect)
        return;
    const FrameEdges edges = FindEdges(rect);
    const int32_t left = rect->left;
    const int32_t right = rect->right;
    const int32_t top = rect->top;
    OrnMinRenderDrawHLineYUV420SP(context, image, left, right, top, colour, style);
    OrnMinRenderDrawHLineYUV420SP(context, image, left, right, edges.lower, colour, style);
    OrnMinRenderDrawVLineYUV420SP(context, image, left, top, edges.end, colour, style);
    OrnMinRenderDrawVLineYUV420SP(context, image, edges.right, top, edges.end, colour, style);
}

// Orders the corners and cuts the rectangle down to the frame; false when nothing is left of it.
static bool ClipRect(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                     OrnMinRenderRect *clipped) {
    clipped->left = ClampToSize(Min(rect->left, rect->right), image->width);
    clipped->right = ClampToSize(Max(rect->left, rect->right), image->width);
    clipped->top = ClampToSize(Min(rect->top, rect->bottom), image->height);
    clipped->bottom = ClampToSize(Max(rect->top, rect->bottom), image->height);
    return clipped->left < clipped->right && clipped->top < clipped->bottom;
}

void OrnMinRenderFillRectY8(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                            const OrnMinRenderRect *rect, uint8_t luma) {
    OrnMinRenderRect clipped;
    if (image && rect && ClipRect(image, rect, &clipped))
        OrnMinRenderFillRectY8Impl(context, image, &clipped, luma);
}

void OrnMinRenderFillRectYUV420SP(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                                  const OrnMinRenderRect *rect, OrnMinRenderColour colour) {
    OrnMinRenderRect clipped;
    if (!image || !rect || !ClipRect(image, rect, &clipped))
        return;
    OrnMinRenderFillRectY8Impl(context, image, &clipped, colour.y);
    OrnMinRenderFillRectUVImpl(context, image, &clipped, colour);
}

// ---- Polygons ----

// The crossing of an edge with one pixel row, and how it moves from row to row: by whole columns,
// and one more whenever the error term runs below zero.
struct EdgeWalk {
    int64_t x;
    int64_t error; // 0..height - 1
    int64_t height;
    int64_t wholeStep;
    int64_t rest;
    int32_t direction; // +1 or -1
};

// The walk at the row that lies rows below the edge's upper end: the column nearest to the exact
// crossing, a tie going toward the upper end; that of an end itself is exact. Reached
// arithmetically, so that edges far above the frame cost nothing. The products stay below 2^64.
static EdgeWalk StartEdgeWalk(OrnMinRenderPoint upper, OrnMinRenderPoint lower, int64_t rows) {
    const int64_t shift = int64_t{lower.x} - upper.x;
    const auto width = static_cast<uint32_t>(shift >= 0 ? shift : -shift);
    const auto height = static_cast<uint32_t>(int64_t{lower.y} - upper.y);
    const int32_t direction = shift >= 0 ? 1 : -1;
    const int64_t wholeStep = int64_t{width / height} * direction;
    const uint32_t rest = width % height;

    // Beyond the whole steps: one column more whenever the rests exceed the half, and then again.
    const uint64_t rests = rest * static_cast<uint64_t>(rows);
    const uint64_t half = height / 2;
    uint64_t more = 0;
    if (rests > half)
        more = rows == 1 ? 1 : (rests - half + (height - 1)) / height;
    return {upper.x + wholeStep * rows + direction * static_cast<int64_t>(more),
            static_cast<int64_t>(half + more * height - rests),
            height,
            wholeStep,
            rest,
            direction};
}

static void StepEdgeWalk(EdgeWalk *walk) {
    walk->x += walk->wholeStep;
    walk->error -= walk->rest;
    if (walk->error < 0) {
        walk->x += walk->direction;
        walk->error += walk->height;
    }
}

// A polygon as one plane sees it: shift 0 is luma, 1 chroma.
struct PolygonPlane {
    const OrnMinRenderPoint *points;
    size_t count;
    int32_t shift;
    int32_t width;
    int32_t height;
};

static OrnMinRenderPoint VertexOf(const PolygonPlane &plane, size_t i) {
    const OrnMinRenderPoint &point = plane.points[i < plane.count ? i : i - plane.count];
    return {point.x >> plane.shift, point.y >> plane.shift};
}

// What one edge adds to a plane: a point in each row from its start up to, but without, its end;
// and perhaps one at its end.
struct Segment {
    OrnMinRenderPoint start;
    OrnMinRenderPoint end;
    int32_t firstRow; // of those that lie in the plane
    int32_t endRow;   // not below firstRow
    bool hasEnd;
};

// The edge from a to b, which c follows. A vertex counts once as the start of an edge, and as the
// end of one only where it is a local top or bottom, so that every row gets an even number of
// points.
static Segment ComputeSegment(int32_t planeHeight, OrnMinRenderPoint a, OrnMinRenderPoint b,
                              OrnMinRenderPoint c) {
    const bool upward = a.y > b.y;
    const bool turns = (b.y < c.y) == upward;
    const int64_t first = upward ? int64_t{b.y} + 1 : a.y;
    const int64_t end = upward ? int64_t{a.y} + 1 : Max(b.y, int64_t{a.y} + 1);
    return {a, b, ClampToSize(first, planeHeight), ClampToSize(end, planeHeight),
            turns && b.y >= 0 && b.y < planeHeight};
}

template <class Use> static void ForEachSegment(const PolygonPlane &plane, Use use) {
    OrnMinRenderPoint a = VertexOf(plane, 0);
    OrnMinRenderPoint b = VertexOf(plane, 1);
    for (size_t i = 0; i < plane.count; ++i) {
        const OrnMinRenderPoint c = VertexOf(plane, i + 2);
        use(ComputeSegment(plane.height, a, b, c));
        a = b;
        b = c;
    }
}

// Fewer than kScratchPoints points, at least two in a row, fill fewer rows than half their number.
constexpr int32_t kMaxCrossingRows = kScratchPoints / 2;

// The list being made, and where the next point of each row goes.
struct CrossingList {
    OrnMinRenderPoint *points;
    int32_t width; // of the plane
    int32_t firstRow;
    int32_t rows;
    uint16_t next[kMaxCrossingRows + 1];
};

// As the outline is closed, none of the rows between its highest and its lowest vertex is without
// a point.
static void FindRows(CrossingList *list, const PolygonPlane &plane) {
    int32_t top = INT32_MAX;
    int32_t bottom = INT32_MIN;
    for (size_t i = 0; i < plane.count; ++i) {
        const int32_t y = plane.points[i].y;
        top = y < top ? y : top;
        bottom = y > bottom ? y : bottom;
    }
    list->firstRow = ClampToSize(top >> plane.shift, plane.height);
    list->rows = ClampToSize(int64_t{bottom >> plane.shift} + 1, plane.height) - list->firstRow;
}

static void CountRows(CrossingList *list, int32_t first, int32_t end) {
    ++list->next[first - list->firstRow];
    --list->next[end - list->firstRow];
}

// Finds where the share of each row begins: first how the number of points changes from row to row,
// then the sums of the sums of that. Returns the number of points; where there are too many, the
// shares are void.
static int64_t FindShares(CrossingList *list, const PolygonPlane &plane) {
    memset(list->next, 0, static_cast<size_t>(list->rows + 1) * sizeof *list->next);
    int64_t points = 0;
    ForEachSegment(plane, [&](const Segment &segment) {
        points += segment.endRow - segment.firstRow + segment.hasEnd;
        if (segment.firstRow < segment.endRow)
            CountRows(list, segment.firstRow, segment.endRow);
        if (segment.hasEnd)
            CountRows(list, segment.end.y, segment.end.y + 1);
    });
    uint32_t inRow = 0;
    uint32_t before = 0;
    for (int32_t r = 0; r < list->rows; ++r) {
        inRow = (inRow + list->next[r]) & 0xFFFF; // changes may be negative
        list->next[r] = static_cast<uint16_t>(before);
        before += inRow;
    }
    return points;
}

static void AddCrossing(CrossingList *list, int64_t x, int32_t y) {
    const uint16_t place = list->next[y - list->firstRow]++;
    list->points[place] = {ClampToSize(x, list->width), y};
}

static void AddSegment(CrossingList *list, const Segment &segment) {
    const OrnMinRenderPoint a = segment.start;
    const OrnMinRenderPoint b = segment.end;
    if (segment.hasEnd)
        AddCrossing(list, b.x, b.y);
    if (segment.firstRow == segment.endRow)
        return;
    const OrnMinRenderPoint upper = a.y > b.y ? b : a;
    const OrnMinRenderPoint lower = a.y > b.y ? a : b;
    const bool oneRow = segment.endRow - segment.firstRow == 1;
    if (oneRow && (segment.firstRow == upper.y || segment.firstRow == lower.y)) {
        AddCrossing(list, segment.firstRow == upper.y ? upper.x : lower.x, segment.firstRow);
        return;
    }
    EdgeWalk walk = StartEdgeWalk(upper, lower, int64_t{segment.firstRow} - upper.y);
    for (int32_t y = segment.firstRow; y < segment.endRow; ++y) {
        AddCrossing(list, walk.x, y);
        StepEdgeWalk(&walk);
    }
}

int ComparePoints(const void *first, const void *second) {
    const auto *a = static_cast<const OrnMinRenderPoint *>(first);
    const auto *b = static_cast<const OrnMinRenderPoint *>(second);
    return a->y != b->y ? a->y - b->y : a->x - b->x; // clamped to a plane: no overflow
}

// One pass of a Shell sort: sorts the points that lie gap apart.
static void SortAtGap(OrnMinRenderPoint *points, size_t count, size_t gap) {
    for (size_t i = gap; i < count; ++i) {
        const OrnMinRenderPoint point = points[i];
        size_t j = i;
        for (; j >= gap && point.x < points[j - gap].x; j -= gap)
            points[j] = points[j - gap];
        points[j] = point;
    }
}

// Sorts the points of one row: nearly always two, whose order is chosen without a branch, or a
// handful; the gaps keep the worst case short, when a plane's whole share lies in one row.
static void SortColumns(OrnMinRenderPoint *points, size_t count) {
    static const size_t kGaps[] = {1750, 701, 301, 132, 57, 23, 10, 4}; // M. Ciura, 2001
    constexpr size_t kHandful = 16;
    if (count == 2) {
        const int32_t a = points[0].x;
        const int32_t b = points[1].x;
        points[0].x = a < b ? a : b;
        points[1].x = a < b ? b : a;
        return;
    }
    if (count > kHandful)
        for (const size_t gap : kGaps)
            SortAtGap(points, count, gap);
    SortAtGap(points, count, 1);
}

// A general sort would dominate the fill and, in common C libraries, allocate; instead each point
// is put straight into its row's share of the list.
int32_t FillPolygonPlane(OrnMinRenderPoint *crossings, const OrnMinRenderImage *image,
                         const OrnMinRenderPoint *points, size_t count, int32_t shift) {
    const PolygonPlane plane = {points, count, shift, image->width >> shift,
                                image->height >> shift};
    CrossingList list;
    list.points = crossings;
    list.width = plane.width;
    FindRows(&list, plane);
    if (list.rows <= 0 || list.rows >= kMaxCrossingRows)
        return 0;
    const int64_t total = FindShares(&list, plane);
    if (total >= int64_t{kScratchPoints})
        return 0;
    ForEachSegment(plane, [&](const Segment &segment) { AddSegment(&list, segment); });

    // Each share now ends where its next point would go.
    for (int32_t r = 0, begin = 0; r < list.rows; begin = list.next[r++])
        SortColumns(crossings + begin, static_cast<size_t>(list.next[r] - begin));
    return static_cast<int32_t>(total);
}

static bool IsPolygon(const OrnMinRenderContext *context, const OrnMinRenderImage *image,
                      const OrnMinRenderPoint *points, size_t count) {
    return context && image && points && count >= 3;
}

void OrnMinRenderFillPolygonY8(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                               const OrnMinRenderPoint *points, size_t count, uint8_t luma) {
    if (!IsPolygon(context, image, points, count) || !image->yPlane)
        return;
    const int32_t crossings = FillPolygonPlane(ScratchPoints(context), image, points, count, 0);
    OrnMinRenderDrawScanlinesY8(image, ScratchSpans(context), crossings, luma);
}

void OrnMinRenderFillPolygonYUV420SP(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                                     const OrnMinRenderPoint *points, size_t count,
                                     OrnMinRenderColour colour) {
    if (!IsPolygon(context, image, points, count))
        return;
    OrnMinRenderFillPolygonY8(context, image, points, count, colour.y);
    if (!image->uvPlane)
        return;
    const int32_t crossings = FillPolygonPlane(ScratchPoints(context), image, points, count, 1);
    OrnMinRenderDrawScanlinesUV(image, ScratchSpans(context), crossings, colour);
}

// ---- Ellipse outlines ----

// Beyond this width or height the terms of the stepping would leave 64 bits; nothing is drawn.
constexpr int64_t kMaxEllipseSize = 65536;

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
        uint8_t *pixel = LumaRow(image, y) + column.x;
        pixel[0] = plot.colour.y;
        if (column.x + 1 < image->width)
            pixel[1] = plot.colour.y;
    }
    if (image->uvPlane && column.cx < ChromaSize(image->width) &&
        row.cy < ChromaSize(image->height))
        StoreChroma(ChromaRow(image, row.cy) + 2 * ptrdiff_t{column.cx}, plot.colour);
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
static void StoreBlocks(uint8_t *row, ptrdiff_t stride, ptrdiff_t left, ptrdiff_t right,
                        uint8_t luma) {
    StoreLumaPair(row + left, luma);
    StoreLumaPair(row + right, luma);
    StoreLumaPair(row + stride + left, luma);
    StoreLumaPair(row + stride + right, luma);
}

// The same as PlotClipped for blocks that lie in the frame, where no coordinate is negative.
static void PlotInside(const EllipsePlot &plot, int64_t ox, int64_t oy) {
    const OrnMinRenderImage *image = plot.image;
    const OrnMinRenderColour colour = plot.colour;
    const auto stride = static_cast<ptrdiff_t>(image->stride);
    const auto left = static_cast<ptrdiff_t>((plot.centreX2 - plot.shiftX - ox) >> 1);
    const auto right = static_cast<ptrdiff_t>((plot.centreX2 + plot.shiftX + ox) >> 1);
    const int64_t upper = (plot.centreY2 - plot.shiftY - oy) >> 1;
    const int64_t lower = (plot.centreY2 + plot.shiftY + oy) >> 1;
    if (image->yPlane) {
        StoreBlocks(LumaRow(image, upper), stride, left, right, colour.y);
        StoreBlocks(LumaRow(image, lower), stride, left, right, colour.y);
    }
    if (image->uvPlane) {
        uint8_t *upperRow = ChromaRow(image, (upper - 1) >> 1);
        uint8_t *lowerRow = ChromaRow(image, (lower + 1) >> 1);
        const ptrdiff_t leftByte = (left - 1) / 2 * 2; // left may be 0
        const ptrdiff_t rightByte = (right + 1) / 2 * 2;
        StoreChroma(upperRow + leftByte, colour);
        StoreChroma(upperRow + rightByte, colour);
        StoreChroma(lowerRow + leftByte, colour);
        StoreChroma(lowerRow + rightByte, colour);
    }
}

// Plots a point of the curve in all four quadrants.
static void PlotEllipsePixel(const EllipsePlot &plot, int64_t ox, int64_t oy) {
    if (plot.inside && ox >= 0 && ox <= plot.width && oy >= 0 && oy <= plot.height)
        PlotInside(plot, ox, oy);
    else
        PlotClipped(plot, ox, oy);
}

static int64_t Distance(int32_t a, int32_t b) {
    return a < b ? int64_t{b} - a : int64_t{a} - b;
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

// From the ends of the horizontal axis, row by row, up to where the curve is as flat as steep: the
// gradient along y, which grows with every row, has passed the one along x. A thin ellipse, whose
// gradients stay 0, ends with its height.
static void TraceSteepArcs(const EllipsePlot &plot) {
    const int64_t width = plot.width;
    const int64_t height = plot.height;
    const int64_t gradientStepY = width * width / 2;
    const int64_t gradientStepX = height * height / 2;
    int64_t gradientY = 0;
    int64_t gradientX = gradientStepX * width;
    int64_t error = height * height * (1 - width) / 2;
    int64_t sum = 0;
    int64_t ox = width;
    int64_t oy = 0;
    do {
        gradientY += gradientStepY;
        sum += gradientY;
        PlotEllipsePixel(plot, ox, oy);
        ++oy;
        if (error + 2 * sum > 0) {
            sum += error;
            --ox;
            gradientX -= gradientStepX;
            error += gradientStepX;
        }
    } while (gradientY <= gradientX && oy <= height);
}

// From the ends of the vertical axis, column by column.
static void TraceFlatArcs(const EllipsePlot &plot) {
    const int64_t width = plot.width;
    const int64_t height = plot.height;
    const int64_t gradientStepY = width * width / 2;
    const int64_t gradientStepX = height * height / 2;
    int64_t gradientX = 0;
    int64_t gradientY = gradientStepY * height;
    int64_t error = (1 - height) * width * width / 2;
    int64_t sum = 0;
    int64_t ox = 0;
    int64_t oy = height;
    do {
        gradientX += gradientStepX;
        PlotEllipsePixel(plot, ox, oy);
        sum += gradientX;
        if (error + 2 * sum > 0) {
            gradientY -= gradientStepY;
            sum += error;
            --oy;
            error += gradientStepY;
        }
        ++ox;
    } while (gradientX <= gradientY && ox <= width);
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
    TraceSteepArcs(plot);
    TraceFlatArcs(plot);
}

// ---- Span lists of filled ellipses and rounded rectangles ----

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

// Adds the rows distance above and below the centre, each halfWidth to either side. Chroma is
// rounded inward, and its row is taken from the lower half at even distances and from the upper
// half at odd ones, so that each chroma row comes once (the centre's, when odd, twice).
static void FillEllipseAddLine(RowPairLists *lists, int64_t halfWidth, int64_t distance) {
    if (lists->lumaCount + 2 > kLumaSpans || lists->chromaCount + 1 > kChromaSpans)
        PaintLists(lists);
    const OrnMinRenderImage *image = lists->image;
    const int32_t first = ClampToSize(lists->centreX - halfWidth, image->width);
    const int32_t end = ClampToSize(lists->centreX + halfWidth, image->width);
    const int32_t chromaFirst = ChromaSize(first);
    const auto chromaEnd = static_cast<int32_t>(Max(chromaFirst, end / 2));
    const int64_t rows[2] = {lists->centreY - distance, lists->centreY + distance};
    for (int32_t i = 0; i < 2; ++i) {
        if (rows[i] < 0 || rows[i] >= image->height)
            continue;
        const auto row = static_cast<int32_t>(rows[i]);
        lists->luma[lists->lumaCount++] = MakeSpan(first, end, row);
        const bool lower = i == 1;
        if ((distance % 2 == 0) == lower)
            lists->chroma[lists->chromaCount++] = MakeSpan(chromaFirst, chromaEnd, row / 2);
    }
}

// ---- Filled ellipses ----

// From the centre row outward, a row at a time; returns how many row pairs were listed. The terms
// are those of the midpoint algorithm for radii of half the width and height, so that squares are
// quartered.
static int64_t ListSteepRows(RowPairLists *lists, int64_t width, int64_t height) {
    const int64_t gradientStepY = width * width / 2;
    const int64_t gradientStepX = height * height / 2;
    int64_t gradientY = 0;
    int64_t gradientX = width * gradientStepX / 2;
    int64_t error = (1 - width) * height * height / 4;
    int64_t sum = 0;
    int64_t halfWidth = width / 2;
    int64_t rows = 0;
    if (gradientX == 0)
        return 0;
    do {
        FillEllipseAddLine(lists, halfWidth, rows);
        ++rows;
        sum += gradientY + width * width / 4;
        gradientY += gradientStepY;
        if (error + 2 * sum > 0) {
            gradientX -= gradientStepX;
            sum += error;
            --halfWidth;
            error += gradientStepX;
        }
    } while (gradientY < gradientX);
    return rows;
}

// From the top and bottom rows inward, a column at a time, down to the rows already listed. A row
// is listed when the curve first reaches it; the outermost one never is.
static void ListFlatRows(RowPairLists *lists, int64_t width, int64_t height, int64_t listedRows) {
    const int64_t errorStep = width * width / 2;
    const int64_t gradientStep = height * height / 2;
    int64_t gradient = height * height / 4;
    int64_t error = (1 - height) * width * width / 4;
    int64_t sum = 0;
    int64_t halfWidth = 0;
    int64_t distance = height / 2;
    while (distance > listedRows) {
        sum += gradient;
        gradient += gradientStep;
        ++halfWidth;
        if (error + 2 * sum > 0) {
            sum += error;
            --distance;
            error += errorStep;
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
    const int64_t listedRows = ListSteepRows(&lists, width, height);
    ListFlatRows(&lists, width, height, listedRows);
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
    TraceSteepArcs(plot);
    TraceFlatArcs(plot);
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

// The corner rows from the corner centres outward. sideHalf is half the side of the rectangle.
static void ListSteepCornerRows(RowPairLists *lists, CornerRadii sideHalf, CornerRadii radii) {
    const int64_t squareX = radii.x * radii.x;
    const int64_t squareY = radii.y * radii.y;
    int64_t gradientY = 0;
    int64_t gradientX = 2 * squareY * radii.x;
    int64_t error = (1 - 2 * radii.x) * squareY;
    int64_t sum = 0;
    int64_t halfWidth = sideHalf.x;
    int64_t distance = sideHalf.y - radii.y;
    do {
        FillEllipseAddLine(lists, halfWidth, distance);
        ++distance;
        sum += squareX + gradientY;
        gradientY += 2 * squareX;
        if (error + 2 * sum > 0) {
            gradientX -= 2 * squareY;
            sum += error;
            --halfWidth;
            error += 2 * squareY;
        }
    } while (gradientY <= gradientX);
}

// The corner rows from the top and bottom inward, until the curve is as steep as flat: some may
// already be listed, and are painted twice.
static void ListFlatCornerRows(RowPairLists *lists, CornerRadii sideHalf, CornerRadii radii) {
    const int64_t squareX = radii.x * radii.x;
    const int64_t squareY = radii.y * radii.y;
    int64_t gradientX = 0;
    int64_t gradientY = 2 * squareX * radii.y;
    int64_t error = (1 - 2 * radii.y) * squareX;
    int64_t sum = 0;
    int64_t halfWidth = sideHalf.x - radii.x;
    int64_t distance = sideHalf.y;
    do {
        sum += squareY + gradientX;
        gradientX += 2 * squareY;
        ++halfWidth;
        if (error + 2 * sum > 0) {
            sum += error;
            --distance;
            gradientY -= 2 * squareX;
            error += 2 * squareX;
            FillEllipseAddLine(lists, halfWidth, distance);
        }
    } while (gradientX <= gradientY);
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
    const CornerRadii sideHalf = {Distance(rect->left, rect->right) / 2,
                                  Distance(rect->top, rect->bottom) / 2};
    ListSteepCornerRows(&lists, sideHalf, corners);
    ListFlatCornerRows(&lists, sideHalf, corners);
    PaintLists(&lists);

    const OrnMinRenderRect box = OrderCorners(rect);
    const OrnMinRenderRect band = {box.left, static_cast<int32_t>(box.top + corners.y), box.right,
                                   static_cast<int32_t>(box.bottom - corners.y)};
    OrnMinRenderFillRectYUV420SP(context, image, &band, colour);
}
