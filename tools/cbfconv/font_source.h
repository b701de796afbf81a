// SPDX-License-Identifier: MIT
// Fonts to convert: outline fonts (TTF, OTF) that FreeType renders in one bit at a pixel size,
// bitmap fonts (BDF, PCF) as they are, and the text files of bitmaps that Unifont comes in (.hex).
#pragma once

#include "cbf/font.h"

#include <memory>
#include <optional>
#include <stdexcept>
#include <string>

namespace cbfconv {

// The font, or what was asked of it, is no good. The text does not name the font file.
struct FontError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// It was asked for at a size that it can't have.
struct FontSizeError : FontError {
    using FontError::FontError;
};

constexpr int kNativeSize = 0;

// Glyphs are cropped to the smallest box around their ink. Calls throw FontError.
class FontSource {
  public:
    virtual ~FontSource() = default;
    virtual int32_t LineHeight() const = 0;
    // What it shows for missing characters, or a hollow box.
    virtual cbf::Glyph Fallback() = 0;
    // The glyph of a character, if the font has it.
    virtual std::optional<cbf::Glyph> Read(uint32_t codePoint) = 0;
};

// Throws FontError.
std::unique_ptr<FontSource> OpenFont(const std::string &path, int pixelSize);

} // namespace cbfconv
