// SPDX-License-Identifier: MIT
// Rectangles are widened to whole chroma samples first: otherwise a fringe would keep the colour of
// what is hidden, or show it. A mosaic's blocks count from the rectangle's own corner, and so move
// along with a tracked box; from the frame's, they would show something moving at other places in
// every frame, from which it can be put together again.
#include "draw_privacy.h"

#include "draw_shapes.h"

namespace overlay {

namespace {

// A part of a plane whose samples are one byte (luma) or two (U and V).
struct Block {
    uint8_t *first;
    int64_t stride;
    size_t columns;
    size_t rows;
};

// From first up to, but without, end.
struct Span {
    int32_t first;
    int32_t end;

    // Of the chroma samples whose first pixel lies in it, so that each belongs to one block.
    Span Chroma() const {
        return {first / 2 + first % 2, end / 2 + end % 2};
    }
};

template <size_t bytes> Block BlockAt(uint8_t *plane, int64_t stride, Span x, Span y) {
    return {plane + y.first * stride + x.first * static_cast<int64_t>(bytes), stride,
            static_cast<size_t>(std::max(0, x.end - x.first)),
            static_cast<size_t>(std::max(0, y.end - y.first))};
}

template <size_t bytes> void Average(const Block &block) {
    const uint64_t count = block.columns * block.rows;
    if (count == 0)
        return;
    uint64_t sums[bytes] = {};
    const uint8_t *from = block.first;
    for (size_t row = 0; row < block.rows; ++row, from += block.stride)
        for (size_t i = 0; i < block.columns * bytes; ++i)
            sums[i % bytes] += from[i];
    uint8_t *to = block.first;
    for (size_t row = 0; row < block.rows; ++row, to += block.stride)
        for (size_t i = 0; i < block.columns * bytes; ++i)
            to[i] = static_cast<uint8_t>((sums[i % bytes] + count / 2) / count);
}

// The part in the frame of the block that begins at a coordinate.
Span Clipped(int64_t start, int64_t end, int32_t size) {
    return {static_cast<int32_t>(std::clamp<int64_t>(start, 0, size)),
            static_cast<int32_t>(std::clamp<int64_t>(end, 0, size))};
}

// Calls visit with every block's part in the frame, along one axis.
template <typename Visit>
void ForBlocks(int32_t first, int32_t end, int32_t size, int32_t frameSize, Visit visit) {
    int64_t start = first;
    if (start < 0)
        start += -start / size * size;
    for (const int64_t last = std::min(end, frameSize); start < last; start += size)
        visit(Clipped(start, std::min<int64_t>(start + size, end), frameSize));
}

} // namespace

void DrawMask(Canvas &canvas, const Overlay &overlay) {
    FillRect(canvas, WholeSamples(Corners(canvas)), ColourFor(canvas, overlay.paints[0]));
}

void DrawMosaic(Canvas &canvas, const Overlay &) {
    const OrnMinRenderRect rect = WholeSamples(Corners(canvas));
    const int32_t size = std::max(1, canvas.coordinates[4]);
    const OrnMinRenderImage &image = canvas.image;
    ForBlocks(rect.top, rect.bottom, size, image.height, [&](Span y) {
        ForBlocks(rect.left, rect.right, size, image.width, [&](Span x) {
            if (image.yPlane)
                Average<1>(BlockAt<1>(image.yPlane, image.stride, x, y));
            if (image.uvPlane)
                Average<2>(BlockAt<2>(image.uvPlane, image.stride, x.Chroma(), y.Chroma()));
        });
    });
}

} // namespace overlay
