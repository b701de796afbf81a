// SPDX-License-Identifier: MIT
// Frames and filled rectangles: four lines, and a building block.
#include "pixop.h"

using namespace orn;

// ---- Frames ----

// Where the lines of a frame lie besides its rectangle's own corners.
struct FrameEdges {
    int32_t lower; // first row of the lower line
    int32_t right; // first column of the right line
    int32_t end;   // of the vertical lines
};

static FrameEdges FindEdges(const OrnMinRenderRect *rect) {
    return {Saturate(int64_t{rect->bottom} - 1), Saturate(int64_t{rect->right} - 1),
            Saturate(int64_t{rect->bottom} + 1)};
}

void OrnMinRenderDrawFrameY8(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                             const OrnMinRenderRect *rect, uint8_t luma, int32_t style) {
    if (!rect)
        return;
    const FrameEdges edges = FindEdges(rect);
    OrnMinRenderDrawHLineY8(context, image, rect->left, rect->right, rect->top, luma, style);
    OrnMinRenderDrawHLineY8(context, image, rect->left, rect->right, edges.lower, luma, style);
    OrnMinRenderDrawVLineY8(context, image, rect->left, rect->top, edges.end, luma, style);
    OrnMinRenderDrawVLineY8(context, image, edges.right, rect->top, edges.end, luma, style);
}

void OrnMinRenderDrawFrameYUV420SP(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                                   const OrnMinRenderRect *rect, OrnMinRenderColour colour,
                                   int32_t style) {
    if (!rect)
        return;
    const FrameEdges edges = FindEdges(rect);
    const int32_t left = rect->left;
    const int32_t right = rect->right;
    const int32_t top = rect->top;
    OrnMinRenderDrawHLineYUV420SP(context, image, left, right, top, colour, style);
    OrnMinRenderDrawHLineYUV420SP(context, image, left, right, edges.lower, colour, style);
    OrnMinRenderDrawVLineYUV420SP(context, image, left, top, edges.end, colour, style);
    OrnMinRenderDrawVLineYUV420SP(context, image, edges.right, top, edges.end, colour, style);
}

// ---- Filled rectangles ----

// Orders the corners and cuts the rectangle down to the frame; false when nothing is left of it.
static bool ClipRect(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                     OrnMinRenderRect *clipped) {
    clipped->left = ClampToSize(Min(rect->left, rect->right), image->width);
    clipped->right = ClampToSize(Max(rect->left, rect->right), image->width);
    clipped->top = ClampToSize(Min(rect->top, rect->bottom), image->height);
    clipped->bottom = ClampToSize(Max(rect->top, rect->bottom), image->height);
    return clipped->left < clipped->right && clipped->top < clipped->bottom;
}

void OrnMinRenderFillRectY8(OrnMinRenderContext *, const OrnMinRenderImage *image,
                            const OrnMinRenderRect *rect, uint8_t luma) {
    OrnMinRenderRect clipped;
    if (image && rect && image->yPlane && ClipRect(image, rect, &clipped))
        FillRectLuma(image, clipped, luma, kernels::Best());
}

void OrnMinRenderFillRectYUV420SP(OrnMinRenderContext *, const OrnMinRenderImage *image,
                                  const OrnMinRenderRect *rect, OrnMinRenderColour colour) {
    OrnMinRenderRect clipped;
    if (!image || !rect || !ClipRect(image, rect, &clipped))
        return;
    const kernels::Set set = kernels::Best();
    if (image->yPlane)
        FillRectLuma(image, clipped, colour.y, set);
    if (image->uvPlane)
        FillRectChroma(image, clipped, colour, set);
}
