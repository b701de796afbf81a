// SPDX-License-Identifier: MIT
// Frames to draw into: the decoder's own where nobody else needs them, otherwise copies; with
// chroma as U,V pairs while they are drawn into, and then as the encoder takes it.
#pragma once

#include "av.h"

#include "overlay/frame.h"

#include <orn_min_render.h>
#include <vector>

// Buffers of the size that was asked for last. Fresh pages would cost more than what is written
// into them.
class BufferPool {
  public:
    AVBufferRef *Get(int64_t bytes); // of the caller, who releases it

  private:
    PoolPtr pool;
    int64_t size = 0;
};

class VideoCanvas {
  public:
    // layout: of the encoder, NV12 or planar 4:2:0.
    VideoCanvas(const overlay::FrameShape &ofShape, AVPixelFormat ofLayout);

    // Takes a frame of the shape, NV12 or planar, to be drawn into until Take is called.
    OrnMinRenderImage Place(FramePtr source);

    // The frame that was placed, in the encoder's layout.
    FramePtr Take();

  private:
    FramePtr WithOwnChroma(const AVFrame &source, bool sharesLuma);
    void FillPairs(const AVFrame &source);

    const overlay::FrameShape shape;
    const AVPixelFormat layout;
    const int chromaWidth;
    const int chromaHeight;
    BufferPool lumaPool;
    BufferPool chromaPool;
    FramePtr frame;
    std::vector<uint8_t> scratch; // pairs of planar frames, while they are drawn into
    uint8_t *pairs = nullptr;     // with the stride of the frame's luma
};
