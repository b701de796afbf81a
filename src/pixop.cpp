// Pixel writers, span painters and the rectangle building blocks, none of which clips; and the
// calls that put pictures into a frame, the blit and the scaled bitmaps, which do.
#include "pixop.h"

void OrnMinRenderSetYPixel(const OrnMinRenderImage *image, int32_t x, int32_t y, uint8_t luma) {
    LumaRow(image, y)[x] = luma;
}

void OrnMinRenderSetUVPixel(const OrnMinRenderImage *image, int32_t cx, int32_t cy,
                            OrnMinRenderColour colour) {
    StoreChroma(ChromaRow(image, cy) + 2 * ptrdiff_t{cx}, colour);
}

// A long run; in luma, or where U equals V, the C library knows the fastest stores.
static void FillLongRun(uint8_t *first, ptrdiff_t bytes, Pattern pattern) {
    const auto byte = static_cast<uint8_t>(pattern.bytes);
    if (pattern.bytes == LumaPattern(byte).bytes)
        memset(first, byte, static_cast<size_t>(bytes));
    else
        FillRun(first, bytes, pattern);
}

constexpr ptrdiff_t kLongRun = 128;

static void FillAnyRun(uint8_t *first, ptrdiff_t bytes, Pattern pattern) {
    if (bytes >= kLongRun)
        FillLongRun(first, bytes, pattern);
    else
        FillRun(first, bytes, pattern);
}

// ---- Span lists ----

// The number of spans in a list of count points; an odd last point still begins a span.
static int32_t SpanCount(int32_t count) {
    return count <= 0 ? 0 : count / 2 + count % 2;
}

void OrnMinRenderDrawScanlinesY8(const OrnMinRenderImage *image, const OrnMinRenderScanline *spans,
                                 int32_t count, uint8_t luma) {
    const Pattern pattern = LumaPattern(luma);
    const OrnMinRenderScanline *end = spans + SpanCount(count);
    for (const OrnMinRenderScanline *span = spans; span < end; ++span)
        FillAnyRun(LumaRow(image, span->start.y) + span->start.x,
                   ptrdiff_t{span->end.x} - span->start.x, pattern);
}

void OrnMinRenderDrawScanlinesUV(const OrnMinRenderImage *image, const OrnMinRenderScanline *spans,
                                 int32_t count, OrnMinRenderColour colour) {
    const Pattern pattern = ChromaPattern(colour);
    const OrnMinRenderScanline *end = spans + SpanCount(count);
    for (const OrnMinRenderScanline *span = spans; span < end; ++span)
        FillAnyRun(ChromaRow(image, span->start.y) + 2 * ptrdiff_t{span->start.x},
                   2 * (ptrdiff_t{span->end.x} - span->start.x), pattern);
}

// ---- Rectangles: one span for each row, all alike, and so painted without being listed ----

static void FillRows(uint8_t *first, int64_t stride, int64_t rows, int64_t bytes, Pattern pattern) {
    if (bytes == stride) { // no gap between the rows
        bytes *= rows;
        rows = 1;
    }
    for (int64_t row = 0; row < rows; ++row)
        FillAnyRun(first + static_cast<ptrdiff_t>(row * stride), static_cast<ptrdiff_t>(bytes),
                   pattern);
}

static bool IsEmpty(const OrnMinRenderRect *rect) {
    return rect->left >= rect->right || rect->top >= rect->bottom;
}

void OrnMinRenderFillRectY8Impl(OrnMinRenderContext *, const OrnMinRenderImage *image,
                                const OrnMinRenderRect *rect, uint8_t luma) {
    if (!image->yPlane || IsEmpty(rect))
        return;
    FillRows(LumaRow(image, rect->top) + rect->left, image->stride,
             int64_t{rect->bottom} - rect->top, int64_t{rect->right} - rect->left,
             LumaPattern(luma));
}

void OrnMinRenderFillRectUVImpl(OrnMinRenderContext *, const OrnMinRenderImage *image,
                                const OrnMinRenderRect *rect, OrnMinRenderColour colour) {
    // An empty rectangle at odd coordinates would round outward to a sample that holds none of it.
    if (!image->uvPlane || IsEmpty(rect))
        return;
    const int64_t left = rect->left / 2;
    const int64_t top = rect->top / 2;
    FillRows(ChromaRow(image, top) + static_cast<ptrdiff_t>(2 * left), image->stride,
             ChromaSize(rect->bottom) - top, 2 * (ChromaSize(rect->right) - left),
             ChromaPattern(colour));
}

