// SPDX-License-Identifier: MIT
/* What a C99 program may write with the public header alone; compiled, not run. */
#include "orn_min_render.h"

OrnMinRenderTextDirection TurnFontOfC(OrnMinRenderFont *font);

OrnMinRenderTextDirection TurnFontOfC(OrnMinRenderFont *font) {
    OrnMinRenderTextDirection direction = OrnMinRenderTextDirectionDown;
    OrnMinRenderSetFontDirection(font, direction);
    return direction;
}
