// SPDX-License-Identifier: MIT
// What a C++11 program may write with the public header alone, among it global names that in C are
// directions; compiled, not run.
typedef int OrnMinRenderTextDirectionNormal, OrnMinRenderTextDirectionDown,
    OrnMinRenderTextDirectionUp, OrnMinRenderTextDirectionInverted;

#include "orn_min_render.h"

static_assert(int32_t(OrnMinRenderTextDirection::Normal) == 0 &&
                  int32_t(OrnMinRenderTextDirection::Down) == 1 &&
                  int32_t(OrnMinRenderTextDirection::Up) == 2 &&
                  int32_t(OrnMinRenderTextDirection::Inverted) == 3,
              "the numbers that OrnMinRenderSetFontDirection takes");

void TurnFont(OrnMinRenderFont *font, bool down);

void TurnFont(OrnMinRenderFont *font, bool down) {
    OrnMinRenderTextDirection direction = OrnMinRenderTextDirection::Up;
    if (down)
        direction = OrnMinRenderTextDirection::Down;
    OrnMinRenderSetFontDirection(font, direction);
    OrnMinRenderSetFontDirection(font, OrnMinRenderTextDirection::Inverted);
}

void Convert(OrnMinRenderColour *colour, uint8_t *rgb);

void Convert(OrnMinRenderColour *colour, uint8_t *rgb) {
    const OrnMinRenderColour &same = *colour;
    OrnMinRenderRGB2YUV(colour, rgb);
    OrnMinRenderYUV2RGB(rgb, &same);
    OrnMinRenderRGB2YUV(&colour->y, rgb);
    OrnMinRenderYUV2RGB(rgb, nullptr);
}
