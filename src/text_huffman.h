// SPDX-License-Identifier: MIT
// Huffman tables, four bits at a step: those of a glyph's runs and of the code-point index.
#pragma once

#include "text_reader.h"

namespace orn {

// Bits, most significant first. Beyond the last byte they read as 0.
struct BitReader {
    const uint8_t *bytes;
    uint64_t byteCount;
    uint64_t position; // of the next bit
};

constexpr uint16_t kChildSubtable = 0xFFFF;

// One step of a decoding walk, for one value of the next four bits.
struct HuffLutEntry {
    uint16_t bits;  // 0: no code; kChildSubtable: go on in a child; else what the code takes here
    uint16_t value; // the symbol, or the offset in entries from this one to the child's first
};

// A decoding table is an array of these; the first is the root.
struct HuffLut {
    HuffLutEntry entries[16];
};

// Reads a table at a file offset: codes in file order, canonical, lengths 1 to 32. Null when it
// can't be read in full, when the codes are not prefix-free, or when memory is short. Leaves the
// reader after the table. The caller frees the table.
HuffLut *LoadHuffTable(FontReader *reader, uint64_t offset);

// Decodes one symbol, its sign extended. Where no code fits, the symbol is 0 and no bits are taken
// but those of the levels passed.
int32_t WalkHuffLut(const HuffLut *lut, BitReader *reader);

} // namespace orn
