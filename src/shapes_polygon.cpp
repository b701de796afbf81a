// SPDX-License-Identifier: MIT
// Polygons, filled by the even-odd rule. Each edge crosses the rows that it passes at one point
// each; the crossings of a plane are listed in the context's scratch memory, row by row and from
// left to right, so that every two of them are a span.
#include "shapes_polygon.h"

#include "min_render.h"
#include "pixop.h"

using namespace orn;

// ---- Edges ----

// The crossing of an edge with one pixel row, and how it moves from row to row: by whole columns,
// and one more whenever the error term runs below zero. r rows below the edge's upper end, of an
// edge that shifts by width columns over height rows,
//     more  = the least number >= 0 with r * rest - more * height <= height / 2
//     x     = upper.x + direction * (r * (width / height) + more)
//     error = height / 2 - r * rest + more * height
// which is the column nearest to the exact crossing, a tie going toward the upper end.
struct EdgeWalk {
    int64_t x;
    int64_t error; // 0..height - 1
    int64_t height;
    int64_t wholeStep; // width / height, with the direction's sign
    int64_t rest;      // width % height
    int32_t direction; // +1 or -1
};

// The walk so many rows below the edge's upper end. Reached arithmetically, so that edges far above
// the frame cost nothing. The products stay below 2^64.
static inline EdgeWalk StartEdgeWalk(OrnMinRenderPoint upper, OrnMinRenderPoint lower,
                                     int64_t rows) {
    const int64_t shift = int64_t{lower.x} - upper.x;
    const auto width = static_cast<uint32_t>(shift >= 0 ? shift : -shift);
    const auto height = static_cast<uint32_t>(int64_t{lower.y} - upper.y);
    const int32_t direction = shift >= 0 ? 1 : -1;
    const int64_t wholeStep = int64_t{width / height} * direction;
    const uint32_t rest = width % height;

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

static inline void StepEdgeWalk(EdgeWalk *walk) {
    walk->x += walk->wholeStep;
    walk->error -= walk->rest;
    if (walk->error < 0) {
        walk->x += walk->direction;
        walk->error += walk->height;
    }
}

// ---- Segments ----

// A polygon as one plane sees it: shift 0 is luma, 1 chroma.
struct PolygonPlane {
    const OrnMinRenderPoint *points;
    size_t count;
    int32_t shift;
    int32_t width;
    int32_t height;
};

static inline OrnMinRenderPoint VertexOf(const PolygonPlane &plane, size_t i) {
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
static inline Segment ComputeSegment(int32_t planeHeight, OrnMinRenderPoint a, OrnMinRenderPoint b,
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

// ---- The list of crossings ----

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

static inline void CountRows(CrossingList *list, int32_t first, int32_t end) {
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

static inline void AddCrossing(CrossingList *list, int64_t x, int32_t y) {
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

// ---- The order of a row ----

int orn::ComparePoints(const void *first, const void *second) {
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
static inline void SortColumns(OrnMinRenderPoint *points, size_t count) {
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

// ---- Filling ----

// A general sort would dominate the fill and, in common C libraries, allocate; instead each point
// is put straight into its row's share of the list.
int32_t orn::FillPolygonPlane(OrnMinRenderPoint *crossings, const OrnMinRenderImage *image,
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