// ---- Blit ----

struct PlaneBlock {
    int64_t rows;
    size_t bytes; // of each row
};

static void CopyRows(uint8_t *to, int64_t toStride, const uint8_t *from, int64_t fromStride,
                     PlaneBlock block) {
    const auto bytes = static_cast<int64_t>(block.bytes);
    if (toStride == bytes && fromStride == bytes) { // no gap between the rows
        block.bytes *= static_cast<size_t>(block.rows);
        block.rows = 1;
    }
    for (int64_t row = 0; row < block.rows; ++row)
        memcpy(to + static_cast<ptrdiff_t>(row * toStride),
               from + static_cast<ptrdiff_t>(row * fromStride), block.bytes);
}

void OrnMinRenderBltYUV420SP(const OrnMinRenderImage *image, OrnMinRenderRect rect,
                             const OrnMinRenderImage *source, OrnMinRenderPoint position) {
    if (!image || !source)
        return;
    // A start outside either image moves the start in the other one along.
    const int64_t outsideX = Max(0, Max(-int64_t{rect.left}, -int64_t{position.x}));
    const int64_t outsideY = Max(0, Max(-int64_t{rect.top}, -int64_t{position.y}));
    const int64_t x = rect.left + outsideX;
    const int64_t y = rect.top + outsideY;
    const int64_t sourceX = position.x + outsideX;
    const int64_t sourceY = position.y + outsideY;
    const int64_t width = Min(Min(image->width, rect.right) - x, source->width - sourceX);
    const int64_t height = Min(Min(image->height, rect.bottom) - y, source->height - sourceY);
    if (width <= 0 || height <= 0)
        return;
    const auto bytes = static_cast<size_t>(width);
    if (image->yPlane && source->yPlane)
        CopyRows(LumaRow(image, y) + x, image->stride, LumaRow(source, sourceY) + sourceX,
                 source->stride, {height, bytes});
    // Whole chroma samples from the one that holds the first pixel; an odd last row has none.
    if (image->uvPlane && source->uvPlane)
        CopyRows(ChromaRow(image, y / 2) + x / 2 * 2, image->stride,
                 ChromaRow(source, sourceY / 2) + sourceX / 2 * 2, source->stride,
                 {height / 2, bytes});
}

// ---- Bitmaps ----

const int64_t WordWidth = 32;

// What a set bit does to the bytes of its sample.
struct Ink {
    Pattern pattern;
    ptrdiff_t sampleBytes; // 1 luma, 2 chroma
    bool half;             // average with what is there, rounded down
};

static void BlendRun(uint8_t *first, ptrdiff_t bytes, Pattern pattern) {
    constexpr uint64_t kUpperBits = 0xFEFEFEFEFEFEFEFE;
    ptrdiff_t i = 0;
    for (; i + 8 <= bytes; i += 8) {
        uint64_t old;
        memcpy(&old, first + i, sizeof old);
        // a + b = 2 (a & b) + (a ^ b), halved in each byte on its own
        const uint64_t average = (old & pattern.bytes) + ((old ^ pattern.bytes) & kUpperBits) / 2;
        memcpy(first + i, &average, sizeof average);
    }
    const auto *pair = reinterpret_cast<const uint8_t *>(&pattern);
    for (; i < bytes; ++i)
        first[i] = static_cast<uint8_t>((first[i] + pair[i % 2]) / 2);
}

// How one side of a bitmap is spread over a side of its rectangle: sample i of the rectangle shows
// column (or row) i * step / 65536 of the bitmap.
struct Sampling {
    int64_t origin; // of the rectangle in the plane
    int64_t first;  // the samples inside the plane
    int64_t end;
    int64_t step;
};

constexpr int32_t kMaxBitmapSide = 32767; // times 65536 stays below 2^31

static bool MakeSampling(int64_t from, int64_t to, int32_t bitmapSide, int32_t planeSide,
                         Sampling *sampling) {
    if (to <= from || bitmapSide < 1 || bitmapSide > kMaxBitmapSide)
        return false;
    const int64_t size = to - from;
    *sampling = {from, Max(0, -from), Min(size, planeSide - from),
                 int64_t{bitmapSide} * 65536 / size};
    return sampling->first < sampling->end;
}

