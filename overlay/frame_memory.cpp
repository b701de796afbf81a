// SPDX-License-Identifier: MIT
// The arithmetic of raw frames. Without padding, luma rows of odd width are a byte shorter than
// those of the chroma plane; in memory, one stride serves both.
#include "frame_memory.h"

#include <algorithm>

namespace overlay {

RawLayout::RawLayout(const FrameShape &shape, int64_t stride)
    : lumaRows(static_cast<size_t>(shape.height)),
      chromaRows(shape.hasChroma ? (lumaRows + 1) / 2 : 0),
      lumaStride(static_cast<size_t>(stride > 0 ? stride : shape.width)),
      chromaStride(stride > 0 || !shape.hasChroma ? lumaStride : (lumaStride + 1) / 2 * 2) {
}

FrameMemory::FrameMemory(const FrameShape &ofShape, const RawLayout &in, const RawLayout &out)
    : shape(ofShape),
      stride(std::max({in.lumaStride, in.chromaStride, out.lumaStride, out.chromaStride})),
      memory(stride * (in.lumaRows + in.chromaRows)) {
}

OrnMinRenderImage FrameMemory::Image() {
    OrnMinRenderImage image{};
    image.width = shape.width;
    image.height = shape.height;
    image.stride = static_cast<int64_t>(stride);
    image.yPlane = memory.data();
    image.uvPlane =
        shape.hasChroma ? memory.data() + stride * static_cast<size_t>(shape.height) : nullptr;
    return image;
}

} // namespace overlay
