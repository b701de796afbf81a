// SPDX-License-Identifier: MIT
// Chroma that can't be drawn where it lies is copied row by row: planes of U and of V, and pairs in
// rows of odd length, which the library does not take. Its samples are addressed as GStreamer
// describes them, so that the order of the planes is of no account.
#include "frame_images.h"

#include <cstring>

namespace {

enum class Way { AsItIs, Exchanged, Copied };

Way WayOf(const GstVideoFrame &frame) {
    if (GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, 1) != 2 ||
        GST_VIDEO_FRAME_COMP_STRIDE(&frame, 1) % 2 != 0)
        return Way::Copied;
    const bool vFirst = GST_VIDEO_FRAME_FORMAT(&frame) == GST_VIDEO_FORMAT_NV21;
    return vFirst ? Way::Exchanged : Way::AsItIs;
}

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

// The first byte of a frame that has pairs.
uint8_t *PairsOf(const GstVideoFrame &frame) {
    return static_cast<uint8_t *>(GST_VIDEO_FRAME_PLANE_DATA(&frame, 1));
}

// With a step that is known here, these loops become vector instructions.
template <size_t step>
void Join(const uint8_t *u, const uint8_t *v, uint8_t *__restrict pairs, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        pairs[2 * i] = u[step * i];
        pairs[2 * i + 1] = v[step * i];
    }
}

template <size_t step>
void Part(const uint8_t *pairs, uint8_t *__restrict u, uint8_t *__restrict v, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        u[step * i] = pairs[2 * i];
        v[step * i] = pairs[2 * i + 1];
    }
}

void Exchange(uint8_t *pairs, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        uint16_t pair;
        std::memcpy(&pair, pairs + 2 * i, 2);
        pair = static_cast<uint16_t>(pair << 8 | pair >> 8);
        std::memcpy(pairs + 2 * i, &pair, 2);
    }
}

void ExchangeAll(const GstVideoFrame &frame) {
    const int64_t stride = GST_VIDEO_FRAME_COMP_STRIDE(&frame, 1);
    for (size_t row = 0; row < RowsOf(frame); ++row)
        Exchange(PairsOf(frame) + static_cast<int64_t>(row) * stride, ColumnsOf(frame));
}

} // namespace

// A copy has the stride of luma, where that is possible, so that both are drawn at once.
FrameImages::Plane FrameImages::TakePairs(GstVideoFrame &frame, int64_t lumaStride) {
    const Way way = WayOf(frame);
    if (way == Way::Exchanged)
        ExchangeAll(frame);
    if (way != Way::Copied)
        return {PairsOf(frame), GST_VIDEO_FRAME_COMP_STRIDE(&frame, 1)};
    const size_t columns = ColumnsOf(frame);
    const auto least = static_cast<int64_t>(2 * columns);
    const int64_t stride = lumaStride >= least && lumaStride % 2 == 0 ? lumaStride : least;
    pairs.resize(RowsOf(frame) * static_cast<size_t>(stride));
    const auto join = GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, 1) == 1 ? Join<1> : Join<2>;
    for (size_t row = 0; row < RowsOf(frame); ++row)
        join(SamplesOf(frame, 1, row), SamplesOf(frame, 2, row),
             pairs.data() + row * static_cast<size_t>(stride), columns);
    return {pairs.data(), stride};
}

void FrameImages::GivePairs(GstVideoFrame &frame, const Plane &chroma) const {
    const Way way = WayOf(frame);
    if (way == Way::Exchanged)
        ExchangeAll(frame);
    if (way != Way::Copied)
        return;
    const auto part = GST_VIDEO_FRAME_COMP_PSTRIDE(&frame, 1) == 1 ? Part<1> : Part<2>;
    for (size_t row = 0; row < RowsOf(frame); ++row)
        part(chroma.bytes + static_cast<int64_t>(row) * chroma.stride, SamplesOf(frame, 1, row),
             SamplesOf(frame, 2, row), ColumnsOf(frame));
}

OrnMinRenderImage FrameImages::ImageOf(GstVideoFrame &frame, uint8_t *luma, const Plane &chroma) {
    OrnMinRenderImage image{};
    image.width = GST_VIDEO_FRAME_WIDTH(&frame);
    image.height = GST_VIDEO_FRAME_HEIGHT(&frame);
    image.stride = chroma.stride;
    image.yPlane = luma;
    image.uvPlane = chroma.bytes;
    return image;
}
