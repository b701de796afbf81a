// SPDX-License-Identifier: MIT
// libyuv: rectangles by SetPlane, and two chroma pairs at a time by ARGBRect; blits by CopyPlane;
// bitmaps by blending with a mask. It has no text: the overlay's glyphs are stamped by hand.
#include "jobs.h"

#include <libyuv.h>

namespace bench {

namespace {

// Chroma widths are even here, as the boxes of the jobs are.
void Fill(const Frame &frame, int x, int y, int width, int height, Colour ink) {
    const int stride = int(frame.stride);
    libyuv::SetPlane(frame.luma + y * frame.stride + x, stride, width, height, ink.y);
    if (!frame.chroma)
        return;
    const uint32_t pair = ink.u | uint32_t(ink.v) << 8;
    uint8_t *row = frame.chroma + y / 2 * frame.stride;
    if (width >= 4)
        libyuv::ARGBRect(row + x, stride, 0, 0, width / 4, (height + 1) / 2, pair << 16 | pair);
    else // too narrow for ARGBRect
        for (int i = 0; i < height / 2; ++i, row += frame.stride) {
            row[x] = ink.u;
            row[x + 1] = ink.v;
        }
}

Painter PaintFrame(const Frame &frame, const Job &job) {
    return AtEveryPlace([=, w = job.width, h = job.height, ink = job.ink](int x, int y) {
        Fill(frame, x, y, w, 2, ink);
        Fill(frame, x, y + h - 2, w, 2, ink);
        Fill(frame, x, y + 2, 2, h - 4, ink);
        Fill(frame, x + w - 2, y + 2, 2, h - 4, ink);
    });
}

Painter PaintBlit(const Frame &frame, const Frame &source, const Job &job) {
    return AtEveryPlace([=, w = job.width, h = job.height](int x, int y) {
        const int stride = int(frame.stride);
        libyuv::CopyPlane(source.luma, stride, frame.luma + y * frame.stride + x, stride, w, h);
        if (frame.chroma)
            libyuv::CopyPlane(source.chroma, stride, frame.chroma + y / 2 * frame.stride + x,
                              stride, w, h / 2);
    });
}

// ---- Bitmaps: the mask is scaled, doubled for pairs, and blended with a block of one colour ----

std::vector<uint8_t> BitmapMask(uint8_t alpha) {
    std::vector<uint8_t> mask;
    for (int row = 0; row < kBitmapSide; ++row)
        for (int column = 0; column < kBitmapSide; ++column)
            mask.push_back(BitmapBit(column, row) ? alpha : 0);
    return mask;
}

struct Blender {
    std::vector<uint8_t> mask;
    std::vector<uint8_t> lumaBlock; // of the job's size
    std::vector<uint8_t> chromaBlock;
    std::vector<uint8_t> scaled;
    std::vector<uint8_t> doubled;

    Blender(const Job &job, uint8_t alpha) : mask(BitmapMask(alpha)) {
        const size_t size = size_t(job.width) * size_t(job.height);
        lumaBlock.assign(size, job.ink.y);
        chromaBlock.resize(size);
        for (size_t i = 0; i < size; ++i)
            chromaBlock[i] = i % 2 ? job.ink.v : job.ink.u;
        scaled.resize(size);
        doubled.resize(size);
    }
    const uint8_t *Scaled(int width, int height) {
        if (width == kBitmapSide && height == kBitmapSide)
            return mask.data();
        libyuv::ScalePlane(mask.data(), kBitmapSide, kBitmapSide, kBitmapSide, scaled.data(), width,
                           width, height, libyuv::kFilterNone);
        return scaled.data();
    }
    void Blend(uint8_t *to, int stride, const uint8_t *block, const uint8_t *alpha, int width,
               int height) {
        libyuv::BlendPlane(block, width, to, stride, alpha, width, to, stride, width, height);
    }
};

Painter PaintBitmap(const Frame &frame, const Job &job) {
    const uint8_t alpha = job.shape == Shape::HalfBitmap ? 128 : 255;
    return AtEveryPlace(
        [=, w = job.width, h = job.height, blender = Blender(job, alpha)](int x, int y) mutable {
            const int stride = int(frame.stride);
            blender.Blend(frame.luma + y * frame.stride + x, stride, blender.lumaBlock.data(),
                          blender.Scaled(w, h), w, h);
            if (!frame.chroma)
                return;
            const uint8_t *half = blender.Scaled(w / 2, h / 2);
            libyuv::MergeUVPlane(half, w / 2, half, w / 2, blender.doubled.data(), w, w / 2, h / 2);
            blender.Blend(frame.chroma + y / 2 * frame.stride + x, stride,
                          blender.chromaBlock.data(), blender.doubled.data(), w, h / 2);
        });
}

} // namespace

Painter MakeLibyuv(const Job &job, const Frame &frame) {
    const int w = job.width;
    const int h = job.height;
    switch (job.shape) {
    case Shape::Rectangle:
        return AtEveryPlace([=](int x, int y) { Fill(frame, x, y, w, h, job.ink); });
    case Shape::Frame:
        return PaintFrame(frame, job);
    case Shape::Line:
        if (w != 0 && h != 0)
            return {};
        return AtEveryPlace(
            [=](int x, int y) { Fill(frame, x, y, std::max(w, 2), std::max(h, 2), job.ink); });
    case Shape::Bitmap:
    case Shape::HalfBitmap:
        return PaintBitmap(frame, job);
    case Shape::Blit:
        return PaintBlit(frame, BlitSource(frame), job);
    case Shape::Overlay:
        return MakeOverlay(frame, MakeLibyuv, MakePlain);
    default:
        return {};
    }
}

} // namespace bench
