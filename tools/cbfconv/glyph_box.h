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

// " (200 x 180, advance 190)", to follow what is wrong with a glyph.
std::string SizesOf(const cbf::Glyph &glyph);

} // namespace cbfconv
