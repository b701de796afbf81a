// SPDX-License-Identifier: MIT
// The render context, whose scratch memory lends polygons, filled ellipses and rounded rectangles
// the room for their span lists.
#pragma once

#include "orn_min_render.h"

struct OrnMinRenderContext {
    uint32_t size; // orn::kContextBytes once creation has succeeded
    uint8_t *scratch;
};

namespace orn {

constexpr uint32_t kContextBytes = 24; // the record as allocated, on every machine
constexpr size_t kScratchBytes = 32768;
constexpr int32_t kScratchSpans = kScratchBytes / sizeof(OrnMinRenderScanline);
constexpr size_t kScratchPoints = kScratchBytes / sizeof(OrnMinRenderPoint);

inline OrnMinRenderScanline *ScratchSpans(OrnMinRenderContext *context) {
    return reinterpret_cast<OrnMinRenderScanline *>(context->scratch);
}

inline OrnMinRenderPoint *ScratchPoints(OrnMinRenderContext *context) {
    return reinterpret_cast<OrnMinRenderPoint *>(context->scratch);
}

} // namespace orn
