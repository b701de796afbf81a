// SPDX-License-Identifier: MIT
// Loading and releasing a font, and its glyph cache. Glyphs stay coded until they are first drawn.
#include "text_font.h"

#include "grow.h"

#include <stdlib.h>

using namespace orn;

// ---- Loading ----

struct CbfHeader {
    uint32_t headerWord;
    int32_t lineHeight;
    uint32_t glyphDataSize;
    uint32_t tableOffsets[2]; // background, ink
    uint32_t indexOffset;
    uint32_t glyphDataOffset;
};

static bool ReadHeader(FontReader *reader, CbfHeader *header) {
    uint8_t bytes[cbf::kHeaderBytes];
    if (!Read(reader, bytes, sizeof bytes))
        return false;
    const auto wordAt = [&](uint32_t offset) { return LittleEndian32(bytes + offset); };
    *header = {
        wordAt(cbf::kHeaderWordAt), static_cast<int32_t>(wordAt(cbf::kLineHeightAt)),
        wordAt(cbf::kDataSizeAt),   {wordAt(cbf::kBackgroundTableAt), wordAt(cbf::kInkTableAt)},
        wordAt(cbf::kIndexAt),      wordAt(cbf::kDataAt)};
    return true;
}

// Only the glyph data is not optional: a font whose tables or index can't be read draws nothing, or
// blank glyphs.
static bool LoadSections(FontReader *reader, OrnMinRenderFont *font) {
    CbfHeader header;
    if (!ReadHeader(reader, &header))
        return false;
    const uint64_t dataEnd = uint64_t{header.glyphDataOffset} + header.glyphDataSize;
    if (header.glyphDataSize == 0 || dataEnd > reader->length)
        return false;
    font->headerWord = header.headerWord;
    font->lineHeight = header.lineHeight;
    font->glyphDataSize = header.glyphDataSize;
    font->recordEnd =
        static_cast<uint32_t>(Max(0, int64_t{header.glyphDataSize} - cbf::kGlyphHeadBytes + 1));
    font->glyphData = static_cast<uint8_t *>(malloc(header.glyphDataSize));
    if (!font->glyphData)
        return false;
    for (int i = 0; i < 2; ++i)
        font->huffLuts[i] = LoadHuffTable(reader, header.tableOffsets[i]);
    LoadIndex(&font->index, reader, header.indexOffset);
    return SeekTo(reader, header.glyphDataOffset) &&
           Read(reader, font->glyphData, header.glyphDataSize);
}

OrnMinRenderFont *OrnMinRenderLoadCbfFont(const char *path) {
    FontReader reader;
    if (!path || !OpenReader(&reader, path))
        return nullptr;
    auto *font = static_cast<OrnMinRenderFont *>(calloc(1, sizeof(OrnMinRenderFont)));
    if (font && !LoadSections(&reader, font)) {
        OrnMinRenderDestroyFont(font);
        font = nullptr;
    }
    fclose(reader.file);
    return font;
}

void OrnMinRenderDestroyFont(OrnMinRenderFont *font) {
    if (!font)
        return;
    FlushGlyphCache(font);
    free(font->huffLuts[0]);
    free(font->huffLuts[1]);
    FreeIndex(&font->index);
    free(font->glyphData);
    free(font);
}

// ---- Decoding ----

static bool IsInGlyphData(const OrnMinRenderFont *font, const uint8_t *record) {
    const auto first = reinterpret_cast<uintptr_t>(font->glyphData);
    const auto address = reinterpret_cast<uintptr_t>(record);
    return address >= first && address - first < font->glyphDataSize;
}

// A record in the glyph data is bounded by it.
static GlyphCoding CodingOf(const OrnMinRenderFont *font) {
    return {font->huffLuts, font->direction, font->glyphData + font->glyphDataSize,
            kernels::Best()};
}

// One of the caller's own is trusted: it has all the bytes that it speaks of.
void OrnMinRenderTextRenderCacheGlyph(const OrnMinRenderFont *font, OrnMinRenderGlyph *glyph) {
    if (!font || !glyph || !glyph->record)
        return;
    GlyphCoding coding = CodingOf(font);
    if (!IsInGlyphData(font, glyph->record))
        coding.end = glyph->record + cbf::kGlyphHeadBytes + (GlyphBitCount(glyph->record) + 7) / 8;
    RenderGlyph(coding, glyph);
}

