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

// Adds a decoded entry at the end of its chain.
static OrnMinRenderGlyph *AddToCache(OrnMinRenderFont *font, const OrnMinRenderGlyph *glyph) {
    const uint32_t count = font->glyphCount;
    if (!MakeRoom(&font->glyphs, count))
        return nullptr;
    uint32_t *link = &font->buckets[glyph->codePoint % 256];
    while (*link)
        link = &font->glyphs[*link - 1].next;
    *link = ++font->glyphCount;
    font->glyphs[count] = *glyph;
    return &font->glyphs[count];
}

// Decoded first and then added, so that nothing half-made ever enters the cache.
OrnMinRenderGlyph *orn::DecodeIntoCache(OrnMinRenderFont *font, uint32_t codePoint) {
    OrnMinRenderGlyph glyph = {};
    glyph.codePoint = codePoint;
    glyph.record = RecordOf(font, codePoint);
    if (!glyph.record || !RenderGlyph(CodingOf(font), &glyph))
        return nullptr;
    OrnMinRenderGlyph *entry = AddToCache(font, &glyph);
    if (!entry) {
        free(glyph.bitmap);
        free(glyph.outline);
    }
    return entry;
}

void orn::FlushGlyphCache(OrnMinRenderFont *font) {
    for (uint32_t i = 0; i < font->glyphCount; ++i) {
        free(font->glyphs[i].bitmap);
        free(font->glyphs[i].outline);
    }
    free(font->glyphs);
    font->glyphs = nullptr;
    font->glyphCount = 0;
    memset(font->buckets, 0, sizeof font->buckets);
}
