/* SPDX-License-Identifier: MIT */
/*
 * What draw_detections of the Python package draws into an NV12 frame, in C: boxes, then labels
 * above them. bench/detections.py times both, and checks that they are the same.
 */
#include <orn_min_render.h>

struct Detection {
    OrnMinRenderRect box; /* right and bottom excluded, inside the frame */
    const char *label;
    uint8_t rgb[3];
};

enum { LabelMargin = 6, BlackLuma = 0 };

static int32_t Clamp(int32_t value, int32_t last) {
    value = value < last ? value : last;
    return value < 0 ? 0 : value;
}

static void DrawLabel(const OrnMinRenderImage *image, OrnMinRenderFont *font,
                      const struct Detection *detection, OrnMinRenderColour colour) {
    OrnMinRenderPoint pen = {0, 0};
    OrnMinRenderRect ink, rect;
    OrnMinRenderGetTextRect(NULL, font, detection->label, &pen, 0, &ink);
    const int32_t width = ink.right - ink.left + 2 * LabelMargin;
    const int32_t height = ink.bottom - ink.top + 2 * LabelMargin;
    rect.left = Clamp(detection->box.left, image->width - width);
    rect.top = Clamp(detection->box.top - height, image->height - height);
    rect.right = (rect.left + width + 1) & ~1;
    rect.bottom = (rect.top + height + 1) & ~1;
    rect.left &= ~1;
    rect.top &= ~1;
    OrnMinRenderFillRectYUV420SP(NULL, image, &rect, colour);
    pen.x = rect.left + LabelMargin - ink.left;
    pen.y = rect.top + LabelMargin - ink.top;
    OrnMinRenderDrawOutlineTextY8(NULL, image, font, detection->label, &pen, pen.x, colour.y,
                                  BlackLuma);
}

static void DrawAll(const OrnMinRenderImage *image, OrnMinRenderFont *font,
                    const struct Detection *detections, int32_t count) {
    OrnMinRenderColour colour;
    for (int32_t i = 0; i < count; ++i) {
        OrnMinRenderRect rect = detections[i].box;
        --rect.right;
        --rect.bottom;
        OrnMinRenderRGB2YUV(&colour.y, detections[i].rgb);
        OrnMinRenderDrawFrameYUV420SP(NULL, image, &rect, colour, OrnMinRenderLineSolid);
    }
    for (int32_t i = 0; i < count; ++i) {
        OrnMinRenderRGB2YUV(&colour.y, detections[i].rgb);
        DrawLabel(image, font, &detections[i], colour);
    }
}

/* So many times over, so that what calling from Python costs doesn't count. */
void DrawDetections(const OrnMinRenderImage *image, OrnMinRenderFont *font,
                    const struct Detection *detections, int32_t count, int32_t times);

void DrawDetections(const OrnMinRenderImage *image, OrnMinRenderFont *font,
                    const struct Detection *detections, int32_t count, int32_t times) {
    while (times-- > 0)
        DrawAll(image, font, detections, count);
}
