// SPDX-License-Identifier: MIT
// Both planes are drawn alike, as bytes: a plane of chroma is a picture half as high, whose rows
// have two bytes a sample.
#include "still.h"

#include "colour.h"
#include "place.h"

#include <algorithm>
#include <utility>

namespace overlay {

namespace {

constexpr uint8_t kLeastOpaque = 128;

int32_t Halved(int32_t side) {
    return side / 2 + side % 2;
}

} // namespace

Still::Still(Pixels ofPicture) : pixels(std::move(ofPicture)) {
    const auto addRuns = [](Plane &plane, int32_t rows, int32_t columns, int32_t bytes,
                            const auto &isDrawn) {
        plane.rowBytes = columns * bytes;
        plane.bytes.resize(static_cast<size_t>(plane.rowBytes) * static_cast<size_t>(rows));
        for (int32_t row = 0; row < rows; ++row) {
            for (int32_t i = 0; i < columns; ++i) {
                const int32_t first = i;
                while (i < columns && isDrawn(i, row))
                    ++i;
                if (i > first)
                    plane.runs.push_back({row, first * bytes, i * bytes});
            }
        }
    };
    addRuns(luma, pixels.height, pixels.width, 1,
            [this](int32_t x, int32_t y) { return IsOpaque(x, y); });
    addRuns(chroma, Halved(pixels.height), Halved(pixels.width), 2,
            [this](int32_t column, int32_t row) { return IsSampleOpaque(column, row); });
}

const uint8_t *Still::PixelAt(int32_t x, int32_t y) const {
    return &pixels.rgba[4 * (static_cast<size_t>(y) * static_cast<size_t>(pixels.width) +
                             static_cast<size_t>(x))];
}

bool Still::IsOpaque(int32_t x, int32_t y) const {
    return PixelAt(x, y)[3] >= kLeastOpaque;
}

// At the right and the lower edge of odd sides, a sample has fewer pixels.
template <typename Visit> void Still::VisitSample(int32_t column, int32_t row, Visit visit) const {
    for (int32_t y = 2 * row; y < std::min(2 * row + 2, pixels.height); ++y)
        for (int32_t x = 2 * column; x < std::min(2 * column + 2, pixels.width); ++x)
            visit(x, y);
}

bool Still::IsSampleOpaque(int32_t column, int32_t row) const {
    int32_t balance = 0;
    VisitSample(column, row, [&](int32_t x, int32_t y) { balance += IsOpaque(x, y) ? 1 : -1; });
    return balance >= 0;
}

// Of the pixels that are drawn: what is transparent may have any colour.
uint32_t Still::MeanAt(int32_t column, int32_t row) const {
    uint32_t sums[3] = {};
    uint32_t count = 0;
    VisitSample(column, row, [&](int32_t x, int32_t y) {
        const uint8_t *pixel = PixelAt(x, y);
        count += IsOpaque(x, y);
        for (size_t i = 0; IsOpaque(x, y) && i < 3; ++i)
            sums[i] += pixel[i];
    });
    uint32_t rgb = 0;
    for (const uint32_t sum : sums)
        rgb = rgb << 8 | (sum + count / 2) / count;
    return rgb;
}

void Still::Mix(const ColourSpace &colours) {
    for (const Run &run : luma.runs) {
        uint8_t *const row =
            &luma.bytes[static_cast<size_t>(run.row) * static_cast<size_t>(luma.rowBytes)];
        for (int32_t x = run.first; x < run.end; ++x) {
            const uint8_t *pixel = PixelAt(x, run.row);
            const auto rgb = static_cast<uint32_t>(pixel[0] << 16 | pixel[1] << 8 | pixel[2]);
            row[x] = ColourOf(rgb, colours).y;
        }
    }
    for (const Run &run : chroma.runs) {
        uint8_t *const row =
            &chroma.bytes[static_cast<size_t>(run.row) * static_cast<size_t>(chroma.rowBytes)];
        for (int32_t i = run.first; i < run.end; i += 2) {
            const OrnMinRenderColour colour = ColourOf(MeanAt(i / 2, run.row), colours);
            row[i] = colour.u;
            row[i + 1] = colour.v;
        }
    }
}

// Rows outside the frame cost nothing.
void Still::DrawPlane(const Plane &plane, OrnMinRenderImage image, OrnMinRenderPoint corner) {
    image.uvPlane = nullptr;
    OrnMinRenderImage source{};
    source.stride = plane.rowBytes;
    source.width = plane.rowBytes;
    source.height = static_cast<int32_t>(plane.bytes.size() / static_cast<size_t>(plane.rowBytes));
    source.yPlane = const_cast<uint8_t *>(plane.bytes.data()); // which is read only
    const auto isAbove = [](const Run &run, int64_t row) { return run.row < row; };
    const auto first =
        std::lower_bound(plane.runs.begin(), plane.runs.end(), -int64_t{corner.y}, isAbove);
    const auto end =
        std::lower_bound(first, plane.runs.end(), int64_t{image.height} - corner.y, isAbove);
    for (auto run = first; run != end; ++run) {
        const int32_t y = corner.y + run->row;
        const OrnMinRenderRect rect{Saturated(int64_t{corner.x} + run->first), y,
                                    Saturated(int64_t{corner.x} + run->end), y + 1};
        OrnMinRenderBltYUV420SP(&image, rect, &source, {run->first, run->row});
    }
}

void Still::Draw(const OrnMinRenderImage &image, OrnMinRenderPoint corner) const {
    DrawPlane(luma, image, corner);
    if (!image.uvPlane)
        return;
    OrnMinRenderImage samples = image;
    samples.width = 2 * Halved(image.width);
    samples.height = Halved(image.height);
    samples.yPlane = image.uvPlane;
    DrawPlane(chroma, samples, {corner.x & ~1, corner.y >> 1});
}

} // namespace overlay
