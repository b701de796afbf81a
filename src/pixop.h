// How pixels and chroma samples are addressed and stored. Everything that writes a plane goes
// through these helpers or the span painters; clipping is done before.
#pragma once

#include "min_render.h"

#include <string.h>

// Row offsets are 64-bit: a stride may be huge or negative, and a plane larger than 2 GiB.
inline uint8_t *LumaRow(const OrnMinRenderImage *image, int64_t y) {
    return image->yPlane + static_cast<ptrdiff_t>(y * image->stride);
}

inline uint8_t *ChromaRow(const OrnMinRenderImage *image, int64_t cy) {
    return image->uvPlane + static_cast<ptrdiff_t>(cy * image->stride);
}

// The chroma plane covers odd last rows and columns, too. Sizes below 0 count as 0.
inline int32_t ChromaSize(int32_t lumaSize) {
    return lumaSize <= 0 ? 0 : static_cast<int32_t>((int64_t{lumaSize} + 1) / 2);
}

inline void StoreChroma(uint8_t *sample, OrnMinRenderColour colour) {
    const uint8_t pair[2] = {colour.u, colour.v};
    memcpy(sample, pair, sizeof pair);
}

inline void StoreLumaPair(uint8_t *pixel, uint8_t luma) {
    const uint8_t pair[2] = {luma, luma};
    memcpy(pixel, pair, sizeof pair);
}

inline OrnMinRenderScanline MakeSpan(int32_t first, int32_t end, int32_t row) {
    return {{first, row}, {end, row}};
}
