// CBF fonts and text: the font record, the Huffman tables of its runs and its index, and the glyph
// cache. text.cpp loads fonts and lays text out; text_glyph_render.cpp decodes glyphs and stamps
// them.
#pragma once

#include "min_render.h"

#include <stdio.h>
#include <string.h>

// ---- Reading a font file: one checked reader for everything that comes from it ----

struct FontReader {
    FILE *file;
    uint64_t length;   // of the file: no claim in it is believed beyond this
    uint64_t position; // of the next byte read
};

inline uint16_t LittleEndian16(const uint8_t *bytes) {
    return static_cast<uint16_t>(bytes[0] | bytes[1] << 8);
}

inline uint32_t LittleEndian32(const uint8_t *bytes) {
    return LittleEndian16(bytes) | static_cast<uint32_t>(LittleEndian16(bytes + 2)) << 16;
}

// ---- Bits, most significant first. Beyond the last byte they read as 0. ----

struct BitReader {
    const uint8_t *bytes;
    uint64_t byteCount;
    uint64_t position; // of the next bit
};

inline uint32_t ByteOrZero(const BitReader *reader, uint64_t index) {
    return index < reader->byteCount ? reader->bytes[index] : 0;
}

inline uint32_t PeekNibble(const BitReader *reader) {
    const uint64_t index = reader->position / 8;
    const uint32_t pair = ByteOrZero(reader, index) << 8 | ByteOrZero(reader, index + 1);
    return pair >> (12 - reader->position % 8) & 15;
}

// ---- Huffman tables ----

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

// Decodes one symbol. Where no code fits, the symbol is 0 and no bits are taken.
int32_t WalkHuffLut(const HuffLut *lut, BitReader *reader);

// ---- Fonts ----

// A slot of the code-point index past the dense part: rare, so kept in a sorted list.
struct FarSlot {
    uint32_t codePoint;
    uint32_t order;  // of appearance in the file: the last one for a code point counts
    uint32_t offset; // as a word of the index
};

struct OrnMinRenderFont {
    uint32_t headerWord; // from the file, not interpreted
    int32_t lineHeight;
    int32_t direction;
    HuffLut *huffLuts[2]; // background runs, ink runs; null where the table could not be read
    uint32_t *index;      // word 0: count; word 1 + c: offset of code point c's record, or 0
    uint8_t *glyphData;
    uint32_t glyphCount;   // entries of the glyph cache
    uint32_t buckets[256]; // chain heads by the code point's low byte: 1 + position, 0 when empty
    OrnMinRenderGlyph *glyphs;
    uint32_t glyphDataSize;
    uint32_t denseSlots; // words of the index after its count
    uint32_t recordEnd;  // offsets below it leave room for a glyph's head
    uint32_t farCount;   // slots of the index that are no words of it
    FarSlot *farSlots;
};

// ---- Glyph records ----

constexpr uint32_t kGlyphHeadBytes = 8;

inline OrnMinRenderGlyphBox UprightBox(const uint8_t *record) {
    OrnMinRenderGlyphBox box;
    memcpy(&box, record, sizeof box); // four signed bytes, as in the record
    return box;
}

inline int32_t GlyphAdvance(const uint8_t *record) {
    return static_cast<int16_t>(LittleEndian16(record + 4));
}

inline int32_t GlyphBitCount(const uint8_t *record) {
    return static_cast<int16_t>(LittleEndian16(record + 6));
}

// Turned by a quarter: rows and columns change places.
inline bool IsVertical(int32_t direction) {
    return direction == OrnMinRenderTextDirectionDown || direction == OrnMinRenderTextDirectionUp;
}

// Decodes the glyph whose record is set, as OrnMinRenderTextRenderCacheGlyph does; false when the
// memory for its fill was short.
bool RenderGlyph(const OrnMinRenderFont *font, OrnMinRenderGlyph *glyph);

// The cache entry of a code point, decoded on first use; null when the font has no such glyph or
// memory is short. The entry may move when another one is added, its bitmaps don't.
OrnMinRenderGlyph *GetGlyph(OrnMinRenderFont *font, uint32_t codePoint);
