// SPDX-License-Identifier: MIT
// Bitmaps of the caller's, scaled into a rectangle by nearest neighbour. What of the rectangle lies
// in a plane is cut into pieces; the bitmap's rows that a piece shows become rows of a mask, and
// the mask is painted once for all rows of the plane that show them.
#include "kernels/kernels.h"

using namespace orn;

const int64_t WordWidth = kWordBits;

// ---- Sampling ----

// How one side of a bitmap is spread over a side of its rectangle: sample i of the rectangle shows
// column (or row) i * step / kSameSize of the bitmap.
struct Sampling {
    int64_t origin; // of the rectangle in the plane
    int64_t first;  // the samples inside the plane
    int64_t end;
    int64_t step;
};

constexpr int32_t kMaxBitmapSide = 32767; // times kSameSize stays below 2^31

static bool MakeSampling(int64_t from, int64_t to, int32_t bitmapSide, int32_t planeSide,
                         Sampling *sampling) {
    if (to <= from || bitmapSide < 1 || bitmapSide > kMaxBitmapSide)
        return false;
    const int64_t size = to - from;
    *sampling = {from, Max(0, -from), Min(size, planeSide - from), bitmapSide * kSameSize / size};
    return sampling->first < sampling->end;
}

struct BitmapView {
    const uint32_t *words; // the most significant bit leftmost
    int32_t width;
    int32_t height;
};

// Some rows of the bitmap, and for each the end of the samples that show it.
constexpr int32_t kPieceRows = 16;

struct SourceRows {
    int32_t count;
    const uint32_t *bits[kPieceRows];
    int64_t ends[kPieceRows];
};

// Whether several rows of the plane show one of the bitmap.
static bool Repeats(const Sampling &rows) {
    return rows.step < kSameSize;
}

// The rows shown from the given sample on, as many as a piece holds.
static void FindSourceRows(SourceRows *source, const BitmapView &bitmap, const Sampling &rows,
                           int64_t begin) {
    const int64_t pitch = WordsPerRow(bitmap.width);
    source->count = 0;
    for (int64_t end = begin; end < rows.end && source->count < kPieceRows; ++source->count) {
        const int64_t row = end * rows.step >> kFractionBits;
        end = Repeats(rows)
                  ? Min(rows.end, FirstSampleOf(static_cast<uint32_t>(row + 1), rows.step))
                  : end + 1;
        source->bits[source->count] = bitmap.words + row * pitch;
        source->ends[source->count] = end;
    }
}

// ---- Painting ----

constexpr int32_t kPieceWords = kMaxScaledBits / kWordBits;

// A column of pieces: how their bits are found, and the mask of one.
struct PieceColumn {
    kernels::Set set;
    Plane plane; // from the column's first sample on
    BitPlan plan;
    uint32_t words[kPieceRows * kPieceWords];
};

// Paints the rows of the plane that show the source rows, from sample begin on. Where each of them
// shows another row, the masks of all are painted as one.
static void PaintPiece(const PieceColumn &column, const SourceRows &source, int64_t begin,
                       const Sampling &rows, const Ink &ink) {
    const bool repeats = Repeats(rows);
    const int32_t samples = column.plan.scaling.samples;
    Mask mask = {column.words,
                 repeats ? 0 : kPieceWords,
                 0,
                 WordsPerRow(samples),
                 0xFFFFFFFFu,
                 BitRange(0, (samples - 1) % kWordBits + 1)};
    for (int32_t i = repeats ? 0 : source.count - 1; i < source.count; ++i) {
        mask.words = column.words + (repeats ? i * kPieceWords : 0);
        mask.rows = static_cast<int32_t>(source.ends[i] - begin);
        kernels::PaintMask(PlaneFrom(column.plane, 0, rows.origin + begin), mask, ink, column.set);
        begin = source.ends[i];
    }
}

static void PaintColumn(PieceColumn *column, const BitmapView &bitmap, const Sampling &rows,
                        const Ink &ink) {
    SourceRows source;
    for (int64_t begin = rows.first; begin < rows.end; begin = source.ends[source.count - 1]) {
        FindSourceRows(&source, bitmap, rows, begin);
        kernels::ExpandBits(column->words, kPieceWords, source.bits, source.count, column->plan,
                            column->set);
        PaintPiece(*column, source, begin, rows, ink);
    }
}

static void PaintBitmap(const Plane &plane, const BitmapView &bitmap, const Sampling &columns,
                        const Sampling &rows, const Ink &ink) {
    PieceColumn column;
    column.set = kernels::Best();
    for (int64_t first = columns.first; first < columns.end; first += kMaxScaledBits) {
        const auto samples = static_cast<int32_t>(Min(kMaxScaledBits, columns.end - first));
        column.plane = PlaneFrom(plane, columns.origin + first, 0);
        kernels::PlanBits(&column.plan, {first, columns.step, samples, WordsPerRow(bitmap.width)},
                          column.set);
        PaintColumn(&column, bitmap, rows, ink);
    }
}

// ---- Planes ----

static void DrawBitmapLuma(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                           const BitmapView &bitmap, uint8_t luma, bool half) {
    Sampling columns;
    Sampling rows;
    if (image->yPlane &&
        MakeSampling(rect->left, rect->right, bitmap.width, image->width, &columns) &&
        MakeSampling(rect->top, rect->bottom, bitmap.height, image->height, &rows))
        PaintBitmap(LumaPlane(image), bitmap, columns, rows, {LumaPattern(luma), half});
}

// The bitmap is sampled afresh onto the chroma grid, over the halved rectangle.
static void DrawBitmapChroma(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                             const BitmapView &bitmap, OrnMinRenderColour colour, bool half) {
    Sampling columns;
    Sampling rows;
    if (image->uvPlane &&
        MakeSampling(rect->left / 2, rect->right / 2, bitmap.width, ChromaSize(image->width),
                     &columns) &&
        MakeSampling(rect->top / 2, rect->bottom / 2, bitmap.height, ChromaSize(image->height),
                     &rows))
        PaintBitmap(ChromaPlane(image), bitmap, columns, rows, {ChromaPattern(colour), half});
}

void OrnMinRenderDrawBitmapY8(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                              int32_t width, int32_t height, const uint32_t *bits, uint8_t luma) {
    if (image && rect && bits)
        DrawBitmapLuma(image, rect, {bits, width, height}, luma, false);
}

static void DrawBitmap(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                       const BitmapView &bitmap, OrnMinRenderColour colour, bool half) {
    if (!image || !rect || !bitmap.words)
        return;
    DrawBitmapLuma(image, rect, bitmap, colour.y, half);
    DrawBitmapChroma(image, rect, bitmap, colour, half);
}

void OrnMinRenderDrawBitmapYUV420SP(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                                    int32_t width, int32_t height, const uint32_t *bits,
                                    OrnMinRenderColour colour) {
    DrawBitmap(image, rect, {bits, width, height}, colour, false);
}

void OrnMinRenderDrawBitmapSemiTransparentYUV420SP(const OrnMinRenderImage *image,
                                                   const OrnMinRenderRect *rect, int32_t width,
                                                   int32_t height, const uint32_t *bits,
                                                   OrnMinRenderColour colour) {
    DrawBitmap(image, rect, {bits, width, height}, colour, true);
}
