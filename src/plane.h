// SPDX-License-Identifier: MIT
// Where a sample of a plane lies and how large it is: a luma sample is a byte, a chroma sample a
// U,V pair for 2 x 2 luma pixels, and one stride serves both.
#pragma once

#include "arithmetic.h"
#include "orn_min_render.h"

#include <stddef.h>
#include <string.h>

namespace orn {

constexpr ptrdiff_t kLumaBytes = 1; // of a sample
constexpr ptrdiff_t kChromaBytes = 2;

// A plane, or what is left of one when it is looked at from another sample on.
struct Plane {
    uint8_t *first; // of sample (0, 0); null when the image lacks the plane
    int64_t stride; // bytes from row to row
    ptrdiff_t sampleBytes;
};

inline Plane LumaPlane(const OrnMinRenderImage *image) {
    return {image->yPlane, image->stride, kLumaBytes};
}

inline Plane ChromaPlane(const OrnMinRenderImage *image) {
    return {image->uvPlane, image->stride, kChromaBytes};
}

// Rows are found in 64 bits: a stride may be huge or negative, and a plane larger than 2 GiB.
inline uint8_t *SampleAt(const Plane &plane, int64_t column, int64_t row) {
    return plane.first + static_cast<ptrdiff_t>(row * plane.stride) +
           static_cast<ptrdiff_t>(column) * plane.sampleBytes;
}

inline Plane PlaneFrom(const Plane &plane, int64_t column, int64_t row) {
    return {SampleAt(plane, column, row), plane.stride, plane.sampleBytes};
}

inline uint8_t *LumaAt(const OrnMinRenderImage *image, int64_t x, int64_t y) {
    return SampleAt(LumaPlane(image), x, y);
}

inline uint8_t *ChromaAt(const OrnMinRenderImage *image, int64_t cx, int64_t cy) {
    return SampleAt(ChromaPlane(image), cx, cy);
}

// The chroma plane covers odd last rows and columns, too. Sizes below 0 count as 0.
inline int32_t ChromaSize(int32_t lumaSize) {
    return lumaSize <= 0 ? 0 : static_cast<int32_t>((int64_t{lumaSize} + 1) / 2);
}

// The record holds u and v side by side, as a sample does.
inline void StoreChroma(uint8_t *sample, OrnMinRenderColour colour) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(&colour);
    memcpy(sample, bytes + offsetof(OrnMinRenderColour, u), kChromaBytes);
}

// Two neighbouring pixels.
inline void StoreLumaPair(uint8_t *sample, uint8_t luma) {
    const auto pair = static_cast<uint16_t>(luma * 0x0101);
    memcpy(sample, &pair, sizeof pair);
}

} // namespace orn
