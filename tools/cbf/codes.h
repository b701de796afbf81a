// SPDX-License-Identifier: MIT
// Canonical Huffman codes: made from statistics, as a table in the file, and to write with.
#pragma once

#include "cbf/bits.h"

#include <map>

namespace cbf {

struct Code {
    uint16_t symbol = 0;
    uint16_t length = 0;
    uint32_t bits = 0; // the low length bits, the first of them the most significant
};
using Counts = std::map<uint16_t, uint64_t>; // occurrences by symbol

// Sets the bits: codes of one length count up, a longer one continues from the value of the one
// before. Order and lengths are taken as they stand.
void AssignCanonicalCodes(std::vector<Code> &codes);

// Optimal codes of up to 32 bits, sorted by length and symbol.
std::vector<Code> MakeCodes(const Counts &counts);

// A table's form in the file.
Bytes TableBytes(const std::vector<Code> &codes);

// Codes to write with, by symbol.
using CodeBook = std::map<uint16_t, Code>;
CodeBook MakeCodeBook(const std::vector<Code> &codes);
void PutSymbol(BitWriter &writer, const CodeBook &book, uint16_t symbol); // must be in the book

} // namespace cbf
