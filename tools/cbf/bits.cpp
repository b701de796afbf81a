// SPDX-License-Identifier: MIT
// Written bit by bit, since writing is never the bottleneck; read 32 at a time.
#include "cbf/bits.h"

namespace cbf {

void PutBits(BitWriter &writer, uint32_t bits, uint32_t count) {
    while (count-- > 0) {
        if (writer.bitCount % 8 == 0)
            writer.bytes.push_back(0);
        const uint32_t bit = bits >> count & 1;
        writer.bytes.back() |= static_cast<uint8_t>(bit << (7 - writer.bitCount % 8));
        ++writer.bitCount;
    }
}

uint32_t PeekWord(const BitReader &reader) {
    const uint64_t start = reader.ByteOffset();
    uint64_t bits = 0;
    for (uint64_t byte = start; byte < start + 5; ++byte)
        bits = bits << 8 | (byte < reader.end ? ByteAt(reader.file, byte) : 0);
    return static_cast<uint32_t>(bits >> (8 - reader.position % 8));
}

} // namespace cbf
