// SPDX-License-Identifier: MIT
// Ellipses and rounded rectangles, outlined and filled. All of them are stepped in integers along a
// quarter of an ellipse, which the other three mirror: a rounded rectangle's corners are the
// quarters of one ellipse, moved apart. An outline stores, row by row, the run of pixels that each
// quarter leaves there; a fill stores row pairs, or lists them in the context's scratch memory,
// where they are long.
#include "min_render.h"
#include "pixop.h"

using namespace orn;

// ---- The stepping ----

// An arc of an ellipse from one end of an axis to where the curve has turned by half, each step
// going onward by one, along the other axis, and some of them inward by one, too. The steep arc
// starts at an end of the horizontal axis, goes onward by rows and inward by columns. The flat arc
// is the same with rows and columns, width and height exchanged.
//
// After k steps of which j went inward, with the starting values m0, r0 and f0,
//     rise   = r0 + k * onwardStep
//     fall   = f0 - j * inwardStep
//     margin = m0 - k * r0 - onwardStep * k (k - 1) / 2 + j * f0 - inwardStep * j (j - 1) / 2
// and the sign of margin - rise tells on which side of the curve the middle between the next two
// columns lies: when it is negative, outside, the step goes inward. Where the curve has turned by
// half, the rise has grown past the fall.
struct Arc {
    int64_t onwardStep;
    int64_t inwardStep;
    int64_t rise;   // what a step onward takes from the margin
    int64_t fall;   // what a step inward gives back
    int64_t margin; // how far inside the curve
    int64_t excess; // of the rise over the fall up to which the arc goes on
};

// Beyond this width or height the terms would leave 64 bits; nothing is drawn.
constexpr int64_t kMaxEllipseSize = 65536;

// The arc of a curve whose equation leaves the given error at the start. The gradient of the curve
// is gradient there, and grows by onwardStep with every step until it passes the limit, which
// shrinks by inwardStep with every step inward.
static inline Arc MakeArc(int64_t onwardStep, int64_t inwardStep, int64_t gradient, int64_t limit,
                          int64_t error) {
    const int64_t fall = -2 * error - inwardStep;
    return {2 * onwardStep, 2 * inwardStep, 2 * gradient, fall, -error, 2 * limit - fall};
}

// The steep arc of an outline, in doubled units: its radii are the width and the height. With
// x = width - j - 1/2 and y = k + 1/2, and but for the rounding of halves, the margin is negative
// where width^2 y^2 + height^2 x^2 - width^2 height^2 exceeds width^2 / 4 - height^2 (j + 3/4).
static inline Arc OutlineArc(int64_t width, int64_t height) {
    const int64_t onwardStep = width * width / 2;
    const int64_t inwardStep = height * height / 2;
    return MakeArc(onwardStep, inwardStep, onwardStep, inwardStep * width + onwardStep,
                   height * height * (1 - width) / 2);
}

// The steep arc of a fill, whose radii a and b are half the width and half the height. With
// x = a - j - 1/2 and y = k, and but for the rounding of quarters, the margin is negative where
// a^2 y^2 + b^2 x^2 - a^2 b^2 exceeds -b^2 / 4.
static inline Arc FillArc(int64_t width, int64_t height) {
    const int64_t onwardStep = width * width / 2;
    const int64_t inwardStep = height * height / 2;
    const int64_t gradient = width * width / 4;
    return MakeArc(onwardStep, inwardStep, gradient, width * inwardStep / 2 + gradient,
                   (1 - width) * height * height / 4);
}

// False where the curve has turned by half.
static inline bool GoesOn(const Arc &arc) {
    return arc.rise <= arc.fall + arc.excess;
}

// Goes inward, where a step onward has led outside the curve.
static inline bool StepInward(Arc *arc) {
    if (arc->margin >= 0)
        return false;
    arc->margin += arc->fall;
    arc->fall -= arc->inwardStep;
    return true;
}

// Goes onward; true: and inward.
static inline bool Step(Arc *arc) {
    arc->margin -= arc->rise;
    arc->rise += arc->onwardStep;
    return StepInward(arc);
}