// ---- The glyph cache ----
//
// Entries of code points with one low byte are a chain, in the order of their creation. Chains of a
// large cache may be long: a text of 40,000 code points that lie 256 apart has but one. So from
// kLargeCache entries on a table leads to them as well, by open addressing, at most half full. A
// place is 1 + the position of an entry, or 0.

constexpr uint32_t kLargeCache = 1024; // powers of two
constexpr uint32_t kMaxPlaced = 1u << 28;

static uint32_t FirstPlace(const OrnMinRenderFont *font, uint32_t codePoint) {
    constexpr uint32_t kGolden = 2654435769; // 2^32 divided by the golden ratio: spreads neighbours
    return codePoint * kGolden >> (32 - font->placeBits);
}

static uint32_t NextPlace(const OrnMinRenderFont *font, uint32_t place) {
    return (place + 1) & ((1u << font->placeBits) - 1);
}

static void AddPlace(OrnMinRenderFont *font, uint32_t position) {
    uint32_t place = FirstPlace(font, font->glyphs[position].codePoint);
    while (font->places[place])
        place = NextPlace(font, place);
    font->places[place] = position + 1;
}

// Makes the table anew for a cache that has doubled. Without the memory for it the chains alone
// serve, slowly, until the next time.
static void RebuildPlaces(OrnMinRenderFont *font) {
    free(font->places);
    font->placeBits = 33 - static_cast<uint32_t>(__builtin_clz(font->glyphCount));
    font->places = static_cast<uint32_t *>(calloc(size_t{1} << font->placeBits, sizeof(uint32_t)));
    for (uint32_t i = 0; font->places && i < font->glyphCount; ++i)
        AddPlace(font, i);
}

static uint32_t FindInPlaces(const OrnMinRenderFont *font, uint32_t codePoint) {
    uint32_t place = FirstPlace(font, codePoint);
    while (font->places[place] && font->glyphs[font->places[place] - 1].codePoint != codePoint)
        place = NextPlace(font, place);
    return font->places[place];
}

static uint32_t FindInChain(const OrnMinRenderFont *font, uint32_t codePoint) {
    uint32_t link = font->buckets[codePoint % 256];
    while (link && font->glyphs[link - 1].codePoint != codePoint)
        link = font->glyphs[link - 1].next;
    return link;
}

// Adds a decoded entry at the end of its chain.
static OrnMinRenderGlyph *AddToCache(OrnMinRenderFont *font, const OrnMinRenderGlyph &glyph) {
    const uint32_t position = font->glyphCount;
    if (!MakeRoom(&font->glyphs, position))
        return nullptr;
    font->glyphs[position] = glyph;
    ++font->glyphCount;
    uint32_t *tail = &font->tails[glyph.codePoint % 256];
    (*tail ? font->glyphs[*tail - 1].next : font->buckets[glyph.codePoint % 256]) = position + 1;
    *tail = position + 1;
    const uint32_t count = font->glyphCount;
    if (count >= kLargeCache && count <= kMaxPlaced && (count & (count - 1)) == 0)
        RebuildPlaces(font);
    else if (font->places)
        AddPlace(font, position);
    return &font->glyphs[position];
}

// Decoded first and then added, so that nothing half-made ever enters the cache.
static OrnMinRenderGlyph *DecodeIntoCache(OrnMinRenderFont *font, uint32_t codePoint) {
    OrnMinRenderGlyph glyph = {};
    glyph.codePoint = codePoint;
    glyph.record = RecordOf(font, codePoint);
    if (!glyph.record || !RenderGlyph(CodingOf(font), &glyph))
        return nullptr;
    OrnMinRenderGlyph *entry = AddToCache(font, glyph);
    if (!entry) {
        free(glyph.bitmap);
        free(glyph.outline);
    }
    return entry;
}

OrnMinRenderGlyph *orn::FindOrDecode(OrnMinRenderFont *font, uint32_t codePoint) {
    const uint32_t link =
        font->places ? FindInPlaces(font, codePoint) : FindInChain(font, codePoint);
    return link ? &font->glyphs[link - 1] : DecodeIntoCache(font, codePoint);
}

void orn::FlushGlyphCache(OrnMinRenderFont *font) {
    for (uint32_t i = 0; i < font->glyphCount; ++i) {
        free(font->glyphs[i].bitmap);
        free(font->glyphs[i].outline);
    }
    free(font->glyphs);
    free(font->places);
    font->glyphs = nullptr;
    font->places = nullptr;
    font->glyphCount = 0;
    memset(font->buckets, 0, sizeof font->buckets);
    memset(font->tails, 0, sizeof font->tails);
}
