// SPDX-License-Identifier: MIT
// The fonts of the text jobs: DejaVu Sans at a pixel size, as a CBF file for the library and as
// ready-made glyph pictures for those who stamp glyphs by hand.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace bench {

extern const char kFontFile[]; // the outline font that all are made from

enum GlyphPixel : uint8_t { kClear = 0, kBand = 1, kInk = 2 };

struct StampGlyph {
    int left = 0; // of the picture, relative to the pen
    int top = 0;
    int width = 0;
    int height = 0;
    int advance = 0;
    int inkLeft = 0; // what measuring counts, relative to the pen
    int inkTop = 0;
    int inkRight = 0;
    int inkBottom = 0;
    std::vector<uint8_t> pixels; // a GlyphPixel each
};

struct FontSet {
    std::string cbfPath; // a temporary file, removed when the program ends
    StampGlyph glyphs[128];

    ~FontSet();
};

// Made on first use.
const FontSet &FontOfSize(int pixelSize);

struct Extent {
    int width;
    int height;
};

// The box that a text is drawn into: a pen at its left edge and PenHeight below its top.
Extent TextExtent(int pixelSize, const std::string &text);
inline int PenHeight(int pixelSize) {
    return pixelSize;
}

} // namespace bench
