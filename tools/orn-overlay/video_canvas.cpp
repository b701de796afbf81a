// SPDX-License-Identifier: MIT
// The library draws where U,V pairs have the stride of luma. Luma is copied only where the decoder
// still needs it, to predict other frames.
#include "video_canvas.h"

#include <cstring>

extern "C" {
#include <libavutil/frame.h>
#include <libavutil/imgutils.h>
}

namespace {

constexpr int kAlignment = 64; // of rows: those of U and V, half as long, suit any instructions

struct Plane {
    uint8_t *bytes;
    ptrdiff_t stride;
};

void Interleave(Plane u, Plane v, Plane pairs, int width, int height) {
    for (int y = 0; y < height; ++y) {
        const uint8_t *__restrict uRow = u.bytes + y * u.stride;
        const uint8_t *__restrict vRow = v.bytes + y * v.stride;
        uint8_t *__restrict row = pairs.bytes + y * pairs.stride;
        for (int x = 0; x < width; ++x) {
            row[2 * x] = uRow[x];
            row[2 * x + 1] = vRow[x];
        }
    }
}

void Separate(Plane pairs, Plane u, Plane v, int width, int height) {
    for (int y = 0; y < height; ++y) {
        const uint8_t *__restrict row = pairs.bytes + y * pairs.stride;
        uint8_t *__restrict uRow = u.bytes + y * u.stride;
        uint8_t *__restrict vRow = v.bytes + y * v.stride;
        for (int x = 0; x < width; ++x) {
            uRow[x] = row[2 * x];
            vRow[x] = row[2 * x + 1];
        }
    }
}

Plane PlaneOf(const AVFrame &frame, int i) {
    return {frame.data[i], frame.linesize[i]};
}

bool IsPlanar(const AVFrame &frame) {
    return frame.format == AV_PIX_FMT_YUV420P;
}

// At once where possible, which takes two thirds of the time that rows take one by one.
void Copy(Plane from, Plane to, int width, int height) {
    if (from.stride == to.stride && from.stride > 0)
        std::memcpy(to.bytes, from.bytes, static_cast<size_t>(from.stride * (height - 1) + width));
    else
        av_image_copy_plane(to.bytes, static_cast<int>(to.stride), from.bytes,
                            static_cast<int>(from.stride), width, height);
}

// That of the source where it will do, for the sake of copying.
int StrideFor(const AVFrame &source, int width) {
    const int stride = source.linesize[0];
    return stride >= width && stride % kAlignment == 0
               ? stride
               : (width + kAlignment - 1) / kAlignment * kAlignment;
}

void AddBuffer(AVFrame &frame, AVBufferRef *buffer) {
    int i = 0;
    while (frame.buf[i])
        ++i;
    frame.buf[i] = buffer;
}

} // namespace

AVBufferRef *BufferPool::Get(int64_t bytes) {
    if (bytes != size)
        pool = NotNull(PoolPtr(av_buffer_pool_init(static_cast<size_t>(bytes), nullptr)));
    size = bytes;
    return NotNull(av_buffer_pool_get(pool.get()));
}

VideoCanvas::VideoCanvas(const overlay::FrameShape &ofShape, AVPixelFormat ofLayout)
    : shape(ofShape), layout(ofLayout), chromaWidth((shape.width + 1) / 2),
      chromaHeight((shape.height + 1) / 2) {
}

OrnMinRenderImage VideoCanvas::Place(FramePtr source) {
    const bool canDraw =
        av_frame_is_writable(source.get()) && source->linesize[0] >= 2 * chromaWidth;
    const bool hasChroma = source->format == layout &&
                           (IsPlanar(*source) || source->linesize[1] == source->linesize[0]);
    if (canDraw && hasChroma) {
        frame = std::move(source);
        FillPairs(*frame);
    } else {
        frame = WithOwnChroma(*source, canDraw);
        FillPairs(*source);
    }
    OrnMinRenderImage image{};
    image.width = shape.width;
    image.height = shape.height;
    image.stride = frame->linesize[0];
    image.yPlane = frame->data[0];
    image.uvPlane = pairs;
    return image;
}

// The chroma isn't filled yet.
FramePtr VideoCanvas::WithOwnChroma(const AVFrame &source, bool sharesLuma) {
    FramePtr own = NewFrame();
    if (sharesLuma) {
        AvChecked(av_frame_ref(own.get(), &source), "frame");
    } else {
        AvChecked(av_frame_copy_props(own.get(), &source), "frame");
        own->width = source.width;
        own->height = source.height;
        own->linesize[0] = StrideFor(source, shape.width);
        AddBuffer(*own, lumaPool.Get(int64_t{own->linesize[0]} * shape.height));
        own->data[0] = own->buf[0]->data;
        Copy(PlaneOf(source, 0), PlaneOf(*own, 0), shape.width, shape.height);
    }
    AVBufferRef *chroma = chromaPool.Get(int64_t{own->linesize[0]} * chromaHeight);
    AddBuffer(*own, chroma);
    own->format = layout;
    own->linesize[1] = own->linesize[0] / (IsPlanar(*own) ? 2 : 1);
    own->linesize[2] = IsPlanar(*own) ? own->linesize[1] : 0;
    own->data[1] = chroma->data;
    own->data[2] = IsPlanar(*own) ? chroma->data + own->linesize[1] * chromaHeight : nullptr;
    return own;
}

void VideoCanvas::FillPairs(const AVFrame &source) {
    pairs = frame->data[1];
    if (IsPlanar(*frame)) {
        scratch.resize(static_cast<size_t>(frame->linesize[0]) * static_cast<size_t>(chromaHeight));
        pairs = scratch.data();
    }
    const Plane target = {pairs, frame->linesize[0]};
    if (IsPlanar(source))
        Interleave(PlaneOf(source, 1), PlaneOf(source, 2), target, chromaWidth, chromaHeight);
    else if (source.data[1] != pairs)
        Copy(PlaneOf(source, 1), target, 2 * chromaWidth, chromaHeight);
}

FramePtr VideoCanvas::Take() {
    if (IsPlanar(*frame))
        Separate({pairs, frame->linesize[0]}, PlaneOf(*frame, 1), PlaneOf(*frame, 2), chromaWidth,
                 chromaHeight);
    return std::move(frame);
}
