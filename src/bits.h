// SPDX-License-Identifier: MIT
// Rows of bits in 32-bit words, the least significant bit leftmost: glyph bitmaps, and the masks
// that samples are painted through.
#pragma once

#include <stdint.h>

namespace orn {

constexpr int32_t kWordBits = 32;

inline int32_t WordsPerRow(int32_t columns) {
    return (columns + kWordBits - 1) / kWordBits;
}

// Bits first..end - 1 of a word, both in 0..32, first < end.
inline uint32_t BitRange(int32_t first, int32_t end) {
    return (0xFFFFFFFFu << first) & (0xFFFFFFFFu >> (kWordBits - end));
}

// Sets bits first..end - 1 of a row.
inline void SetBits(uint32_t *row, int32_t first, int32_t end) {
    for (int32_t i = first; i < end;) {
        const int32_t wordEnd = (i / kWordBits + 1) * kWordBits;
        const int32_t stop = end < wordEnd ? end : wordEnd;
        row[i / kWordBits] |= BitRange(i % kWordBits, stop - (wordEnd - kWordBits));
        i = stop;
    }
}

} // namespace orn
