// SPDX-License-Identifier: MIT
// A glyph as its record says, and what is wrong with that.
#pragma once

#include "cbf/font.h"
#include "cbf/reader.h"

#include <functional>

namespace cbf {

struct StoredGlyph {
    bool whole = false; // false: the record's head lies outside the glyph data
    Glyph glyph;
    size_t codedBytes = 0; // after the head
    size_t paddingBits = 0;
    size_t runs = 0;
    Complaints complaints;
};

StoredGlyph ReadGlyph(const View &file, const FontFile &font, uint32_t recordOffset);

// Reads each record once, in the name of the first character that has it: none for the fallback
// glyph, which comes first. Nothing of a font that doesn't load.
void ForEachRecord(
    const View &file, const FontFile &font,
    const std::function<void(std::optional<uint32_t> codePoint, const StoredGlyph &)> &use);

} // namespace cbf
