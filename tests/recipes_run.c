// SPDX-License-Identifier: MIT
/* Calls what docs/recipes.md defines: recipes_run FONT.cbf */
#include "recipes.h"

#include <assert.h>
#include <malloc.h>
#include <string.h>

enum { Width = 160, Height = 96, Luma = Width * Height, Bytes = Luma / 2 * 3 };

static OrnMinRenderImage Frame(uint8_t *memory) {
    memset(memory, 0x55, Bytes);
    return (OrnMinRenderImage){0, Width, Height, Width, memory, 0, memory + Luma};
}

/* Draws a readable label in a frame of its own and counts the pixels that were painted. */
static int Paint(OrnMinRenderFont *font, OrnMinRenderPoint pen, int inside) {
    static uint8_t memory[Bytes];
    const OrnMinRenderImage image = Frame(memory);
    DrawReadable(&image, font, "Zoe", inside ? PenInside(&image, font, "Zoe", pen) : pen);
    assert(memchr(memory + Luma, 128, Luma / 2));
    int painted = 0;
    for (int i = 0; i < Luma; ++i)
        painted += memory[i] != 0x55;
    return painted;
}

int main(int argc, char **argv) {
    OrnMinRenderFont *font = argc == 2 ? OrnMinRenderLoadCbfFont(argv[1]) : NULL;
    const size_t cold = mallinfo2().uordblks;
    WarmFont(font, "Zoe");
    const size_t warm = mallinfo2().uordblks;
    const int whole = Paint(font, (OrnMinRenderPoint){50, 50}, 0);
    assert(warm > cold && mallinfo2().uordblks == warm);
    assert(Paint(font, (OrnMinRenderPoint){500, -30}, 1) == whole);
    assert(Paint(font, (OrnMinRenderPoint){-9, 999}, 1) == whole);

    static uint8_t drawn[Bytes], cut[Bytes];
    const OrnMinRenderImage image = Frame(drawn), frame = Frame(cut);
    struct Band all = BandOf(&image, 0, Height);
    struct Band bands[2] = {BandOf(&frame, 0, 48), BandOf(&frame, 48, Height)};
    all.font = bands[0].font = font; /* the second band has no text in it */
    DrawBand(&all);
    assert(DrawInBands(bands, 2) && memcmp(drawn, cut, Bytes) == 0);

    const OrnMinRenderColour white = {255, 128, 128}, red = {76, 84, 255};
    assert(LimitedRange(white).y == 235 && LimitedRange(white).u == 128);
    assert(ForNv21(red).u == red.v && ForNv21(red).v == red.u);
    struct v4l2_pix_format format = {6, 4, V4L2_PIX_FMT_NV12, 0, 16, .sizeimage = 96};
    const OrnMinRenderImage buffer = ImageOfV4l2Buffer(&format, cut);
    assert(buffer.stride == 16 && buffer.uvPlane == cut + 64);
    OrnMinRenderDestroyFont(font);
}
