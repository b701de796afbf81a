// Frames, filled rectangles and polygons. A frame is four lines; areas become span lists in the
// context's scratch memory, one list per plane, and are painted from there.
#include "shapes.h"

#include "pixop.h"

// ---- Frames and filled rectangles ----

void OrnMinRenderDrawFrameY8(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                             const OrnMinRenderRect *rect, uint8_t luma, int32_t style) {
    if (!rect)
        return;
    const int32_t lowerEdge = Saturate(int64_t{rect->bottom} - 1);
    const int32_t rightEdge = Saturate(int64_t{rect->right} - 1);
    const int32_t rowEnd = Saturate(int64_t{rect->bottom} + 1);
    OrnMinRenderDrawHLineY8(context, image, rect->left, rect->right, rect->top, luma, style);
    OrnMinRenderDrawHLineY8(context, image, rect->left, rect->right, lowerEdge, luma, style);
    OrnMinRenderDrawVLineY8(context, image, rect->left, rect->top, rowEnd, luma, style);
    OrnMinRenderDrawVLineY8(context, image, rightEdge, rect->top, rowEnd, luma, style);
}

void OrnMinRenderDrawFrameYUV420SP(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                                   const OrnMinRenderRect *rect, OrnMinRenderColour colour,
                                   int32_t style) {
    if (!rect)
        return;
    const int32_t lowerEdge = Saturate(int64_t{rect->bottom} - 1);
    const int32_t rightEdge = Saturate(int64_t{rect->right} - 1);
    const int32_t rowEnd = Saturate(int64_t{rect->bottom} + 1);
    OrnMinRenderDrawHLineYUV420SP(context, image, rect->left, rect->right, rect->top, colour,
                                  style);
    OrnMinRenderDrawHLineYUV420SP(context, image, rect->left, rect->right, lowerEdge, colour,
                                  style);
    OrnMinRenderDrawVLineYUV420SP(context, image, rect->left, rect->top, rowEnd, colour, style);
    OrnMinRenderDrawVLineYUV420SP(context, image, rightEdge, rect->top, rowEnd, colour, style);
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
    if (context && image && rect && ClipRect(image, rect, &clipped))
        OrnMinRenderFillRectY8Impl(context, image, &clipped, luma);
}

void OrnMinRenderFillRectYUV420SP(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                                  const OrnMinRenderRect *rect, OrnMinRenderColour colour) {
    OrnMinRenderRect clipped;
    if (!context || !image || !rect || !ClipRect(image, rect, &clipped))
        return;
    OrnMinRenderFillRectY8Impl(context, image, &clipped, colour.y);
    OrnMinRenderFillRectUVImpl(context, image, &clipped, colour);
}

// ---- Sorting the crossing points of a polygon ----

int ComparePoints(const void *first, const void *second) {
    const auto *a = static_cast<const OrnMinRenderPoint *>(first);
    const auto *b = static_cast<const OrnMinRenderPoint *>(second);
    return a->y != b->y ? a->y - b->y : a->x - b->x; // clamped to a plane: no overflow
}

static void SwapPoints(OrnMinRenderPoint *a, OrnMinRenderPoint *b) {
    const OrnMinRenderPoint kept = *a;
    *a = *b;
    *b = kept;
}

// Shell sort of the points of one row: nearly always a handful, and still quick when a plane's
// whole share lies in one row.
static void SortColumns(OrnMinRenderPoint *points, size_t count) {
    static const size_t kGaps[] = {1750, 701, 301, 132, 57, 23, 10, 4, 1}; // M. Ciura, 2001
    for (const size_t gap : kGaps)
        for (size_t i = gap; i < count; ++i)
            for (size_t j = i; j >= gap && points[j].x < points[j - gap].x; j -= gap)
                SwapPoints(&points[j], &points[j - gap]);
}

// Moves every point into its row's share of the array, by following the displaced points around.
// ends[r] is where the share of row firstRow + r ends.
static void PartitionByRow(OrnMinRenderPoint *points, int32_t firstRow, const uint16_t *ends,
                           size_t rows) {
    uint16_t next[kScratchPoints / 2]; // the first place of each share not yet settled
    next[0] = 0;
    for (size_t r = 1; r < rows; ++r)
        next[r] = ends[r - 1];
    for (size_t r = 0; r < rows; ++r) {
        while (next[r] < ends[r]) {
            OrnMinRenderPoint *point = &points[next[r]];
            const auto home = static_cast<size_t>(point->y - firstRow);
            if (home != r)
                SwapPoints(point, &points[next[home]]);
            ++next[home];
        }
    }
}

