// SPDX-License-Identifier: MIT
// The index section: from code points to the places of their glyph records.
#pragma once

#include "cbf/bytes.h"

namespace cbf {

// A glyph's place in the index: how far its record lies after that of the glyph before; negative
// modulo 2^16 where it lies before it.
struct IndexSlot {
    uint32_t codePoint;
    uint16_t delta;
};

// The index section for slots in code-point order. Gaps are bridged by zeros where that is shorter,
// and start a new record elsewhere. The last slot ends the section; an empty list gives one slot
// without glyph, so that a reader finds the fallback glyph.
Bytes IndexBytes(const std::vector<IndexSlot> &slots);

} // namespace cbf