static int64_t Distance(int32_t a, int32_t b) {
    return a < b ? int64_t{b} - a : int64_t{a} - b;
}

// ---- Outlines ----

// An outline consists of blocks of 2 x 2 pixels, one in each quadrant for each point of the curve.
// Blocks are anchored at their upper left pixel, at offsets from the centre that are stepped in
// doubled units, so that a centre between two pixels is exact; and each has the chroma sample that
// lies a pixel further out than its anchor. What a quadrant's blocks leave in a row of a plane is
// one run, since the curve passes neighbouring columns there: it is stored once, instead of block
// by block.

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
    const int64_t y = row << shape.shift;
    return rows.direction > 0 ? y - rows.y : rows.y - y - (kAnchorRows - 1);
}

// Stores what blocks that lie in the frame leave of a row: those anchored at doubled columns first
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
    const ptrdiff_t pitch = ptrdiff_t{rows.direction} << shape.shift;
    const int32_t *window = band.memory + Band::kMargin + WindowOf(rows, shape, rows.first);
    uint8_t *row = SampleAt(plane, 0, rows.first);
    for (int64_t count = rows.end - rows.first; count > 0; --count) {
        const int64_t outer = steep ? window[0] : window[kAnchorRows];
        const int64_t inner = steep ? window[kAnchorRows - 1] : window[0] + 1;
        StoreRun<steep>(row, shape, left - outer, left - inner, pattern);
        StoreRun<steep>(row, shape, right + inner, right + outer, pattern);
        window += pitch;
        row += stride;
    }
}

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

template <bool steep>
static inline void PaintBand(const OrnMinRenderImage *image, OrnMinRenderColour colour,
                             const Ring &ring, const Band &band) {
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

// Each step is a row.
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
    *to = trace;
}

// A row ends with a step inward.
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
    *to = trace;
}

static void RepeatEnds(Band *band, int32_t last) {
    int32_t *const edges = band->memory + Band::kMargin;
    for (int32_t i = 1; i <= Band::kMargin; ++i) {
        edges[-i] = edges[0];
        edges[last + i] = edges[last];
    }
}

// Draws the steep arc or the flat one, in all four quadrants.
template <bool steep>
static void TraceArcs(const OrnMinRenderImage *image, OrnMinRenderColour colour, const Ring &ring) {
    Trace trace = steep ? Trace{OutlineArc(ring.width, ring.height), 0, ring.width, ring.height}
                        : Trace{OutlineArc(ring.height, ring.width), 0, ring.height, ring.width};
    Band band;
    do {
        if (steep)
            TraceSteepBand(&trace, &band);
        else
            TraceFlatBand(&trace, &band);
        RepeatEnds(&band, steep ? band.rows - 1 : band.rows);
        PaintBand<steep>(image, colour, ring, band);
    } while (HasStep(trace));
}

static void DrawRing(const OrnMinRenderImage *image, const OrnMinRenderRect &box, int64_t width,
                     int64_t height, OrnMinRenderColour colour) {
    const Ring ring = MakeRing(image, box, width, height);
    TraceArcs<true>(image, colour, ring);
    TraceArcs<false>(image, colour, ring);
}

void OrnMinRenderDrawEllipseYUV420SP(OrnMinRenderContext *, const OrnMinRenderImage *image,
                                     const OrnMinRenderRect *rect, OrnMinRenderColour colour) {
    if (!image || !rect)
        return;
    const int64_t width = Distance(rect->left, rect->right);
    const int64_t height = Distance(rect->top, rect->bottom);
    if (width <= kMaxEllipseSize && height <= kMaxEllipseSize)
        DrawRing(image, *rect, width, height, colour);
}

// ---- The rows of fills ----

// The rows distance above and below the centre, each filled halfWidth to either side.
struct RowPair {
    int64_t halfWidth;
    int64_t distance;
};

// Row pairs are gathered while the arcs are stepped, and painted whenever there is no room for
// more.
struct RowPairs {
    static constexpr int32_t kMax = 256;
    RowPair pairs[kMax];
    int32_t count;
};

