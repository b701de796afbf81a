// SPDX-License-Identifier: MIT
// A picture of all characters of a font, one a cell.
#pragma once

#include "cbf/reader.h"
#include "cbfdump/picture.h"

namespace cbfdump {

// Rows have 16 cells or a multiple of that. Those without any character are left out; each of the
// others begins with its first code point, where the font can write that.
Picture DrawSheet(OrnMinRenderFont *font, const cbf::View &file, const cbf::FontFile &contents);

} // namespace cbfdump
