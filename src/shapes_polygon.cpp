// SPDX-License-Identifier: MIT
// Polygons, filled by the even-odd rule. Each edge crosses the rows from its upper end up to, but
// without, its lower end at one point each; the crossings of a plane are listed in the context's
// scratch memory, row by row and from left to right, so that every two of them are a span.
//
// A few edges are walked side by side, from one vertex to the next: as many of them pass each row
// in between, so that the places of their crossings in the list are known. Of many edges, the
// crossings of each row are counted first.
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
    const uint32_t whole = width < height ? 0 : width / height; // spares steep edges a division
    const int64_t wholeStep = int64_t{whole} * direction;
    const uint32_t rest = width - whole * height;

    const uint64_t rests = rest * static_cast<uint64_t>(rows);
    const uint64_t half = height / 2;
    uint64_t more = 0;
    if (rests > half)
        more = (rests - half + (height - 1)) / height;
    return {upper.x + wholeStep * rows + direction * static_cast<int64_t>(more),
            static_cast<int64_t>(half + more * height - rests),
            height,
            wholeStep,
            rest,
            direction};
}

static inline void StepEdgeWalk(EdgeWalk *walk) {
    const int64_t error = walk->error - walk->rest;
    const int64_t wrapped = error + walk->height;
    const int64_t step = walk->wholeStep;
    const int64_t more = step + walk->direction;
    walk->x += error < 0 ? more : step;
    walk->error = error < 0 ? wrapped : error;
}

// ---- A polygon in a plane ----

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

struct Edge {
    OrnMinRenderPoint upper;
    OrnMinRenderPoint lower;
    int32_t firstRow; // of those that lie in the plane
    int32_t endRow;   // not below firstRow; the same for a level edge
};

// Rows count from the upper end up to the lower one, whichever is the start: so the edges on both
// sides of a vertex that the outline passes downward or upward share it out, and at a top or bottom
// both have it or none.
static inline Edge MakeEdge(const PolygonPlane &plane, OrnMinRenderPoint a, OrnMinRenderPoint b) {
    const bool upward = a.y > b.y;
    const OrnMinRenderPoint upper = upward ? b : a;
    const OrnMinRenderPoint lower = upward ? a : b;
    return {upper, lower, ClampToSize(upper.y, plane.height), ClampToSize(lower.y, plane.height)};
}

template <class Use> static inline void ForEachEdge(const PolygonPlane &plane, Use use) {
    OrnMinRenderPoint a = VertexOf(plane, 0);
    for (size_t i = 1; i <= plane.count; ++i) {
        const OrnMinRenderPoint b = VertexOf(plane, i);
        use(MakeEdge(plane, a, b));
        a = b;
    }
}

static inline EdgeWalk StartAtFirstRow(const Edge &edge) {
    return StartEdgeWalk(edge.upper, edge.lower, int64_t{edge.firstRow} - edge.upper.y);
}

// ---- The limit ----

// A plane is left alone when its crossings are kScratchPoints or more, counted with both ends of an
// edge at the outline's tops and bottoms: twice a vertex there, once any other one, and once each
// row between the ends of an edge.
static int64_t CountCrossings(const PolygonPlane &plane) {
    int64_t crossings = 0;
    OrnMinRenderPoint a = VertexOf(plane, 0);
    OrnMinRenderPoint b = VertexOf(plane, 1);
    for (size_t i = 0; i < plane.count; ++i) {
        const OrnMinRenderPoint c = VertexOf(plane, i + 2);
        const bool upward = a.y > b.y;
        const bool turns = (b.y < c.y) == upward;
        const int64_t first = upward ? int64_t{b.y} + 1 : a.y;
        const int64_t end = upward ? int64_t{a.y} + 1 : Max(b.y, int64_t{a.y} + 1);
        crossings += ClampToSize(end, plane.height) - ClampToSize(first, plane.height);
        crossings += turns && b.y >= 0 && b.y < plane.height;
        a = b;
        b = c;
    }
    return crossings;
}

// The rows of the plane that the outline passes.
struct RowRange {
    int32_t first;
    int32_t end;
    bool tooMany; // crossings
};

