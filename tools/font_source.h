// Glyph bitmaps from the fonts that FreeType reads: outline fonts (TTF, OTF) rendered in one bit at
// a pixel size, and bitmap fonts (BDF, PCF) as they are.
#pragma once

#include "cbf_writer.h"

#include <stdexcept>
#include <string>
#include <vector>

// The font, or what was asked of it, is no good. The text does not name the font file.
struct FontError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// It was asked for at a size that it can't have.
struct FontSizeError : FontError {
    using FontError::FontError;
};

struct CodePointRange {
    uint32_t first;
    uint32_t last;
};

struct SourceFont {
    cbf::Font font;
    size_t asked = 0;   // characters in the ranges
    size_t missing = 0; // of these the font has none
};

constexpr int kNativeSize = 0;

// Renders the characters of the ranges, which may overlap; 0 and 10 are never drawn, and left out.
// Throws FontError.
SourceFont ReadFont(const std::string &path, int pixelSize,
                    const std::vector<CodePointRange> &ranges);

// "U+0041"
std::string CodePointName(uint32_t codePoint);
