// SPDX-License-Identifier: MIT
// Instances of variable fonts, which have one outline for many weights, widths and the like.
#pragma once

#include <ft2build.h>
#include <string>

#include FT_FREETYPE_H

namespace cbfconv {

// By the name that the font gives it, "Bold", or by values of its axes, "wght=700,wdth=87.5", where
// the others keep their defaults. Empty, or "default": the font as it comes. Throws FontError.
void SetInstance(FT_Face face, const std::string &wanted);

} // namespace cbfconv
