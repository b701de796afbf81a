// SPDX-License-Identifier: MIT
// Frames that we own: as the library draws them, in memory, and as they lie in a stream of raw
// frames, row after row of luma, then row after row of U,V pairs.
#pragma once

#include "frame.h"

#include <cstddef>
#include <orn_min_render.h>
#include <vector>

namespace overlay {

// The rows of one frame in a stream.
struct RawLayout {
    // stride: bytes from row to row of both planes; 0: rows without padding.
    explicit RawLayout(const FrameShape &shape, int64_t stride = 0);

    size_t Bytes() const {
        return lumaStride * lumaRows + chromaStride * chromaRows;
    }

    size_t lumaRows;
    size_t chromaRows;
    size_t lumaStride;
    size_t chromaStride;
};

// One frame, at first all zero. Its rows hold those of the layouts that it was made for.
class FrameMemory {
  public:
    // One layout for what comes and one for what goes: rows are long enough for both.
    FrameMemory(const FrameShape &ofShape, const RawLayout &in, const RawLayout &out);
    explicit FrameMemory(const FrameShape &ofShape)
        : FrameMemory(ofShape, RawLayout(ofShape), RawLayout(ofShape)) {
    }

    // Points into this object's memory.
    OrnMinRenderImage Image();

    // Whether a frame in a stream of the layout looks as it does here, in one run.
    bool HasLayout(const RawLayout &layout) const {
        return layout.lumaStride == stride && layout.chromaStride == stride;
    }

    // Calls pass(bytes, count) for the runs of bytes that are contiguous in memory and in a stream
    // of the layout alike, until one returns less than count. Returns the sum of what it returned.
    template <typename Pass> size_t Transfer(const RawLayout &layout, Pass pass);

  private:
    FrameShape shape;
    size_t stride; // of both planes
    std::vector<uint8_t> memory;
};

template <typename Pass> size_t FrameMemory::Transfer(const RawLayout &layout, Pass pass) {
    if (HasLayout(layout))
        return pass(memory.data(), memory.size());
    size_t total = 0;
    for (size_t y = 0; y < layout.lumaRows + layout.chromaRows; ++y) {
        const size_t length = y < layout.lumaRows ? layout.lumaStride : layout.chromaStride;
        const size_t count = pass(memory.data() + y * stride, length);
        total += count;
        if (count < length)
            break;
    }
    return total;
}

} // namespace overlay
