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

// Stores the pair in blocks of eight; the rest of a long run is one block that overlaps the last.
static void FillChromaRun(uint8_t *first, int32_t samples, OrnMinRenderColour colour) {
    constexpr size_t kBlock = 16;
    uint8_t block[kBlock];
    for (size_t i = 0; i < kBlock; i += 2)
        StoreChroma(block + i, colour);

    const size_t bytes = 2 * static_cast<size_t>(samples);
    if (bytes < kBlock) {
        for (size_t i = 0; i < bytes; i += 2)
            StoreChroma(first + i, colour);
        return;
    }
    for (size_t i = 0; i + kBlock <= bytes; i += kBlock)
        memcpy(first + i, block, kBlock);
    memcpy(first + bytes - kBlock, block, kBlock);
}

// The number of spans in a list of count points; an odd last point still begins a span.
static int32_t SpanCount(int32_t count) {
    return count <= 0 ? 0 : count / 2 + count % 2;
}

void OrnMinRenderDrawScanlinesY8(const OrnMinRenderImage *image, const OrnMinRenderScanline *spans,
                                 int32_t count, uint8_t luma) {
    const OrnMinRenderScanline *end = spans + SpanCount(count);
    for (const OrnMinRenderScanline *span = spans; span < end; ++span) {
        const int32_t length = span->end.x - span->start.x;
        if (length > 0)
            memset(LumaRow(image, span->start.y) + span->start.x, luma,
                   static_cast<size_t>(length));
    }
}

void OrnMinRenderDrawScanlinesUV(const OrnMinRenderImage *image, const OrnMinRenderScanline *spans,
                                 int32_t count, OrnMinRenderColour colour) {
    const OrnMinRenderScanline *end = spans + SpanCount(count);
    for (const OrnMinRenderScanline *span = spans; span < end; ++span) {
        const int32_t samples = span->end.x - span->start.x;
        if (samples > 0)
            FillChromaRun(ChromaRow(image, span->start.y) + 2 * ptrdiff_t{span->start.x}, samples,
                          colour);
    }
}

// Lists the same columns for rows first..end - 1 from the start of the scratch memory; returns the
// length of the list in points. At most kScratchSpans rows.
static int32_t ListRows(OrnMinRenderScanline *spans, int32_t left, int32_t right, int32_t first,
                        int32_t end) {
    for (int32_t row = first; row < end; ++row)
        spans[row - first] = MakeSpan(left, right, row);
    return 2 * (end - first);
}

static int32_t BatchEnd(int32_t first, int32_t end) {
    return static_cast<int32_t>(Min(end, int64_t{first} + kScratchSpans));
}

static bool IsEmpty(const OrnMinRenderRect *rect) {
    return rect->left >= rect->right || rect->top >= rect->bottom;
}

void OrnMinRenderFillRectY8Impl(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                                const OrnMinRenderRect *rect, uint8_t luma) {
    if (!image->yPlane || IsEmpty(rect))
        return;
    OrnMinRenderScanline *spans = ScratchSpans(context);
    for (int32_t row = rect->top; row < rect->bottom;) {
        const int32_t end = BatchEnd(row, rect->bottom);
        const int32_t count = ListRows(spans, rect->left, rect->right, row, end);
        OrnMinRenderDrawScanlinesY8(image, spans, count, luma);
        row = end;
    }
}

void OrnMinRenderFillRectUVImpl(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                                const OrnMinRenderRect *rect, OrnMinRenderColour colour) {
    // An empty rectangle at odd coordinates would round outward to a sample that holds none of it.
    if (!image->uvPlane || IsEmpty(rect))
        return;
    OrnMinRenderScanline *spans = ScratchSpans(context);
    const int32_t left = rect->left / 2;
    const int32_t right = ChromaSize(rect->right);
    const int32_t bottom = ChromaSize(rect->bottom);
    for (int32_t row = rect->top / 2; row < bottom;) {
        const int32_t end = BatchEnd(row, bottom);
        const int32_t count = ListRows(spans, left, right, row, end);
        OrnMinRenderDrawScanlinesUV(image, spans, count, colour);
        row = end;
    }
}

// ---- Blit ----

struct PlaneBlock {
    int64_t rows;
    size_t bytes; // of each row
};