// A general sort would dominate the fill and, in common C libraries, allocate. Two points a row
// bound the number of rows by half the number of points.
void SortCrossings(OrnMinRenderPoint *points, size_t count) {
    if (count == 0)
        return;
    int32_t firstRow = points[0].y;
    int32_t lastRow = points[0].y;
    for (size_t i = 1; i < count; ++i) {
        firstRow = static_cast<int32_t>(Min(firstRow, points[i].y));
        lastRow = static_cast<int32_t>(Max(lastRow, points[i].y));
    }
    const auto rows = static_cast<size_t>(lastRow - firstRow) + 1;

    uint16_t ends[kScratchPoints / 2] = {0};
    for (size_t i = 0; i < count; ++i)
        ++ends[points[i].y - firstRow];
    for (size_t r = 1; r < rows; ++r)
        ends[r] = static_cast<uint16_t>(ends[r] + ends[r - 1]);

    PartitionByRow(points, firstRow, ends, rows);
    for (size_t r = 0, begin = 0; r < rows; begin = ends[r++])
        SortColumns(points + begin, ends[r] - begin);
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

// The walk at the row that lies rows (1 or more) below the edge's upper end: the column nearest to
// the exact crossing, a tie going toward the upper end. Reached arithmetically, so that edges far
// above the frame cost nothing. All products stay below 2^64.
static EdgeWalk StartEdgeWalk(OrnMinRenderPoint upper, OrnMinRenderPoint lower, int64_t rows) {
    const int64_t height = int64_t{lower.y} - upper.y;
    const int64_t shift = int64_t{lower.x} - upper.x;
    const int32_t direction = shift >= 0 ? 1 : -1;
    const auto width = static_cast<uint64_t>(shift >= 0 ? shift : -shift);
    const auto height64 = static_cast<uint64_t>(height);

    const uint64_t travelled = width * static_cast<uint64_t>(rows);
    const uint64_t half = height64 / 2;
    const uint64_t columns = travelled > half ? (travelled - half + (height64 - 1)) / height64 : 0;
    const auto error = static_cast<int64_t>(half + columns * height64 - travelled);
    return {upper.x + direction * static_cast<int64_t>(columns),
            error,
            height,
            direction * static_cast<int64_t>(width / height64),
            static_cast<int64_t>(width % height64),
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

// Where the crossing points of one plane go.
struct CrossingList {
    OrnMinRenderPoint *next;
    OrnMinRenderPoint *end;
    int32_t width; // of the plane
    int32_t height;
};

static bool IsFull(const CrossingList *list) {
    return list->next == list->end;
}

static void AddCrossing(CrossingList *list, int64_t x, int32_t y) {
    if (!IsFull(list))
        *list->next++ = {ClampToSize(x, list->width), y};
}

static bool HasPlaneRow(const CrossingList *list, int32_t y) {
    return y >= 0 && y < list->height;
}

// Adds the crossings of the edge a - b with the rows of the plane. nextY is the row of the vertex
// after b. A vertex counts once as the start of an edge, and as the end of one only where it is a
// local top or bottom, so that every row gets an even number of points.
static void ComputeSegmentGuardPoints(CrossingList *list, OrnMinRenderPoint a, OrnMinRenderPoint b,
                                      int32_t nextY) {
    const bool upward = a.y > b.y;
    if (HasPlaneRow(list, a.y))
        AddCrossing(list, a.x, a.y);
    if (HasPlaneRow(list, b.y) && (b.y < nextY) == upward)
        AddCrossing(list, b.x, b.y);

    const OrnMinRenderPoint upper = upward ? b : a;
    const OrnMinRenderPoint lower = upward ? a : b;
    const int64_t firstRow = Max(int64_t{upper.y} + 1, 0);
    const auto endRow = static_cast<int32_t>(Min(lower.y, list->height));
    if (firstRow >= endRow)
        return;
    EdgeWalk walk = StartEdgeWalk(upper, lower, firstRow - upper.y);
    for (auto y = static_cast<int32_t>(firstRow); y < endRow && !IsFull(list); ++y) {
        AddCrossing(list, walk.x, y);
        StepEdgeWalk(&walk);
    }
}

static OrnMinRenderPoint ShiftPoint(OrnMinRenderPoint point, int32_t shift) {
    return {point.x >> shift, point.y >> shift};
}

// Lists the crossings of one plane (shift 0: luma, 1: chroma) as spans in the scratch memory.
// Returns their number in points, or 0 when there are none or more than the memory can tell from
// too many.
static int32_t FillPolygonPlane(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                                const OrnMinRenderPoint *points, size_t count, int32_t shift) {
    OrnMinRenderPoint *const first = ScratchPoints(context);
    CrossingList list = {first, first + kScratchPoints, image->width >> shift,
                         image->height >> shift};
    for (size_t i = 0; i < count && !IsFull(&list); ++i) {
        const OrnMinRenderPoint a = ShiftPoint(points[i], shift);
        const OrnMinRenderPoint b = ShiftPoint(points[(i + 1) % count], shift);
        const OrnMinRenderPoint next = ShiftPoint(points[(i + 2) % count], shift);
        ComputeSegmentGuardPoints(&list, a, b, next.y);
    }
    if (IsFull(&list))
        return 0;
    const auto crossings = static_cast<size_t>(list.next - first);
    SortCrossings(first, crossings);
    return static_cast<int32_t>(crossings);
}

static bool IsPolygon(const OrnMinRenderContext *context, const OrnMinRenderImage *image,
                      const OrnMinRenderPoint *points, size_t count) {
    return context && image && points && count >= 3;
}

void OrnMinRenderFillPolygonY8(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                               const OrnMinRenderPoint *points, size_t count, uint8_t luma) {
    if (!IsPolygon(context, image, points, count) || !image->yPlane)
        return;
    const int32_t crossings = FillPolygonPlane(context, image, points, count, 0);
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
    const int32_t crossings = FillPolygonPlane(context, image, points, count, 1);
    OrnMinRenderDrawScanlinesUV(image, ScratchSpans(context), crossings, colour);
}
