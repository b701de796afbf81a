// SPDX-License-Identifier: MIT
// Everything about a font file that the library refuses, skips or reads otherwise than it was
// meant.
#pragma once

#include "cbf/reader.h"

namespace cbf {

// What ReadFont found, and the faults of all glyphs: each record once, in the name of its first
// character.
Complaints CheckFont(const View &file, const FontFile &font);

} // namespace cbf
