// SPDX-License-Identifier: MIT
// What a font file holds: metrics, sections, and how many characters of each block of Unicode.
#pragma once

#include "cbf/reader.h"

namespace cbfdump {

// The path is shown as it is.
std::string Summarise(const std::string &path, const cbf::View &file, const cbf::FontFile &font);

// Glyph records too large to be drawn with an outline.
size_t CountWithoutOutline(const cbf::View &file, const cbf::FontFile &font);

} // namespace cbfdump