// A shape to be filled, with quarters of an ellipse in its corners.
struct Fill {
    const OrnMinRenderImage *image;
    OrnMinRenderColour colour;
    OrnMinRenderScanline *spans; // in the context's scratch memory
    int64_t centreX;
    int64_t centreY;
    int64_t width; // of the ellipse
    int64_t height;
    bool isNarrow;
};

// Rows that are no longer are stored one by one; longer ones are worth a list for the painter of
// spans, in which a pair has two luma spans and one chroma span. (AMD EPYC 9004; filled ellipses of
// 24 to 400 columns.)
constexpr int64_t kShortRow = 128;
constexpr int32_t kLumaSpans = 2 * RowPairs::kMax;
static_assert(kLumaSpans + RowPairs::kMax <= kScratchSpans, "the lists of both planes");

static Fill StartFill(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                      const OrnMinRenderRect *rect, int64_t width, int64_t height,
                      OrnMinRenderColour colour) {
    return {image,
            colour,
            ScratchSpans(context),
            (int64_t{rect->left} + rect->right) / 2,
            (int64_t{rect->top} + rect->bottom) / 2,
            width,
            height,
            Distance(rect->left, rect->right) <= kShortRow};
}

// Gives luma and chroma the spans of the rows, each as its columns and its row. The chroma row is
// taken from the lower half at even distances and from the upper half at odd ones, so that each
// comes once (the centre's, when odd, twice); its columns are rounded inward.
template <class Luma, class Chroma>
static inline void ForEachSpan(const Fill &fill, const RowPairs &pairs, Luma luma, Chroma chroma) {
    const int32_t width = fill.image->width;
    const int32_t height = fill.image->height;
    const int64_t centreX = fill.centreX;
    const int64_t centreY = fill.centreY;
    for (int32_t i = 0; i < pairs.count; ++i) {
        const int64_t halfWidth = pairs.pairs[i].halfWidth;
        const int64_t distance = pairs.pairs[i].distance;
        const int32_t first = ClampToSize(centreX - halfWidth, width);
        const int32_t end = ClampToSize(centreX + halfWidth, width);
        const int64_t upper = centreY - distance;
        const int64_t lower = centreY + distance;
        if (upper >= 0 && upper < height)
            luma(first, end, static_cast<int32_t>(upper));
        if (lower >= 0 && lower < height)
            luma(first, end, static_cast<int32_t>(lower));
        const int64_t row = distance % 2 == 0 ? lower : upper;
        const int32_t chromaFirst = ChromaSize(first);
        if (row >= 0 && row < height)
            chroma(chromaFirst, static_cast<int32_t>(Max(chromaFirst, end / 2)),
                   static_cast<int32_t>(row / 2));
    }
}

static void StoreRows(const Fill &fill, const RowPairs &pairs) {
    const Plane lumaPlane = LumaPlane(fill.image);
    const Plane chromaPlane = ChromaPlane(fill.image);
    const Pattern lumaPattern = LumaPattern(fill.colour.y);
    const Pattern chromaPattern = ChromaPattern(fill.colour);
    const auto store = [](const Plane &plane, Pattern pattern, int32_t first, int32_t end,
                          int32_t row) {
        if (plane.first)
            FillRun(SampleAt(plane, first, row), (end - first) * plane.sampleBytes, pattern);
    };
    ForEachSpan(
        fill, pairs,
        [&](int32_t first, int32_t end, int32_t row) {
            store(lumaPlane, lumaPattern, first, end, row);
        },
        [&](int32_t first, int32_t end, int32_t row) {
            store(chromaPlane, chromaPattern, first, end, row);
        });
}

