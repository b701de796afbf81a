// SPDX-License-Identifier: MIT
// Mapped frames of all layouts, as images of the one that is drawn: luma, and chroma in pairs of U
// and V, with one stride.
#pragma once

#include "overlay/frame.h"

#include <cstdint>
#include <gst/video/video.h>
#include <orn_min_render.h>
#include <vector>

class FrameImages {
  public:
    // Calls draw(image) for an image of the frame; for two of one plane each, where strides differ.
    // Unless planes says that chroma is left alone, pairs that are V,U are exchanged until that is
    // done, and chroma in planes of its own is copied to pairs and back.
    template <typename Draw> void DrawInto(GstVideoFrame &frame, overlay::Planes planes, Draw draw);

  private:
    struct Plane {
        uint8_t *bytes;
        int64_t stride;
    };

    Plane TakePairs(GstVideoFrame &frame, int64_t lumaStride);
    void GivePairs(GstVideoFrame &frame, const Plane &chroma) const;
    static OrnMinRenderImage ImageOf(GstVideoFrame &frame, uint8_t *luma, const Plane &chroma);

    std::vector<uint8_t> pairs; // kept from frame to frame
};

template <typename Draw>
void FrameImages::DrawInto(GstVideoFrame &frame, overlay::Planes planes, Draw draw) {
    const Plane luma{static_cast<uint8_t *>(GST_VIDEO_FRAME_COMP_DATA(&frame, 0)),
                     GST_VIDEO_FRAME_COMP_STRIDE(&frame, 0)};
    const Plane none{nullptr, luma.stride};
    if (planes != overlay::Planes::LumaAndChroma || GST_VIDEO_FRAME_N_COMPONENTS(&frame) == 1) {
        draw(ImageOf(frame, luma.bytes, none));
        return;
    }
    const Plane chroma = TakePairs(frame, luma.stride);
    if (chroma.stride == luma.stride) {
        draw(ImageOf(frame, luma.bytes, chroma));
    } else {
        draw(ImageOf(frame, luma.bytes, none));
        draw(ImageOf(frame, nullptr, chroma));
    }
    GivePairs(frame, chroma);
}