// An edge has two crossings more than the rows that it goes down, at most; mostly that is enough to
// know that there are not too many.
static RowRange FindRows(const PolygonPlane &plane) {
    int32_t top = INT32_MAX;
    int32_t bottom = INT32_MIN;
    uint64_t down = 0;
    int32_t previous = plane.points[plane.count - 1].y;
    for (size_t i = 0; i < plane.count; ++i) {
        const int32_t y = plane.points[i].y;
        const int64_t step = int64_t{y} - previous;
        down += static_cast<uint64_t>(step < 0 ? -step : step);
        top = y < top ? y : top;
        bottom = y > bottom ? y : bottom;
        previous = y;
    }
    // Halved coordinates may lie half a row further apart. (Of so many vertices that the sum might
    // overflow, the number alone is too large.)
    constexpr size_t kLimit = kScratchPoints;
    const bool few = plane.count < kLimit && (down >> plane.shift) + 3 * plane.count < kLimit;
    return {ClampToSize(top >> plane.shift, plane.height),
            ClampToSize(bottom >> plane.shift, plane.height),
            !few && CountCrossings(plane) >= int64_t{kLimit}};
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

// Without a branch, which would be taken at random.
static inline void Order(OrnMinRenderPoint *left, OrnMinRenderPoint *right) {
    const int32_t a = left->x;
    const int32_t b = right->x;
    left->x = a < b ? a : b;
    right->x = a < b ? b : a;
}

// Four points, or a handful; the gaps keep the worst case short, when a plane's whole share lies in
// one row.
static void SortMore(OrnMinRenderPoint *points, size_t count) {
    static const size_t kGaps[] = {1750, 701, 301, 132, 57, 23, 10, 4}; // M. Ciura, 2001
    constexpr size_t kHandful = 16;
    if (count == 4) {
        Order(points, points + 1);
        Order(points + 2, points + 3);
        Order(points, points + 2);
        Order(points + 1, points + 3);
        Order(points + 1, points + 2);
        return;
    }
    if (count > kHandful)
        for (const size_t gap : kGaps)
            SortAtGap(points, count, gap);
    SortAtGap(points, count, 1);
}

// Sorts the points of one row, which are nearly always two.
static inline void SortColumns(OrnMinRenderPoint *points, size_t count) {
    if (count == 2)
        Order(points, points + 1);
    else
        SortMore(points, count);
}

// ---- A few edges, side by side ----

// So many that looking through all of them at each vertex takes less time than counting.
constexpr size_t kFewEdges = 24;

// The edges that pass the same rows, all in step.
struct Walks {
    EdgeWalk walks[kFewEdges];
    int32_t firstRows[kFewEdges];
    int32_t endRows[kFewEdges];
    int32_t count;
};

static void StartWalks(Walks *to, const PolygonPlane &plane) {
    to->count = 0;
    ForEachEdge(plane, [&](const Edge &edge) {
        if (edge.firstRow == edge.endRow)
            return;
        to->walks[to->count] = StartAtFirstRow(edge);
        to->firstRows[to->count] = edge.firstRow;
        to->endRows[to->count++] = edge.endRow;
    });
}

// Rows that the same edges pass.
struct Slab {
    EdgeWalk *walks[kFewEdges];
    int32_t count; // even: the outline is closed
    int32_t firstRow;
    int32_t endRow;
};

// The rows from the given one on up to where the next edge begins or ends, which is below it.
static void FindSlab(Slab *slab, Walks *from, int32_t firstRow, int32_t endRow) {
    slab->count = 0;
    slab->firstRow = firstRow;
    for (int32_t i = 0; i < from->count; ++i) {
        if (from->endRows[i] <= firstRow)
            continue;
        const bool passes = from->firstRows[i] <= firstRow;
        const int32_t next = passes ? from->endRows[i] : from->firstRows[i];
        endRow = next < endRow ? next : endRow;
        slab->walks[slab->count] = &from->walks[i];
        slab->count += passes;
    }
    slab->endRow = endRow;
}

static inline void ListRow(OrnMinRenderPoint *points, int64_t x0, int64_t x1, int32_t y,
                           int32_t width) {
    points[0] = {ClampToSize(Min(x0, x1), width), y};
    points[1] = {ClampToSize(Max(x0, x1), width), y};
}

// Two edges bound each row.
static void ListPairs(OrnMinRenderPoint *points, const Slab &slab, int32_t width) {
    EdgeWalk a = *slab.walks[0];
    EdgeWalk b = *slab.walks[1];
    for (int32_t y = slab.firstRow; y < slab.endRow; ++y, points += 2) {
        ListRow(points, a.x, b.x, y, width);
        StepEdgeWalk(&a);
        StepEdgeWalk(&b);
    }
    *slab.walks[0] = a;
    *slab.walks[1] = b;
}

static void ListColumns(OrnMinRenderPoint *points, const Slab &slab, int32_t width) {
    for (int32_t i = 0; i < slab.count; ++i) {
        EdgeWalk walk = *slab.walks[i];
        OrnMinRenderPoint *to = points + i;
        for (int32_t y = slab.firstRow; y < slab.endRow; ++y, to += slab.count) {
            *to = {ClampToSize(walk.x, width), y};
            StepEdgeWalk(&walk);
        }
        *slab.walks[i] = walk;
    }
    for (int32_t y = slab.firstRow; y < slab.endRow; ++y, points += slab.count)
        SortColumns(points, static_cast<size_t>(slab.count));
}

static size_t ListFewEdges(OrnMinRenderPoint *points, const PolygonPlane &plane,
                           const RowRange &rows) {
    Walks walks;
    StartWalks(&walks, plane);
    size_t count = 0;
    Slab slab;
    for (int32_t y = rows.first; y < rows.end; y = slab.endRow) {
        FindSlab(&slab, &walks, y, rows.end);
        if (slab.count == 2)
            ListPairs(points + count, slab, plane.width);
        else
            ListColumns(points + count, slab, plane.width);
        count += static_cast<size_t>(slab.count) * static_cast<size_t>(slab.endRow - y);
    }
    return count;
}

// ---- Many edges ----

// Fewer than kScratchPoints crossings, at least two in a row, fill fewer rows than half their
// number.
constexpr int32_t kMaxCrossingRows = kScratchPoints / 2;

// The list being made, and where the next crossing of each row goes.
struct CrossingList {
    OrnMinRenderPoint *points;
    int32_t width; // of the plane
    int32_t firstRow;
    uint16_t next[kMaxCrossingRows + 1];
};

// +1 where an edge goes down, -1 where it goes up.
static inline int32_t DirectionOf(int32_t row, int32_t nextRow) {
    return (row < nextRow) - (row > nextRow);
}

// Finds where the share of each row begins: first how the number of crossings changes from row to
// row, then the sums of the sums of that. Returns the number of crossings.
static uint32_t FindShares(CrossingList *list, const PolygonPlane &plane, int32_t rows) {
    memset(list->next, 0, static_cast<size_t>(rows + 1) * sizeof *list->next);
    const auto rowOf = [&](size_t i) {
        return ClampToSize(VertexOf(plane, i).y, plane.height) - list->firstRow;
    };
    // At a vertex, one edge more begins where the outline goes on downward, and one more ends where
    // it came from above.
    int32_t row = rowOf(0);
    int32_t came = DirectionOf(rowOf(plane.count - 1), row);
    for (size_t i = 1; i <= plane.count; ++i) {
        const int32_t nextRow = rowOf(i);
        const int32_t goes = DirectionOf(row, nextRow);
        list->next[row] = static_cast<uint16_t>(list->next[row] + goes - came);
        came = goes;
        row = nextRow;
    }
    uint32_t inRow = 0;
    uint32_t before = 0;
    for (int32_t r = 0; r < rows; ++r) {
        inRow = (inRow + list->next[r]) & 0xFFFF; // changes may be negative
        list->next[r] = static_cast<uint16_t>(before);
        before += inRow;
    }
    return before;
}

static inline void AddCrossing(CrossingList *list, int64_t x, int32_t y) {
    const uint16_t place = list->next[y - list->firstRow]++;
    list->points[place] = {ClampToSize(x, list->width), y};
}

static inline void AddEdge(CrossingList *list, const Edge &edge) {
    if (edge.firstRow == edge.endRow)
        return;
    if (edge.endRow - edge.firstRow == 1 && edge.firstRow == edge.upper.y) {
        AddCrossing(list, edge.upper.x, edge.firstRow);
        return;
    }
    EdgeWalk walk = StartAtFirstRow(edge);
    for (int32_t y = edge.firstRow; y < edge.endRow; ++y) {
        AddCrossing(list, walk.x, y);
        StepEdgeWalk(&walk);
    }
}

// A general sort would dominate the fill and, in common C libraries, allocate; instead each point
// is put straight into its row's share of the list.
static size_t ListManyEdges(OrnMinRenderPoint *points, const PolygonPlane &plane,
                            const RowRange &range) {
    CrossingList list;
    list.points = points;
    list.width = plane.width;
    list.firstRow = range.first;
    const int32_t rows = range.end - range.first;
    const size_t total = FindShares(&list, plane, rows);
    ForEachEdge(plane, [&](const Edge &edge) { AddEdge(&list, edge); });

    // Each share now ends where its next point would go.
    for (int32_t r = 0, begin = 0; r < rows; begin = list.next[r++])
        SortColumns(points + begin, static_cast<size_t>(list.next[r] - begin));
    return total;
}

// ---- Filling ----

int32_t orn::FillPolygonPlane(OrnMinRenderPoint *crossings, const OrnMinRenderImage *image,
                              const OrnMinRenderPoint *points, size_t count, int32_t shift) {
    const PolygonPlane plane = {points, count, shift, image->width >> shift,
                                image->height >> shift};
    const RowRange rows = FindRows(plane);
    if (rows.first >= rows.end || rows.tooMany)
        return 0;
    return static_cast<int32_t>(count <= kFewEdges ? ListFewEdges(crossings, plane, rows)
                                                   : ListManyEdges(crossings, plane, rows));
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
