// SPDX-License-Identifier: MIT
// Compares a CBF file, as the library draws and measures it, with the font that it was made from.
#pragma once

#include "cbf/font.h"
#include "common/progress.h"

#include <string>

namespace cbfconv {

// The first difference, "U+0041: ...", or nothing. Every glyph is drawn and measured in the four
// directions; the fallback glyph is measured at every gap between them, and drawn past their end.
std::string FirstDifference(const std::string &path, const cbf::Font &font,
                            tool::Progress &progress);

} // namespace cbfconv
