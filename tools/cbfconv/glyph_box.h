// SPDX-License-Identifier: MIT
// Glyphs and their boxes, for the readers of all formats.
#pragma once

#include "cbf/font.h"

#include <string>

namespace cbfconv {

// Shrinks a glyph to the smallest box around its ink; without any, the box is empty.
cbf::Glyph Crop(const cbf::Glyph &glyph);

// A fallback glyph for fonts without one, about as large as a capital letter.
cbf::Glyph HollowBox(int32_t ascent);

// What keeps a glyph out of a font, with its size: "is wider or higher than 127 pixels (200 x 180,
// advance 190)".
std::string DescribeFault(const std::string &reason, const cbf::Glyph &glyph);

} // namespace cbfconv
