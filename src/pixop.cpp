// SPDX-License-Identifier: MIT
// Pixel writers, span painters and the rectangle building blocks, none of which clips.
#include "pixop.h"

using namespace orn;

void OrnMinRenderSetYPixel(const OrnMinRenderImage *image, int32_t x, int32_t y, uint8_t luma) {
    *LumaAt(image, x, y) = luma;
}

void OrnMinRenderSetUVPixel(const OrnMinRenderImage *image, int32_t cx, int32_t cy,
                            OrnMinRenderColour colour) {
    StoreChroma(ChromaAt(image, cx, cy), colour);
}

// ---- Spans ----

// The number of spans in a list of count points; an odd last point still begins a span.
static int32_t SpanCount(int32_t count) {
    return count <= 0 ? 0 : count / 2 + count % 2;
}

void OrnMinRenderDrawScanlinesY8(const OrnMinRenderImage *image, const OrnMinRenderScanline *spans,
                                 int32_t count, uint8_t luma) {
    kernels::PaintSpans(LumaPlane(image), spans, SpanCount(count), LumaPattern(luma),
                        kernels::Best());
}

void OrnMinRenderDrawScanlinesUV(const OrnMinRenderImage *image, const OrnMinRenderScanline *spans,
                                 int32_t count, OrnMinRenderColour colour) {
    kernels::PaintSpans(ChromaPlane(image), spans, SpanCount(count), ChromaPattern(colour),
                        kernels::Best());
}

// ---- Rectangles, whose spans are all alike and so are painted without being listed ----

static bool IsEmpty(const OrnMinRenderRect *rect) {
    return rect->left >= rect->right || rect->top >= rect->bottom;
}

void OrnMinRenderFillRectY8Impl(OrnMinRenderContext *, const OrnMinRenderImage *image,
                                const OrnMinRenderRect *rect, uint8_t luma) {
    if (image->yPlane && !IsEmpty(rect))
        FillRectLuma(image, *rect, luma, kernels::Best());
}

void OrnMinRenderFillRectUVImpl(OrnMinRenderContext *, const OrnMinRenderImage *image,
                                const OrnMinRenderRect *rect, OrnMinRenderColour colour) {
    // An empty rectangle at odd coordinates would round outward to a sample that holds none of it.
    if (image->uvPlane && !IsEmpty(rect))
        FillRectChroma(image, *rect, colour, kernels::Best());
}