// The first sample that shows the given column (or row) of the bitmap, or a later one.
static int64_t FirstSampleOf(const Sampling &sampling, uint32_t index) {
    if (index == 0)
        return 0;
    if (sampling.step == 0) // a bitmap of one column over more than 65536 samples
        return sampling.end;
    const auto step = static_cast<uint32_t>(sampling.step);
    return ((index << 16) - 1) / step + 1;
}

struct BitmapView {
    const uint32_t *words; // the most significant bit leftmost
    int32_t width;
    int32_t height;
};

// The first column from the given one on whose bit differs from those of flip, or the width.
static int32_t NextBit(const uint32_t *bits, int32_t column, int32_t width, uint32_t flip) {
    if (column >= width)
        return width;
    int32_t index = column / 32;
    uint32_t word = (bits[index] ^ flip) & (0xFFFFFFFFu >> column % 32);
    while (word == 0) {
        ++index;
        if (index * 32 >= width)
            return width;
        word = bits[index] ^ flip;
    }
    return static_cast<int32_t>(Min(width, index * 32 + __builtin_clz(word)));
}

// Runs of set bits in one bitmap row, as the bytes that they paint in a row of the plane.
constexpr int32_t kMaxRuns = 128;

struct ByteRun {
    ptrdiff_t first;
    ptrdiff_t bytes;
};

struct BitmapRuns {
    ByteRun runs[kMaxRuns];
    int32_t count;
    int32_t nextColumn; // where to go on when there are more; at the end: past what is visible
};

static void ListRuns(BitmapRuns *list, const uint32_t *bits, int32_t width, const Sampling &columns,
                     ptrdiff_t sampleBytes) {
    list->count = 0;
    while (list->count < kMaxRuns && list->nextColumn < width) {
        const int32_t start = NextBit(bits, list->nextColumn, width, 0);
        const int32_t stop = NextBit(bits, start, width, 0xFFFFFFFFu);
        const int64_t from = FirstSampleOf(columns, static_cast<uint32_t>(start));
        const int64_t to = FirstSampleOf(columns, static_cast<uint32_t>(stop));
        const int64_t first = Max(columns.first, from);
        const int64_t end = Min(columns.end, to);
        list->nextColumn = from < columns.end ? stop : width;
        if (first < end)
            list->runs[list->count++] = {static_cast<ptrdiff_t>((columns.origin + first)) *
                                             sampleBytes,
                                         static_cast<ptrdiff_t>(end - first) * sampleBytes};
    }
}

static void PaintRuns(uint8_t *row, const BitmapRuns *list, const Ink &ink) {
    for (int32_t i = 0; i < list->count; ++i) {
        uint8_t *first = row + list->runs[i].first;
        if (ink.half)
            BlendRun(first, list->runs[i].bytes, ink.pattern);
        else
            FillRun(first, list->runs[i].bytes, ink.pattern);
    }
}

struct Plane {
    uint8_t *first;
    int64_t stride;
};

// Each bitmap row is turned into runs once, for all the rows of the plane that show it.
static void PaintBitmap(Plane plane, const BitmapView &bitmap, const Sampling &columns,
                        const Sampling &rows, const Ink &ink) {
    const int64_t pitch = (int64_t{bitmap.width} + 31) / 32;
    const auto firstColumn = static_cast<int32_t>(columns.first * columns.step >> 16);
    BitmapRuns list;
    for (int64_t begin = rows.first, end; begin < rows.end; begin = end) {
        const int64_t source = begin * rows.step >> 16;
        end = Min(rows.end, FirstSampleOf(rows, static_cast<uint32_t>(source + 1)));
        list.nextColumn = firstColumn;
        while (list.nextColumn < bitmap.width) {
            ListRuns(&list, bitmap.words + source * pitch, bitmap.width, columns, ink.sampleBytes);
            for (int64_t j = begin; j < end; ++j)
                PaintRuns(plane.first + static_cast<ptrdiff_t>((rows.origin + j) * plane.stride),
                          &list, ink);
        }
    }
}

static void DrawBitmapLuma(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                           const BitmapView &bitmap, uint8_t luma, bool half) {
    Sampling columns;
    Sampling rows;
    if (image->yPlane &&
        MakeSampling(rect->left, rect->right, bitmap.width, image->width, &columns) &&
        MakeSampling(rect->top, rect->bottom, bitmap.height, image->height, &rows))
        PaintBitmap({image->yPlane, image->stride}, bitmap, columns, rows,
                    {LumaPattern(luma), 1, half});
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
        PaintBitmap({image->uvPlane, image->stride}, bitmap, columns, rows,
                    {ChromaPattern(colour), 2, half});
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
