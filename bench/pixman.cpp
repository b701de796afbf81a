// SPDX-License-Identifier: MIT
// pixman: rectangles by pixman_fill, at 16 bits for chroma pairs; pictures by compositing.
#include "jobs.h"

#include <pixman.h>

#include <memory>

namespace bench {

namespace {

using Image = std::shared_ptr<pixman_image_t>;

Image Own(pixman_image_t *image) {
    return Image(image, pixman_image_unref);
}

// ---- Fills ----

struct Box {
    int left;
    int top;
    int width;
    int height;
};

// Strides are counted in 32-bit words.
void Fill(const Frame &frame, const Box &box, Colour ink) {
    const int stride = int(frame.stride / 4);
    pixman_fill(reinterpret_cast<uint32_t *>(frame.luma), stride, 8, box.left, box.top, box.width,
                box.height, ink.y * 0x01010101u);
    const uint32_t pair = ink.u | uint32_t(ink.v) << 8;
    const int cx = box.left / 2;
    const int cy = box.top / 2;
    if (frame.chroma)
        pixman_fill(reinterpret_cast<uint32_t *>(frame.chroma), stride, 16, cx, cy,
                    (box.left + box.width + 1) / 2 - cx, (box.top + box.height + 1) / 2 - cy,
                    pair << 16 | pair);
}

Painter PaintFills(const Frame &frame, const std::vector<Box> &boxes, Colour ink) {
    return AtEveryPlace([=](int x, int y) {
        for (const Box &box : boxes)
            Fill(frame, {x + box.left, y + box.top, box.width, box.height}, ink);
    });
}

// ---- Pictures ----

struct Planes {
    Image luma;
    Image chroma;
};

Planes PlanesOf(const Frame &frame) {
    const auto image = [&](pixman_format_code_t format, uint8_t *plane, int half) {
        return Own(pixman_image_create_bits(format, frame.width / half, frame.height / half,
                                            reinterpret_cast<uint32_t *>(plane),
                                            int(frame.stride)));
    };
    return {image(PIXMAN_a8, frame.luma, 1),
            frame.chroma ? image(PIXMAN_r5g6b5, frame.chroma, 2) : nullptr};
}

Painter PaintBlit(const Frame &frame, const Frame &source, const Job &job) {
    const auto copy = [](const Image &from, const Image &to, int x, int y, int w, int h) {
        pixman_image_composite32(PIXMAN_OP_SRC, from.get(), nullptr, to.get(), 0, 0, 0, 0, x, y, w,
                                 h);
    };
    return AtEveryPlace([=, to = PlanesOf(frame), from = PlanesOf(source), w = job.width,
                         h = job.height](int x, int y) {
        copy(from.luma, to.luma, x, y, w, h);
        if (to.chroma)
            copy(from.chroma, to.chroma, x / 2, y / 2, w / 2, h / 2);
    });
}

// The bitmap as a mask, scaled to a width and height.
Image BitmapMask(int width, int height) {
    const Image mask =
        Own(pixman_image_create_bits(PIXMAN_a8, kBitmapSide, kBitmapSide, nullptr, 0));
    auto *bytes = reinterpret_cast<uint8_t *>(pixman_image_get_data(mask.get()));
    for (int row = 0; row < kBitmapSide; ++row)
        for (int column = 0; column < kBitmapSide; ++column)
            bytes[row * pixman_image_get_stride(mask.get()) + column] =
                BitmapBit(column, row) ? 255 : 0;
    if (width != kBitmapSide || height != kBitmapSide) {
        pixman_transform_t scale;
        pixman_transform_init_scale(&scale, kBitmapSide * pixman_fixed_1 / width,
                                    kBitmapSide * pixman_fixed_1 / height);
        pixman_image_set_transform(mask.get(), &scale);
        pixman_image_set_filter(mask.get(), PIXMAN_FILTER_NEAREST, nullptr, 0);
    }
    return mask;
}

Image Solid(Colour ink) {
    const unsigned pair = ink.u | unsigned(ink.v) << 8;
    const pixman_color_t colour = {uint16_t((pair >> 11) * 0xffff / 31),
                                   uint16_t((pair >> 5 & 63) * 0xffff / 63),
                                   uint16_t((pair & 31) * 0xffff / 31), 0xffff};
    return Own(pixman_image_create_solid_fill(&colour));
}

// Painted over, an alpha plane can only become opaque: luma is 255 here, whatever the ink.
Painter PaintBitmap(const Frame &frame, const Job &job) {
    const int w = job.width;
    const int h = job.height;
    const auto stamp = [ink = Solid(job.ink)](const Image &mask, const Image &to, int x, int y,
                                              int width, int height) {
        pixman_image_composite32(PIXMAN_OP_OVER, ink.get(), mask.get(), to.get(), 0, 0, 0, 0, x, y,
                                 width, height);
    };
    return AtEveryPlace([=, to = PlanesOf(frame), lumaMask = BitmapMask(w, h),
                         chromaMask = BitmapMask(w / 2, h / 2)](int x, int y) {
        stamp(lumaMask, to.luma, x, y, w, h);
        if (to.chroma)
            stamp(chromaMask, to.chroma, x / 2, y / 2, w / 2, h / 2);
    });
}

} // namespace

Painter MakePixman(const Job &job, const Frame &frame) {
    const int w = job.width;
    const int h = job.height;
    switch (job.shape) {
    case Shape::Rectangle:
        return PaintFills(frame, {{0, 0, w, h}}, job.ink);
    case Shape::Frame:
        return PaintFills(frame,
                          {{0, 0, w, 2}, {0, h - 2, w, 2}, {0, 2, 2, h - 4}, {w - 2, 2, 2, h - 4}},
                          job.ink);
    case Shape::Line:
        if (w != 0 && h != 0)
            return {};
        return PaintFills(frame, {{0, 0, std::max(w, 2), std::max(h, 2)}}, job.ink);
    case Shape::Bitmap:
        return PaintBitmap(frame, job);
    case Shape::Blit:
        return PaintBlit(frame, BlitSource(frame), job);
    default:
        return {};
    }
}

} // namespace bench
