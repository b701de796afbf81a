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

// It was asked for a size, a face or an instance that it doesn't have.
struct FontChoiceError : FontError {
    using FontError::FontError;
};

// One glyph of it is no good. The reason is a clause, "is wider or higher than 127 pixels", which
// may be the same for others; the details follow it in the text.
struct GlyphError : FontError {
    GlyphError(const std::string &clause, const std::string &details)
        : FontError(clause + details), reason(clause) {
    }
    std::string reason;
};

constexpr int kNativeSize = 0;
constexpr char kDefaultInstance[] = "default";

// Which of the fonts in a file is meant.
struct FontChoice {
    int pixelSize = kNativeSize;
    std::string face;     // of a collection, by number from 0 or by name; empty: the first
    std::string instance; // of a variable font, by name or by values of axes; empty: the default
};

// Glyphs are cropped to the smallest box around their ink. Calls throw FontError, and GlyphError
// for what is wrong with a single glyph.
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
std::unique_ptr<FontSource> OpenFont(const std::string &path, const FontChoice &choice);

} // namespace cbfconv
