// SPDX-License-Identifier: MIT
// Codes follow from their lengths alone, so a table in the file is a list of lengths.
#include "cbf/codes.h"

#include "cbf.h"
#include "cbf/code_lengths.h"

namespace cbf {

void AssignCanonicalCodes(std::vector<Code> &codes) {
    uint64_t next = 0;
    uint16_t previousLength = 0;
    for (Code &code : codes) {
        next <<= (code.length - previousLength) & 63; // lengths need not be sorted
        code.bits = static_cast<uint32_t>(next++);
        previousLength = code.length;
    }
}

std::vector<Code> MakeCodes(const Counts &counts) {
    std::vector<Code> codes = CodeLengths(counts, kMaxCodeBits);
    AssignCanonicalCodes(codes);
    return codes;
}

Bytes TableBytes(const std::vector<Code> &codes) {
    Bytes bytes;
    PutWord(bytes, static_cast<uint32_t>(codes.size()));
    for (const Code &code : codes) {
        PutHalf(bytes, code.symbol);
        PutHalf(bytes, code.length);
    }
    return bytes;
}

CodeBook MakeCodeBook(const std::vector<Code> &codes) {
    CodeBook book;
    for (const Code &code : codes)
        book[code.symbol] = code;
    return book;
}

void PutSymbol(BitWriter &writer, const CodeBook &book, uint16_t symbol) {
    const Code &code = book.at(symbol);
    PutBits(writer, code.bits, code.length);
}

} // namespace cbf
