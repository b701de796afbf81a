// SPDX-License-Identifier: MIT
// A font as plain bitmaps, which is what files are made from and read back as.
#pragma once

#include <cstdint>
#include <map>
#include <vector>

namespace cbf {

// Fields are wider than in a file, so that a glyph which doesn't fit can be told.
struct Glyph {
    int32_t width = 0;
    int32_t height = 0;
    int32_t bearingX = 0; // left column relative to the pen
    int32_t bearingY = 0; // rows from the top row down to the pen
    int32_t advance = 0;
    std::vector<uint8_t> pixels; // rows from the top, a byte for each pixel: 0 background, else ink
};

struct Font {
    int32_t lineHeight = 0;
    Glyph fallback; // shown for every code point without a glyph of its own
    std::map<uint32_t, Glyph> glyphs;
};

} // namespace cbf
