// SPDX-License-Identifier: MIT
// Painting of blocks and span lists, for the modules that have clipped them.
#pragma once

#include "kernels/kernels.h"

namespace orn {

// Fills columns x..x + columns - 1 of rows y..y + rows - 1, all in samples of the plane.
inline void FillBlock(const Plane &plane, int64_t x, int64_t y, int64_t columns, int64_t rows,
                      Pattern pattern, kernels::Set set) {
    auto bytes = static_cast<ptrdiff_t>(columns) * plane.sampleBytes;
    if (bytes == plane.stride) { // no gap between the rows
        bytes *= static_cast<ptrdiff_t>(rows);
        rows = 1;
    }
    kernels::FillRows(SampleAt(plane, x, y), static_cast<ptrdiff_t>(plane.stride), rows, bytes,
                      pattern, set);
}

// Fills an ordered rectangle that lies inside the frame and is not empty; the image has the plane.
inline void FillRectLuma(const OrnMinRenderImage *image, const OrnMinRenderRect &rect, uint8_t luma,
                         kernels::Set set) {
    FillBlock(LumaPlane(image), rect.left, rect.top, int64_t{rect.right} - rect.left,
              int64_t{rect.bottom} - rect.top, LumaPattern(luma), set);
}

// The same for every chroma sample that holds one of its pixels.
inline void FillRectChroma(const OrnMinRenderImage *image, const OrnMinRenderRect &rect,
                           OrnMinRenderColour colour, kernels::Set set) {
    const int64_t left = rect.left / 2;
    const int64_t top = rect.top / 2;
    FillBlock(ChromaPlane(image), left, top, ChromaSize(rect.right) - left,
              ChromaSize(rect.bottom) - top, ChromaPattern(colour), set);
}

inline OrnMinRenderScanline MakeSpan(int32_t first, int32_t end, int32_t row) {
    return {{first, row}, {end, row}};
}

} // namespace orn
