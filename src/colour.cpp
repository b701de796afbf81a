// SPDX-License-Identifier: MIT
// RGB to YUV and back: the full-range BT.601 equations of ITU-T T.871 in 16.16 fixed point. The
// coefficients are those of the equations times 65536, cut toward zero but for 46802, which is
// rounded; results are the same bytes on every machine.
#include "orn_min_render.h"

static uint8_t ClampToByte(int32_t value) {
    return static_cast<uint8_t>(value < 0 ? 0 : value > 255 ? 255 : value);
}

void OrnMinRenderRGB2YUV(uint8_t *yuv, const uint8_t *rgb) {
    if (!yuv || !rgb)
        return;
    const int32_t r = rgb[0];
    const int32_t g = rgb[1];
    const int32_t b = rgb[2];
    // No clamping: the coefficients keep every result within 0..255.
    yuv[0] = static_cast<uint8_t>((19595 * r + 38469 * g + 7471 * b) >> 16);
    yuv[1] = static_cast<uint8_t>(((-11058 * r - 21709 * g + 32768 * b) >> 16) + 128);
    yuv[2] = static_cast<uint8_t>(((32768 * r - 27439 * g - 5328 * b) >> 16) + 128);
}

void OrnMinRenderYUV2RGB(uint8_t *rgb, const uint8_t *yuv) {
    if (!rgb || !yuv)
        return;
    const int32_t y = yuv[0];
    const int32_t cb = yuv[1] - 128;
    const int32_t cr = yuv[2] - 128;
    rgb[0] = ClampToByte(y + ((91881 * cr) >> 16));
    rgb[1] = ClampToByte(y - ((22553 * cb + 46802 * cr) >> 16));
    rgb[2] = ClampToByte(y + ((116129 * cb) >> 16));
}