static void CopyRows(uint8_t *to, int64_t toStride, const uint8_t *from, int64_t fromStride,
                     PlaneBlock block) {
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

// What is stored where a bitmap's bit is set: one type for each way, since the choice must not be
// made again for every sample.
struct StoreLumaSample {
    static constexpr ptrdiff_t kBytes = 1;
    uint8_t luma;
    void operator()(uint8_t *sample) const {
        *sample = luma;
    }
};

struct StoreChromaSample {
    static constexpr ptrdiff_t kBytes = 2;
    OrnMinRenderColour colour;
    void operator()(uint8_t *sample) const {
        StoreChroma(sample, colour);
    }
};

static uint8_t Average(uint8_t a, uint8_t b) {
    return static_cast<uint8_t>((a + b) >> 1);
}

struct BlendLumaSample {
    static constexpr ptrdiff_t kBytes = 1;
    uint8_t luma;
    void operator()(uint8_t *sample) const {
        *sample = Average(*sample, luma);
    }
};

struct BlendChromaSample {
    static constexpr ptrdiff_t kBytes = 2;
    OrnMinRenderColour colour;
    void operator()(uint8_t *sample) const {
        sample[0] = Average(sample[0], colour.u);
        sample[1] = Average(sample[1], colour.v);
    }
};

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

struct BitmapView {
    const uint32_t *words; // the most significant bit leftmost
    int32_t width;
    int32_t height;
};

template <typename Paint>
static void PaintBitmapRow(uint8_t *row, const uint32_t *bits, const Sampling &columns,
                           Paint paint) {
    int64_t position = columns.first * columns.step;
    for (int64_t i = columns.first; i < columns.end; ++i, position += columns.step) {
        const auto column = static_cast<uint32_t>(position >> 16);
        if (bits[column / 32] << column % 32 & 0x80000000u)
            paint(row + static_cast<ptrdiff_t>(columns.origin + i) * Paint::kBytes);
    }
}

template <typename Paint>
static void PaintBitmap(uint8_t *plane, int64_t stride, const BitmapView &bitmap,
                        const Sampling &columns, const Sampling &rows, Paint paint) {
    const int64_t pitch = (int64_t{bitmap.width} + 31) / 32;
    for (int64_t j = rows.first; j < rows.end; ++j) {
        uint8_t *row = plane + static_cast<ptrdiff_t>((rows.origin + j) * stride);
        PaintBitmapRow(row, bitmap.words + (j * rows.step >> 16) * pitch, columns, paint);
    }
}

template <typename Paint>
static void DrawBitmapLuma(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                           const BitmapView &bitmap, Paint paint) {
    Sampling columns;
    Sampling rows;
    if (image->yPlane &&
        MakeSampling(rect->left, rect->right, bitmap.width, image->width, &columns) &&
        MakeSampling(rect->top, rect->bottom, bitmap.height, image->height, &rows))
        PaintBitmap(image->yPlane, image->stride, bitmap, columns, rows, paint);
}

// The bitmap is sampled afresh onto the chroma grid, over the halved rectangle.
template <typename Paint>
static void DrawBitmapChroma(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                             const BitmapView &bitmap, Paint paint) {
    Sampling columns;
    Sampling rows;
    if (image->uvPlane &&
        MakeSampling(rect->left / 2, rect->right / 2, bitmap.width, ChromaSize(image->width),
                     &columns) &&
        MakeSampling(rect->top / 2, rect->bottom / 2, bitmap.height, ChromaSize(image->height),
                     &rows))
        PaintBitmap(image->uvPlane, image->stride, bitmap, columns, rows, paint);
}

void OrnMinRenderDrawBitmapY8(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                              int32_t width, int32_t height, const uint32_t *bits, uint8_t luma) {
    if (image && rect && bits)
        DrawBitmapLuma(image, rect, {bits, width, height}, StoreLumaSample{luma});
}

void OrnMinRenderDrawBitmapYUV420SP(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                                    int32_t width, int32_t height, const uint32_t *bits,
                                    OrnMinRenderColour colour) {
    if (!image || !rect || !bits)
        return;
    const BitmapView bitmap = {bits, width, height};
    DrawBitmapLuma(image, rect, bitmap, StoreLumaSample{colour.y});
    DrawBitmapChroma(image, rect, bitmap, StoreChromaSample{colour});
}

void OrnMinRenderDrawBitmapSemiTransparentYUV420SP(const OrnMinRenderImage *image,
                                                   const OrnMinRenderRect *rect, int32_t width,
                                                   int32_t height, const uint32_t *bits,
                                                   OrnMinRenderColour colour) {
    if (!image || !rect || !bits)
        return;
    const BitmapView bitmap = {bits, width, height};
    DrawBitmapLuma(image, rect, bitmap, BlendLumaSample{colour.y});
    DrawBitmapChroma(image, rect, bitmap, BlendChromaSample{colour});
}
