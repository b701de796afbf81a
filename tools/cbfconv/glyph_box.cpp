// SPDX-License-Identifier: MIT
// Boxes as small as the ink, which is what a record stores.
#include "cbfconv/glyph_box.h"

#include <algorithm>

namespace cbfconv {

static uint8_t InkAt(const cbf::Glyph &glyph, int32_t x, int32_t y) {
    return glyph
        .pixels[static_cast<size_t>(y) * static_cast<size_t>(glyph.width) + static_cast<size_t>(x)];
}

cbf::Glyph Crop(const cbf::Glyph &glyph) {
    int32_t left = glyph.width, right = 0, top = glyph.height, bottom = 0;
    for (int32_t y = 0; y < glyph.height; ++y)
        for (int32_t x = 0; x < glyph.width; ++x)
            if (InkAt(glyph, x, y)) {
                left = std::min(left, x);
                right = std::max(right, x + 1);
                top = std::min(top, y);
                bottom = std::max(bottom, y + 1);
            }
    cbf::Glyph cropped;
    cropped.advance = glyph.advance;
    if (left >= right)
        return cropped;
    cropped.width = right - left;
    cropped.height = bottom - top;
    cropped.bearingX = glyph.bearingX + left;
    cropped.bearingY = glyph.bearingY - top;
    for (int32_t y = top; y < bottom; ++y)
        for (int32_t x = left; x < right; ++x)
            cropped.pixels.push_back(InkAt(glyph, x, y));
    return cropped;
}

cbf::Glyph HollowBox(int32_t ascent) {
    const int32_t height = std::clamp(ascent * 3 / 4, 5, 120);
    const int32_t width = std::max(height * 2 / 3, 4);
    const int32_t stroke = std::max(height / 12, 1);
    cbf::Glyph box;
    box.width = width;
    box.height = height;
    box.bearingX = stroke;
    box.bearingY = height;
    box.advance = width + 2 * stroke;
    for (int32_t y = 0; y < height; ++y)
        for (int32_t x = 0; x < width; ++x)
            box.pixels.push_back(std::min({x, y, width - 1 - x, height - 1 - y}) < stroke);
    return box;
}

std::string SizesOf(const cbf::Glyph &glyph) {
    return " (" + std::to_string(glyph.width) + " x " + std::to_string(glyph.height) +
           ", advance " + std::to_string(glyph.advance) + ")";
}

} // namespace cbfconv