static void ListRows(const Fill &fill, const RowPairs &pairs) {
    OrnMinRenderScanline *luma = fill.spans;
    OrnMinRenderScanline *chroma = fill.spans + kLumaSpans;
    ForEachSpan(
        fill, pairs,
        [&](int32_t first, int32_t end, int32_t row) { *luma++ = MakeSpan(first, end, row); },
        [&](int32_t first, int32_t end, int32_t row) { *chroma++ = MakeSpan(first, end, row); });
    const kernels::Set set = kernels::Best();
    if (fill.image->yPlane)
        kernels::PaintSpans(LumaPlane(fill.image), fill.spans,
                            static_cast<int32_t>(luma - fill.spans), LumaPattern(fill.colour.y),
                            set);
    if (fill.image->uvPlane)
        kernels::PaintSpans(ChromaPlane(fill.image), fill.spans + kLumaSpans,
                            static_cast<int32_t>(chroma - fill.spans - kLumaSpans),
                            ChromaPattern(fill.colour), set);
}

static void PaintRowPairs(const Fill &fill, RowPairs *pairs) {
    if (fill.isNarrow)
        StoreRows(fill, *pairs);
    else
        ListRows(fill, *pairs);
    pairs->count = 0;
}

static inline void FillEllipseAddLine(const Fill &fill, RowPairs *pairs, int64_t halfWidth,
                                      int64_t distance) {
    pairs->pairs[pairs->count++] = {halfWidth, distance};
    if (pairs->count == RowPairs::kMax)
        PaintRowPairs(fill, pairs);
}

// Adds the rows of the steep arc outward from the given one; returns the first that is not added.
// The arc may go on for some slack beyond where the curve has turned by half. It ends, since the
// rise grows with every row and the fall doesn't.
static int64_t AddSteepRows(const Fill &fill, RowPairs *pairs, int64_t slack, int64_t halfWidth,
                            int64_t distance) {
    Arc arc = FillArc(fill.width, fill.height);
    arc.excess += slack;
    while (GoesOn(arc)) {
        FillEllipseAddLine(fill, pairs, halfWidth, distance);
        ++distance;
        if (Step(&arc))
            --halfWidth;
    }
    return distance;
}

// Adds the rows of the flat arc from the given one inward, each when the curve first reaches it,
// so that the outermost one never is. Ends with the arc, or with the rows above the last distance.
static void AddFlatRows(const Fill &fill, RowPairs *pairs, int64_t slack, int64_t halfWidth,
                        int64_t distance, int64_t last) {
    Arc arc = FillArc(fill.height, fill.width);
    arc.excess += slack;
    while (distance > last && GoesOn(arc)) {
        ++halfWidth;
        if (Step(&arc)) {
            --distance;
            FillEllipseAddLine(fill, pairs, halfWidth, distance);
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
    const Fill fill = StartFill(context, image, rect, width, height, colour);
    RowPairs pairs;
    pairs.count = 0;
    // The steep arc ends as soon as the curve has turned by half, which a thin one has from the
    // start; the flat one goes on down to the rows that are there.
    const int64_t addedRows = AddSteepRows(fill, &pairs, -2, width / 2, 0);
    AddFlatRows(fill, &pairs, INT64_MAX / 2, 0, height / 2, addedRows);
    PaintRowPairs(fill, &pairs);
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
    DrawRing(image, box, 2 * corners.x, 2 * corners.y, colour);
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
    const Fill fill = StartFill(context, image, rect, 2 * corners.x, 2 * corners.y, colour);
    RowPairs pairs;
    pairs.count = 0;
    const int64_t halfWidth = Distance(rect->left, rect->right) / 2;
    const int64_t halfHeight = Distance(rect->top, rect->bottom) / 2;
    AddSteepRows(fill, &pairs, 0, halfWidth, halfHeight - corners.y);
    // Some rows of the flat arc are there already, and are painted twice.
    AddFlatRows(fill, &pairs, 0, halfWidth - corners.x, halfHeight, INT64_MIN);
    PaintRowPairs(fill, &pairs);

    const OrnMinRenderRect box = OrderCorners(rect);
    const OrnMinRenderRect band = {box.left, static_cast<int32_t>(box.top + corners.y), box.right,
                                   static_cast<int32_t>(box.bottom - corners.y)};
    OrnMinRenderFillRectYUV420SP(context, image, &band, colour);
}
