// SPDX-License-Identifier: MIT
// An outline consists of blocks of 2 x 2 pixels, one in each quadrant for each point of the curve.
// Blocks are anchored at their upper left pixel, at offsets from the centre that are stepped in
// doubled units, so that a centre between two pixels is exact; and each has the chroma sample that
// lies a pixel further out than its anchor. What a quadrant's blocks leave in a row of a plane is
// one run, since the curve passes neighbouring columns there: it is stored once, instead of block
// by block.
#include "shapes_outline.h"

#include "pixop.h"
#include "shapes_arc.h"

using namespace orn;

// ---- Where an outline lies ----

// An ellipse of the given size whose quarters lie in the corners of a box.
struct Ring {
    int64_t width;
    int64_t height;
    int64_t left; // doubled coordinates of the quarters' centres
    int64_t right;
    int64_t top;
    int64_t bottom;
    int64_t endX2; // of the doubled coordinates at which blocks are anchored
    int64_t endY2;
    bool inside; // all blocks lie in the frame
};

// Blocks reach a pixel beyond the box to the right and downward. None is anchored on row 0, and the
// chroma of one on column 0 would lie a sample further to the left.
static Ring MakeRing(const OrnMinRenderImage *image, const OrnMinRenderRect &box, int64_t width,
                     int64_t height) {
    const int64_t centreX2 = int64_t{box.left} + box.right;
    const int64_t centreY2 = int64_t{box.top} + box.bottom;
    const int64_t shiftX = Distance(box.left, box.right) - width;
    const int64_t shiftY = Distance(box.top, box.bottom) - height;
    const bool inside = Min(box.left, box.right) >= 1 && Min(box.top, box.bottom) >= 1 &&
                        Max(box.left, box.right) + 1 < image->width &&
                        Max(box.top, box.bottom) + 1 < image->height;
    return {width,
            height,
            centreX2 - shiftX,
            centreX2 + shiftX,
            centreY2 - shiftY,
            centreY2 + shiftY,
            2 * Max(image->width, 0),
            2 * Max(image->height, 0) + 2,
            inside};
}

// ---- The rows of a plane ----

// How a plane shows blocks. A row of chroma holds four doubled rows of anchors; and so does a row
// of luma, which shows the blocks anchored there and those anchored a row above.
struct BlockShape {
    int32_t shift;   // from doubled coordinates to samples
    int32_t side;    // in samples
    int32_t outward; // doubled, from the anchor to the sample
    ptrdiff_t sampleBytes;
};
constexpr BlockShape kLumaBlock = {1, 2, 0, kLumaBytes};
constexpr BlockShape kChromaBlock = {2, 1, 2, kChromaBytes};
constexpr int32_t kAnchorRows = 4;

// The curve's way through neighbouring doubled rows, in the order in which the arc passes them:
// outward from the centre's row where it is steep, inward to it where it is flat. In row i of the
// steep arc lies the offset edges[i], in row i of the flat arc lie edges[i] + 1 to edges[i + 1].
// Bands are painted one by one, so that any ellipse fits: what two of them leave in one row are two
// runs.
struct Band {
    static constexpr int32_t kMaxRows = 256;
    static constexpr int32_t kMargin = kAnchorRows - 1; // before and after, the ends are repeated
    int64_t start;                                      // distance of row 0 from the centre
    int32_t rows;
    int32_t memory[kMargin + kMaxRows + 1 + kMargin];
};

// The rows of a plane in which half a band shows. Its rows lie at y + i * direction there, y being
// doubled; a row of the plane shows those from window on.
struct BandRows {
    int64_t y;
    int32_t direction;
    int64_t first;
    int64_t end;
};

static inline BandRows FindBandRows(const Ring &ring, const BlockShape &shape, const Band &band,
                                    bool steep, bool below) {
    const int32_t direction = steep == below ? 1 : -1;
    const int64_t anchor =
        below ? ring.bottom + band.start + shape.outward : ring.top - band.start - shape.outward;
    const int64_t y = anchor + (shape.side - 1) * 2;
    const int64_t other = y + direction * (band.rows - 1);
    return {y, direction, (Min(y, other) >> shape.shift) - (shape.side - 1),
            (Max(y, other) >> shape.shift) + 1};
}

static inline int64_t WindowOf(const BandRows &rows, const BlockShape &shape, int64_t row) {
    const int64_t y = row * (1 << shape.shift);
    return rows.direction > 0 ? y - rows.y : rows.y - y - (kAnchorRows - 1);
}

// ---- Blocks that lie in the frame ----

