// SPDX-License-Identifier: MIT
// The hook that a program may replace by one of its own. It stands alone, so that no compiler puts
// its body into the caller's.
#include "orn_min_render.h"

int32_t OrnMinRenderTextInit(OrnMinRenderContext *) {
    return 0;
}
