// SPDX-License-Identifier: MIT
// Where glyph records lie in the glyph data, so that index and data are small together: identical
// glyphs share a record, and a record may begin in the last byte of another.
#pragma once

#include "cbf/bytes.h"

namespace cbf {

struct Record {
    uint32_t codePoint;
    Bytes bytes;
    uint8_t padding; // which bits of the last byte say nothing
};

struct Layout {
    Bytes glyphData;
    size_t records = 0; // stored: fewer than there are glyphs where these share one
    Bytes index;
};

// For the fallback glyph's record, which is the first, and those of the glyphs in code-point order.
Layout SmallestLayout(const std::vector<Record> &records);

} // namespace cbf