// Stores what blocks leave of a row: those anchored at doubled columns first
// to last. On the steep arc, four rows are three doubled columns at the most, so that the run is no
// longer than four bytes.
template <bool steep>
static inline void StoreRun(uint8_t *row, const BlockShape &shape, int64_t first, int64_t last,
                            Pattern pattern) {
    uint8_t *const from = row + (first >> shape.shift) * shape.sampleBytes;
    uint8_t *const end = row + ((last >> shape.shift) + shape.side) * shape.sampleBytes;
    if (steep) {
        StorePattern<2>(from, pattern);
        StorePattern<2>(end - 2, pattern);
    } else {
        FillRun(from, end - from, pattern);
    }
}

// Paints the band above the centre or below it, in the quarters to the left and to the right.
template <bool steep, const BlockShape &shape>
static void PaintInside(const Ring &ring, const Plane &plane, Pattern pattern, const Band &band,
                        bool below) {
    const BandRows rows = FindBandRows(ring, shape, band, steep, below);
    const int64_t left = ring.left - shape.outward;
    const int64_t right = ring.right + shape.outward;
    const auto stride = static_cast<ptrdiff_t>(plane.stride);
    const int32_t *edges = band.memory + Band::kMargin;
    int64_t window = WindowOf(rows, shape, rows.first);
    uint8_t *const start = SampleAt(plane, 0, rows.first);
    ptrdiff_t offset = 0;
    for (int64_t count = rows.end - rows.first; count > 0; --count) {
        const int64_t outer = edges[steep ? window : window + kAnchorRows];
        const int64_t inner = steep ? edges[window + kAnchorRows - 1] : edges[window] + 1;
        StoreRun<steep>(start + offset, shape, left - outer, left - inner, pattern);
        StoreRun<steep>(start + offset, shape, right + inner, right + outer, pattern);
        window += rows.direction * (1 << shape.shift);
        offset += stride;
    }
}

// ---- Blocks that may lie outside the frame ----

// A plane that a ring is clipped to.
struct ClipPlane {
    Plane plane;
    Pattern pattern;
    BlockShape shape;
    int32_t columns;
    int32_t rows;
};

// The same as StoreRun, less what lies outside the frame.
static void StoreClippedRun(const Ring &ring, const ClipPlane &to, uint8_t *row, int64_t first,
                            int64_t last, int64_t outward) {
    if (last < -1 || first >= ring.endX2) // a coordinate of -1, halved, is 0
        return;
    const BlockShape &shape = to.shape;
    const int64_t from = Max(Max(first, 0) + outward, 0) >> shape.shift;
    const int64_t at = Max(Max(Min(last, ring.endX2 - 1), 0) + outward, 0) >> shape.shift;
    const int64_t end = Min(at + shape.side, to.columns);
    FillRun(row + from * shape.sampleBytes, (end - from) * shape.sampleBytes, to.pattern);
}

// The same as PaintInside, less what lies outside the frame.
static void PaintClipped(const Ring &ring, const ClipPlane &to, const Band &band, bool steep,
                         bool below) {
    const BandRows rows = FindBandRows(ring, to.shape, band, steep, below);
    // Blocks are anchored at doubled rows 2 to endY2 - 1.
    const int64_t y2 = below ? ring.bottom + band.start : ring.top - band.start;
    const int64_t first = rows.direction > 0 ? Max(0, 2 - y2) : Max(0, y2 - ring.endY2 + 1);
    const int64_t end = Min(band.rows, rows.direction > 0 ? ring.endY2 - y2 : y2 - 1);
    const int64_t outward = to.shape.outward;
    const int32_t *edges = band.memory + Band::kMargin;
    for (int64_t y = Max(rows.first, 0); y < Min(rows.end, to.rows); ++y) {
        const int64_t window = WindowOf(rows, to.shape, y);
        const int64_t a = Max(first, window);
        const int64_t b = Min(end, window + kAnchorRows) - 1;
        if (a > b)
            continue;
        const int64_t outer = steep ? edges[a] : edges[b + 1];
        const int64_t inner = steep ? edges[b] : edges[a] + 1;
        uint8_t *row = SampleAt(to.plane, 0, y);
        StoreClippedRun(ring, to, row, ring.left - outer, ring.left - inner, -outward);
        StoreClippedRun(ring, to, row, ring.right + inner, ring.right + outer, outward);
    }
}

