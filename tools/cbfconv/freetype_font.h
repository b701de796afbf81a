// SPDX-License-Identifier: MIT
// Fonts that FreeType reads.
#pragma once

#include "cbfconv/font_source.h"

namespace cbfconv {

std::unique_ptr<FontSource> OpenFreeTypeFont(const std::string &path, const FontChoice &choice);

} // namespace cbfconv
