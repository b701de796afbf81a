// SPDX-License-Identifier: MIT
// Ellipses and rounded rectangles. A fill steps along the arcs of a quarter, gathers the rows that
// it passes as pairs above and below the centre, and paints them whenever it has enough of them.
#include "min_render.h"
#include "pixop.h"
#include "shapes_arc.h"
#include "shapes_outline.h"

using namespace orn;

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
    const int64_t height = fill.image->height;
    const int64_t lumaHeight = fill.image->yPlane ? height : 0; // a missing plane has no rows
    const int64_t chromaHeight = fill.image->uvPlane ? height : 0;
    const int64_t centreX = fill.centreX;
    const int64_t centreY = fill.centreY;
    for (int32_t i = 0; i < pairs.count; ++i) {
        const RowPair pair = pairs.pairs[i];
        const int32_t first = ClampToSize(centreX - pair.halfWidth, width);
        const int32_t end = ClampToSize(centreX + pair.halfWidth, width);
        const int64_t upper = centreY - pair.distance;
        const int64_t lower = centreY + pair.distance;
        if (upper >= 0 && upper < lumaHeight)
            luma(first, end, static_cast<int32_t>(upper));
        if (lower >= 0 && lower < lumaHeight)
            luma(first, end, static_cast<int32_t>(lower));
        const int64_t row = pair.distance % 2 == 0 ? lower : upper;
        const int32_t chromaFirst = ChromaSize(first);
        if (row >= 0 && row < chromaHeight)
            chroma(chromaFirst, static_cast<int32_t>(Max(chromaFirst, end / 2)),
                   static_cast<int32_t>(row / 2));
    }
}

static void StoreRows(const Fill &fill, const RowPairs &pairs) {
    const auto storeIn = [](const Plane &plane, Pattern pattern) {
        return [=](int32_t first, int32_t end, int32_t row) {
            FillRun(SampleAt(plane, first, row), (end - first) * plane.sampleBytes, pattern);
        };
    };
    ForEachSpan(fill, pairs, storeIn(LumaPlane(fill.image), LumaPattern(fill.colour.y)),
                storeIn(ChromaPlane(fill.image), ChromaPattern(fill.colour)));
}

static void ListRows(const Fill &fill, const RowPairs &pairs) {
    OrnMinRenderScanline *luma = fill.spans;
    OrnMinRenderScanline *const chromaSpans = fill.spans + kLumaSpans;
    OrnMinRenderScanline *chroma = chromaSpans;
    ForEachSpan(
        fill, pairs,
        [&](int32_t first, int32_t end, int32_t row) { *luma++ = MakeSpan(first, end, row); },
        [&](int32_t first, int32_t end, int32_t row) { *chroma++ = MakeSpan(first, end, row); });
    const kernels::Set set = kernels::Best();
    kernels::PaintSpans(LumaPlane(fill.image), fill.spans, static_cast<int32_t>(luma - fill.spans),
                        LumaPattern(fill.colour.y), set);
    kernels::PaintSpans(ChromaPlane(fill.image), chromaSpans,
                        static_cast<int32_t>(chroma - chromaSpans), ChromaPattern(fill.colour),
                        set);
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

// ---- Ellipses ----

void OrnMinRenderDrawEllipseYUV420SP(OrnMinRenderContext *, const OrnMinRenderImage *image,
                                     const OrnMinRenderRect *rect, OrnMinRenderColour colour) {
    if (!image || !rect)
        return;
    const int64_t width = Distance(rect->left, rect->right);
    const int64_t height = Distance(rect->top, rect->bottom);
    if (width <= kMaxEllipseSize && height <= kMaxEllipseSize)
        DrawOutline(image, *rect, width, height, colour);
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
    DrawOutline(image, box, 2 * corners.x, 2 * corners.y, colour);
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