static void PaintBandClipped(const OrnMinRenderImage *image, OrnMinRenderColour colour,
                             const Ring &ring, const Band &band, bool steep) {
    const ClipPlane planes[] = {
        {LumaPlane(image), LumaPattern(colour.y), kLumaBlock, image->width, image->height},
        {ChromaPlane(image), ChromaPattern(colour), kChromaBlock, ChromaSize(image->width),
         ChromaSize(image->height)}};
    for (const ClipPlane &to : planes) {
        if (to.plane.first) {
            PaintClipped(ring, to, band, steep, false);
            PaintClipped(ring, to, band, steep, true);
        }
    }
}

// ---- Along the arcs ----

template <bool steep>
static void PaintBand(const OrnMinRenderImage *image, OrnMinRenderColour colour, const Ring &ring,
                      const Band &band) {
    if (!ring.inside) {
        PaintBandClipped(image, colour, ring, band, steep);
        return;
    }
    if (image->yPlane) {
        const Pattern pattern = LumaPattern(colour.y);
        PaintInside<steep, kLumaBlock>(ring, LumaPlane(image), pattern, band, false);
        PaintInside<steep, kLumaBlock>(ring, LumaPlane(image), pattern, band, true);
    }
    if (image->uvPlane) {
        const Pattern pattern = ChromaPattern(colour);
        PaintInside<steep, kChromaBlock>(ring, ChromaPlane(image), pattern, band, false);
        PaintInside<steep, kChromaBlock>(ring, ChromaPlane(image), pattern, band, true);
    }
}

// Where the stepping of an arc has come to.
struct Trace {
    Arc arc;
    int64_t onward; // offsets from the centre, doubled
    int64_t inward;
    int64_t size; // of the ellipse, the way onward
};

// Steps end where the curve has turned by half: the rise grows with every step while the fall
// doesn't. In an ellipse one pixel wide or high the rise stays 0, and they end with the ellipse.
// Inward they never pass the centre: there the rise is the greater.
static inline bool HasStep(const Trace &trace) {
    return GoesOn(trace.arc) && trace.onward <= trace.size;
}

static void RepeatEnds(Band *band, int32_t last) {
    int32_t *const edges = band->memory + Band::kMargin;
    for (int32_t i = 1; i <= Band::kMargin; ++i) {
        edges[-i] = edges[0];
        edges[last + i] = edges[last];
    }
}

// Each step is a row: after k steps in all, of which j went inward, its offset is the ellipse's
// width - j.
static void TraceSteepBand(Trace *to, Band *band) {
    Trace trace = *to;
    int32_t *const edges = band->memory + Band::kMargin;
    int32_t rows = 0;
    band->start = trace.onward;
    do {
        edges[rows++] = static_cast<int32_t>(trace.inward);
        ++trace.onward;
        if (Step(&trace.arc))
            --trace.inward;
    } while (rows < Band::kMaxRows && HasStep(trace));
    band->rows = rows;
    RepeatEnds(band, rows - 1);
    *to = trace;
}

// A row ends with a step inward: before the j-th, all rows but the first begin where the one before
// ended, and the last offset is the number of steps so far.
static void TraceFlatBand(Trace *to, Band *band) {
    Trace trace = *to;
    int32_t *const edges = band->memory + Band::kMargin;
    int32_t rows = 0;
    band->start = trace.inward;
    edges[0] = static_cast<int32_t>(trace.onward - 1);
    do {
        bool turns;
        do {
            ++trace.onward;
            turns = Step(&trace.arc);
        } while (!turns && HasStep(trace));
        edges[++rows] = static_cast<int32_t>(trace.onward - 1);
        trace.inward -= turns;
    } while (rows < Band::kMaxRows && HasStep(trace));
    band->rows = rows;
    RepeatEnds(band, rows);
    *to = trace;
}

// Draws the steep arc or the flat one, in all four quadrants.
static void DrawArcs(const OrnMinRenderImage *image, OrnMinRenderColour colour, const Ring &ring,
                     bool steep) {
    const int64_t across = steep ? ring.width : ring.height;
    const int64_t along = steep ? ring.height : ring.width;
    Trace trace = {OutlineArc(across, along), 0, across, along};
    Band band;
    do {
        if (steep) {
            TraceSteepBand(&trace, &band);
            PaintBand<true>(image, colour, ring, band);
        } else {
            TraceFlatBand(&trace, &band);
            PaintBand<false>(image, colour, ring, band);
        }
    } while (HasStep(trace));
}

void orn::DrawOutline(const OrnMinRenderImage *image, const OrnMinRenderRect &box, int64_t width,
                      int64_t height, OrnMinRenderColour colour) {
    const Ring ring = MakeRing(image, box, width, height);
    DrawArcs(image, colour, ring, true);
    DrawArcs(image, colour, ring, false);
}
