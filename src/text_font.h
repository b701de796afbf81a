// SPDX-License-Identifier: MIT
// A loaded font: its tables, its index, its glyph data, and the cache of the glyphs decoded so far.
#pragma once

#include "text_glyph_render.h"
#include "text_index.h"

struct OrnMinRenderFont {
    uint32_t headerWord; // from the file, not interpreted
    int32_t lineHeight;
    int32_t direction;
    orn::HuffLut *huffLuts[2]; // background runs, ink runs; null where a table could not be read
    orn::CodePointIndex index;
    uint8_t *glyphData;
    uint32_t glyphCount;   // entries of the glyph cache
    uint32_t buckets[256]; // chain heads by the code point's low byte: 1 + position, 0 when empty
    OrnMinRenderGlyph *glyphs;
    uint32_t glyphDataSize;
    uint32_t recordEnd;  // offsets below it leave room for a glyph's head
    uint32_t tails[256]; // the last entries of the chains: 1 + position
    uint32_t *places;    // 2^placeBits: a second way to the entries of a large cache, or null
    uint32_t placeBits;
};

namespace orn {

// The record of a resolved code point, or null when the font has none inside its glyph data.
inline const uint8_t *RecordOf(const OrnMinRenderFont *font, uint32_t codePoint) {
    if (font->index.denseSlots == 0)
        return nullptr;
    const uint32_t offset = OffsetOf(font->index, codePoint);
    return offset < font->recordEnd ? font->glyphData + offset : nullptr;
}

inline const uint8_t *FindRecord(const OrnMinRenderFont *font, uint32_t codePoint) {
    return RecordOf(font, ResolveCodePoint(font->index, codePoint));
}

// Where the head of a code point's chain does not stand for it: finds its entry further on, or
// makes one; null when the font has no such glyph or memory is short.
OrnMinRenderGlyph *FindOrDecode(OrnMinRenderFont *font, uint32_t codePoint);

// The cache entry of a code point, decoded on first use; null as for FindOrDecode. The entry may
// move when another one is added, its bitmaps don't.
inline OrnMinRenderGlyph *GetGlyph(OrnMinRenderFont *font, uint32_t codePoint) {
    const uint32_t c = ResolveCodePoint(font->index, codePoint);
    const uint32_t head = font->buckets[c % 256];
    if (head && font->glyphs[head - 1].codePoint == c)
        return &font->glyphs[head - 1];
    return FindOrDecode(font, c);
}

// Empties the cache.
void FlushGlyphCache(OrnMinRenderFont *font);

} // namespace orn
