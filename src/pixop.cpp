// Pixel writers, span painters and the rectangle building blocks: the only code that fills areas.
// Nothing here clips.
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
