// SPDX-License-Identifier: MIT
// A font's code-point index: which glyph record serves a code point.
#pragma once

#include "text_reader.h"

namespace orn {

// A slot past the dense part: rare, so kept in a sorted list.
struct FarSlot {
    uint32_t codePoint;
    uint32_t order;  // of appearance in the file: the last one for a code point counts
    uint32_t offset; // as a word of the dense part
};

// All zero: an index without glyphs.
struct CodePointIndex {
    uint32_t *words; // word 0: count of slots; word 1 + c: offset of code point c's record, or 0
    uint32_t denseSlots; // words after the count; the slots beyond them are far ones
    uint32_t farCount;
    FarSlot *farSlots; // by code point; those that are missing have offset 0
};

// Fills a cleared index from the section at a file offset. On failure it stays empty, or holds the
// slots read so far. FreeIndex releases it.
void LoadIndex(CodePointIndex *index, FontReader *reader, uint32_t offset);
void FreeIndex(CodePointIndex *index);

// The far sides of the two that follow.
uint32_t ResolveFarCodePoint(const CodePointIndex &index, uint32_t codePoint);
uint32_t FindFarOffset(const CodePointIndex &index, uint32_t codePoint);

// Code points outside the index are served by code point 0.
inline uint32_t ResolveCodePoint(const CodePointIndex &index, uint32_t codePoint) {
    return codePoint < index.denseSlots ? codePoint : ResolveFarCodePoint(index, codePoint);
}

// The offset of a resolved code point's record in the glyph data; the index must have slots.
inline uint32_t OffsetOf(const CodePointIndex &index, uint32_t codePoint) {
    return codePoint < index.denseSlots ? index.words[1 + codePoint]
                                        : FindFarOffset(index, codePoint);
}

} // namespace orn
