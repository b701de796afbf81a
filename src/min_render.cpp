// SPDX-License-Identifier: MIT
// Creation and destruction of render contexts, and the layout that callers rely on.
#include "min_render.h"

#include <stdlib.h>

using namespace orn;

static_assert(sizeof(OrnMinRenderContext) <= kContextBytes, "the record fits its allocation");
static_assert(sizeof(OrnMinRenderPoint) == 8, "points are two int32");
static_assert(sizeof(OrnMinRenderScanline) == 16, "a span is two points");
static_assert(sizeof(OrnMinRenderRect) == 16, "a rectangle is four int32");
static_assert(sizeof(OrnMinRenderColour) == 3, "a colour is three bytes");
static_assert(sizeof(OrnMinRenderGlyphBox) == 4, "a box is the head of a glyph record");
static_assert(offsetof(OrnMinRenderImage, width) == 8, "");
static_assert(offsetof(OrnMinRenderImage, height) == 12, "");
static_assert(offsetof(OrnMinRenderImage, stride) == 16, "");
static_assert(offsetof(OrnMinRenderImage, yPlane) == 24, "");
static_assert(offsetof(OrnMinRenderGlyph, codePoint) == 4, "");
static_assert(offsetof(OrnMinRenderGlyph, record) == 8, "");
#if UINTPTR_MAX == UINT64_MAX
static_assert(sizeof(OrnMinRenderImage) == 48, "");
static_assert(offsetof(OrnMinRenderImage, uvPlane) == 40, "");
static_assert(sizeof(OrnMinRenderGlyph) == 40, "");
static_assert(offsetof(OrnMinRenderGlyph, bitmap) == 16, "");
static_assert(offsetof(OrnMinRenderGlyph, outline) == 24, "");
static_assert(offsetof(OrnMinRenderGlyph, bitmapWords) == 32, "");
static_assert(offsetof(OrnMinRenderContext, scratch) == 8, "");
#endif

OrnMinRenderContext *OrnMinRenderCreateContext(void) {
    auto *context = static_cast<OrnMinRenderContext *>(calloc(1, kContextBytes));
    if (!context)
        return nullptr;
    context->scratch = static_cast<uint8_t *>(malloc(kScratchBytes));
    if (!context->scratch || OrnMinRenderTextInit(context) != 0) {
        OrnMinRenderDestroyContext(context);
        return nullptr;
    }
    context->size = kContextBytes;
    return context;
}

void OrnMinRenderDestroyContext(OrnMinRenderContext *context) {
    if (!context)
        return;
    free(context->scratch);
    free(context);
}
