/* SPDX-License-Identifier: MIT */
/* Burns a labelled box into one NV12 frame:
 * labelled_box FONT.cbf WIDTH HEIGHT < in.nv12 > out.nv12 (even sizes) */
#include <orn_min_render.h>
#include <stdio.h>
#include <stdlib.h>

static void DrawLabelledBox(OrnMinRenderContext *context, const OrnMinRenderImage *image,
                            OrnMinRenderFont *font, OrnMinRenderRect box, const char *label) {
    const uint8_t orange[3] = {255, 150, 0}, night[3] = {20, 30, 60};
    OrnMinRenderColour line, background;
    OrnMinRenderRGB2YUV(&line.y, orange);
    OrnMinRenderRGB2YUV(&background.y, night);
    OrnMinRenderDrawFrameYUV420SP(context, image, &box, line, OrnMinRenderLineSolid);

    const OrnMinRenderPoint start = {box.left + 6, box.top - 10}; /* of the baseline */
    OrnMinRenderPoint pen = start;
    OrnMinRenderRect text;
    OrnMinRenderGetTextRect(context, font, label, &pen, start.x, &text);
    text.left -= 6;
    text.top -= 6;
    text.right += 6;
    text.bottom += 6;
    OrnMinRenderFillRectYUV420SP(context, image, &text, background);
    pen = start;
    OrnMinRenderDrawOutlineTextY8(context, image, font, label, &pen, start.x, background.y, 235);
}

int main(int argc, char **argv) {
    const int32_t width = argc == 4 ? atoi(argv[2]) : 0;
    const int32_t height = argc == 4 ? atoi(argv[3]) : 0;
    if (width <= 0 || height <= 0 || width % 2 || height % 2) {
        fprintf(stderr, "usage: labelled_box FONT.cbf WIDTH HEIGHT < in.nv12 > out.nv12\n");
        return 2;
    }
    const size_t luma = (size_t)width * (size_t)height;
    const size_t bytes = luma + luma / 2;
    uint8_t *frame = malloc(bytes);
    OrnMinRenderFont *font = OrnMinRenderLoadCbfFont(argv[1]);
    OrnMinRenderContext *context = OrnMinRenderCreateContext();
    int failed = !frame || !font || !context || fread(frame, 1, bytes, stdin) != bytes;
    if (!failed) {
        OrnMinRenderImage image = {0};
        image.width = width;
        image.height = height;
        image.stride = width;
        image.yPlane = frame;
        image.uvPlane = frame + luma;
        const OrnMinRenderRect box = {60, 70, 260, 200};
        DrawLabelledBox(context, &image, font, box, "Zo\xC3\xAB 0.97"); /* UTF-8 */
        failed = fwrite(frame, 1, bytes, stdout) != bytes;
    }
    if (failed)
        fprintf(stderr, "labelled_box: no font at %s, or no whole frame\n", argv[1]);
    OrnMinRenderDestroyContext(context);
    OrnMinRenderDestroyFont(font);
    free(frame);
    return failed;
}
