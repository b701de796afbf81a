// SPDX-License-Identifier: MIT
// Chroma that can't be drawn where it lies is copied row by row: planes of U and of V, and pairs in
// rows of odd length, which the library does not take. Its samples are addressed as GStreamer
// describes them, so that the order of the planes is of no account.
#include "frame_images.h"

#include <algorithm>

namespace {

size_t RowsOf(const GstVideoFrame &frame) {
    return static_cast<size_t>(GST_VIDEO_FRAME_COMP_HEIGHT(&frame, 1));
}

size_t ColumnsOf(const GstVideoFrame &frame) {
    return static_cast<size_t>(GST_VIDEO_FRAME_COMP_WIDTH(&frame, 1));
}

uint8_t *SamplesOf(const GstVideoFrame &frame, guint component, size_t row) {
    return static_cast<uint8_t *>(GST_VIDEO_FRAME_COMP_DATA(&frame, component)) +
           static_cast<int64_t>(row) * GST_VIDEO_FRAME_COMP_STRIDE(&frame, component);
}

// In the order of the frame's own pairs, if it has some.
guint FirstOf(const GstVideoFrame &frame) {
    return GST_VIDEO_FRAME_FORMAT(&frame) == GST_VIDEO_FORMAT_NV21 ? 2 : 1;
}

// With a step that is known here, these loops become vector instructions.
template <size_t step>
void Join(const uint8_t *first, const uint8_t *second, uint8_t *__restrict pairs, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        pairs[2 * i] = first[step * i];
        pairs[2 * i + 1] = second[step * i];
    }
}

template <size_t step>
void Part(const uint8_t *pairs, uint8_t *__restrict first, uint8_t *__restrict second,
          size_t count) {
    for (size_t i = 0; i < count; ++i) {
        first[step * i] = pairs[2 * i];
        second[step * i] = pairs[2 * i + 1];
    }
}

} // namespace

OrnMinRenderImage FrameImages::ImageOf(GstVideoFrame &frame, uint8_t *luma, const Plane &chroma) {
    OrnMinRenderImage image{};
    image.width = GST_VIDEO_FRAME_WIDTH(&frame);
    image.height = GST_VIDEO_FRAME_HEIGHT(&frame);
    image.stride = chroma.stride;
    image.yPlane = luma;
    image.uvPlane = chroma.bytes;
    return image;
}

bool FrameImages::HasPairs(const GstVideoFrame &frame) {
    return GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, 1) == 2 &&
           GST_VIDEO_FRAME_COMP_STRIDE(&frame, 1) % 2 == 0;
}

FrameImages::Plane FrameImages::PairsOf(GstVideoFrame &frame) {
    return {SamplesOf(frame, FirstOf(frame), 0), GST_VIDEO_FRAME_COMP_STRIDE(&frame, 1)};
}

// With the stride of luma, where that is possible, so that both are drawn at once.
FrameImages::Plane FrameImages::CopyOfPairs(GstVideoFrame &frame, int64_t lumaStride) {
    const size_t columns = ColumnsOf(frame);
    const auto least = static_cast<int64_t>(2 * columns);
    const int64_t stride = lumaStride >= least && lumaStride % 2 == 0 ? lumaStride : least;
    pairs.resize(RowsOf(frame) * static_cast<size_t>(stride));
    const auto join = GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, 1) == 1 ? Join<1> : Join<2>;
    const guint first = FirstOf(frame);
    for (size_t row = 0; row < RowsOf(frame); ++row)
        join(SamplesOf(frame, first, row), SamplesOf(frame, 3 - first, row),
             pairs.data() + row * static_cast<size_t>(stride), columns);
    return {pairs.data(), stride};
}

void FrameImages::CopyBack(GstVideoFrame &frame, const Plane &copy) const {
    const auto part = GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, 1) == 1 ? Part<1> : Part<2>;
    const guint first = FirstOf(frame);
    for (size_t row = 0; row < RowsOf(frame); ++row)
        part(copy.bytes + static_cast<int64_t>(row) * copy.stride, SamplesOf(frame, first, row),
             SamplesOf(frame, 3 - first, row), ColumnsOf(frame));
}
