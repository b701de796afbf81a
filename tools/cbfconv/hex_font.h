// SPDX-License-Identifier: MIT
// Fonts as lines of text, "0041:0000000018242442427E424242420000": a code point and its bitmap of
// 16 rows, 8, 16, 24 or 32 columns wide, as Unifont is published.
#pragma once

#include "cbfconv/font_source.h"

namespace cbfconv {

// Whether the file looks like lines of "CODE POINT:BITMAP", both in hexadecimal digits.
bool IsHexFont(const std::string &path);

std::unique_ptr<FontSource> OpenHexFont(const std::string &path, const FontChoice &choice);

} // namespace cbfconv
