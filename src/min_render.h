// The render context, whose scratch memory lends polygons, filled ellipses and rounded rectangles
// the room for their span lists, and the integer helpers that all modules clip with.
#pragma once

#include "orn_min_render.h"

constexpr uint32_t kContextBytes = 24; // the record as allocated, on every machine
constexpr size_t kScratchBytes = 32768;
constexpr int32_t kScratchSpans = kScratchBytes / sizeof(OrnMinRenderScanline);
constexpr size_t kScratchPoints = kScratchBytes / sizeof(OrnMinRenderPoint);

struct OrnMinRenderContext {
    uint32_t size; // kContextBytes once creation has succeeded
    uint8_t *scratch;
};

inline OrnMinRenderScanline *ScratchSpans(OrnMinRenderContext *context) {
    return reinterpret_cast<OrnMinRenderScanline *>(context->scratch);
}

inline OrnMinRenderPoint *ScratchPoints(OrnMinRenderContext *context) {
    return reinterpret_cast<OrnMinRenderPoint *>(context->scratch);
}

inline int64_t Min(int64_t a, int64_t b) {
    return a < b ? a : b;
}

inline int64_t Max(int64_t a, int64_t b) {
    return a > b ? a : b;
}

// Values beyond the int32 limits stop there, so that a sum never wraps to the frame's other side.
inline int32_t Saturate(int64_t value) {
    return static_cast<int32_t>(Max(INT32_MIN, Min(value, INT32_MAX)));
}

// The nearest value in 0..size. A negative size counts as 0.
inline int32_t ClampToSize(int64_t value, int32_t size) {
    return static_cast<int32_t>(Max(0, Min(value, size)));
}
