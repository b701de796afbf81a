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

// Not inline: four copies would take as much room as the drawing.
__attribute__((noinline)) static bool MakeSampling(int64_t from, int64_t to, int32_t bitmapSide,
                                                   int32_t planeSide, Sampling *sampling) {
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

constexpr int32_t kPieceRows = kMaxExpandedRows;

// The rows shown from some sample on, as many as a piece holds, and how many rows of the plane show
// each.
struct SourceRows {
    int32_t count;
    int64_t end; // of the samples that show them
    const uint32_t *bits[kPieceRows];
    int32_t repeats[kPieceRows];
};

static const uint32_t *RowShownBy(int64_t sample, const BitmapView &bitmap, const Sampling &rows) {
    return bitmap.words + (sample * rows.step >> kFractionBits) * WordsPerRow(bitmap.width);
}

// Of a bitmap that is not enlarged: every sample shows another row.
static void FindRows(SourceRows *source, const BitmapView &bitmap, const Sampling &rows,
                     int64_t begin) {
    source->count = static_cast<int32_t>(Min(kPieceRows, rows.end - begin));
    source->end = begin + source->count;
    for (int32_t i = 0; i < source->count; ++i)
        source->bits[i] = RowShownBy(begin + i, bitmap, rows);
}

// Of one that is enlarged: each row is shown by kSameSize / step samples, rounded down or up. Only
// the first one may have begun before, and needs the division.
static void FindRepeatedRows(SourceRows *source, const BitmapView &bitmap, const Sampling &rows,
                             int64_t begin) {
    const bool moves = rows.step > 0; // else all samples show the one row
    const int64_t least = moves ? kSameSize / rows.step : 0;
    const auto row = static_cast<uint32_t>(begin * rows.step >> kFractionBits);
    int64_t end = moves ? FirstSampleOf(row + 1, rows.step) : rows.end;
    int64_t nextColumn = (int64_t{row} + 2) * kSameSize;
    source->count = 0;
    source->end = begin;
    while (source->end < rows.end && source->count < kPieceRows) {
        const int64_t inside = Min(rows.end, end);
        source->bits[source->count] = RowShownBy(source->end, bitmap, rows);
        source->repeats[source->count++] = static_cast<int32_t>(inside - source->end);
        source->end = inside;
        end += least;
        end += end * rows.step < nextColumn;
        nextColumn += kSameSize;
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

static void PaintColumn(PieceColumn *column, const BitmapView &bitmap, const Sampling &rows,
                        const Ink &ink) {
    const int32_t samples = column->plan.scaling.samples;
    const bool repeated = rows.step < kSameSize;
    SourceRows source;
    for (int64_t begin = rows.first; begin < rows.end; begin = source.end) {
        if (repeated)
            FindRepeatedRows(&source, bitmap, rows, begin);
        else
            FindRows(&source, bitmap, rows, begin);
        kernels::ExpandBits(column->words, kPieceWords, source.bits, source.count, column->plan,
                            column->set);
        const Mask mask = {column->words,
                           kPieceWords,
                           source.count,
                           WordsPerRow(samples),
                           0xFFFFFFFFu,
                           BitRange(0, (samples - 1) % kWordBits + 1),
                           repeated ? source.repeats : nullptr};
        kernels::PaintMask(PlaneFrom(column->plane, 0, rows.origin + begin), mask, ink,
                           column->set);
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
