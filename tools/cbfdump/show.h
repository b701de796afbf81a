// SPDX-License-Identifier: MIT
// Pictures and glyphs as text, a character for each pixel.
#pragma once

#include "cbf/reader.h"
#include "cbfdump/options.h"
#include "cbfdump/picture.h"

namespace cbfdump {

// '#' is ink, '+' outline.
std::string ShowPicture(const Picture &picture);

// A character's glyph from the record itself, so that it can be held against the library's picture.
// Its faults go to standard error. Throws tool::Failure where the font has no such glyph.
std::string ShowGlyph(const Options &options, const cbf::View &file, const cbf::FontFile &font);

} // namespace cbfdump
