/* SPDX-License-Identifier: MIT */
/* Shows one NV12 frame in a corner of another, on a white mat with a rounded frame (even sizes):
 * picture_in_picture WIDTH HEIGHT frame.nv12 WIDTH HEIGHT inset.nv12 > out.nv12 */
#include <orn_min_render.h>
#include <stdio.h>
#include <stdlib.h>

enum { Margin = 16, Mat = 6 };

static void DrawInset(OrnMinRenderContext *context, const OrnMinRenderImage *frame,
                      const OrnMinRenderImage *inset) {
    const uint8_t white[3] = {255, 255, 255}, orange[3] = {255, 150, 0};
    const OrnMinRenderPoint origin = {0, 0}, radii = {10, 10};
    OrnMinRenderColour mat, line;
    OrnMinRenderRGB2YUV(&mat.y, white);
    OrnMinRenderRGB2YUV(&line.y, orange);
    OrnMinRenderRect rect;
    rect.right = frame->width - Margin;
    rect.top = Margin;
    rect.left = rect.right - inset->width;
    rect.bottom = rect.top + inset->height;
    const OrnMinRenderRect outer = {rect.left - Mat, rect.top - Mat, rect.right + Mat,
                                    rect.bottom + Mat};
    OrnMinRenderFillRoundRectYUV420SP(context, frame, &outer, &radii, mat);
    OrnMinRenderBltYUV420SP(frame, rect, inset, origin);
    OrnMinRenderDrawRoundRectYUV420SP(context, frame, &outer, &radii, line);
}

/* Reads a frame; without memory or a whole frame its luma plane is null. */
static OrnMinRenderImage ReadFrame(const char *width, const char *height, const char *path) {
    OrnMinRenderImage image = {0};
    image.width = atoi(width);
    image.height = atoi(height);
    image.stride = image.width;
    if (image.width <= 0 || image.height <= 0 || image.width % 2 || image.height % 2)
        return image;
    const size_t luma = (size_t)image.width * (size_t)image.height;
    const size_t bytes = luma + luma / 2;
    FILE *file = fopen(path, "rb");
    uint8_t *memory = malloc(bytes);
    if (file && memory && fread(memory, 1, bytes, file) == bytes) {
        image.yPlane = memory;
        image.uvPlane = memory + luma;
    } else {
        free(memory);
    }
    if (file)
        fclose(file);
    return image;
}

int main(int argc, char **argv) {
    if (argc != 7) {
        fprintf(stderr, "usage: picture_in_picture WIDTH HEIGHT frame.nv12 WIDTH HEIGHT inset.nv12"
                        " > out.nv12\n");
        return 2;
    }
    const OrnMinRenderImage frame = ReadFrame(argv[1], argv[2], argv[3]);
    const OrnMinRenderImage inset = ReadFrame(argv[4], argv[5], argv[6]);
    OrnMinRenderContext *context = OrnMinRenderCreateContext();
    int failed = !frame.yPlane || !inset.yPlane || !context;
    if (failed) {
        fprintf(stderr, "picture_in_picture: no whole frames of these (even) sizes in %s and %s\n",
                argv[3], argv[6]);
    } else {
        const size_t bytes = (size_t)frame.width * (size_t)frame.height / 2 * 3;
        DrawInset(context, &frame, &inset);
        failed = fwrite(frame.yPlane, 1, bytes, stdout) != bytes;
    }
    OrnMinRenderDestroyContext(context);
    free(inset.yPlane);
    free(frame.yPlane);
    return failed;
}
