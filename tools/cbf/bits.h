// SPDX-License-Identifier: MIT
// Bits in the bytes of a file, from the most significant one of each byte on.
#pragma once

#include "cbf/bytes.h"

namespace cbf {

// Appends bits; the last byte is padded with zeros.
struct BitWriter {
    Bytes bytes;
    size_t bitCount = 0;
};
void PutBits(BitWriter &writer, uint32_t bits, uint32_t count); // the low count bits, 0..32

// Bits of a part of a file. Those past its end are 0.
struct BitReader {
    View file;
    uint64_t first; // byte
    uint64_t end;
    uint64_t position; // bits from the first byte on

    uint64_t ByteOffset() const { // of the byte that the next bit is in
        return first + position / 8;
    }
};
uint32_t PeekWord(const BitReader &reader); // the next 32 bits

} // namespace cbf
