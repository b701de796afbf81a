// SPDX-License-Identifier: MIT
// Glyph records inside and outside the glyph data, and the glyph cache.
#include "fence.h"
#include "font_files.h"
#include "text_font.h"

#include <algorithm>
#include <gtest/gtest.h>

using namespace orn;

namespace {

TEST(GlyphRecords, OutsideTheDataAreSkippedByAll) {
    const auto source = SmallFont("13", 8);
    for (uint32_t offset = 0; offset < 6; ++offset) {
        FontFile file = source;
        file.index = Index(200, Table({1}, {int(offset)}), {{'A', "0"}});
        const FontPtr font = Load(file.Bytes());
        const bool inside = offset <= 1; // nine bytes of data, eight of them the record's head
        EXPECT_EQ(GetGlyph(font.get(), 'A') != nullptr, inside) << offset;
        OrnMinRenderPoint pen = {0, 0};
        OrnMinRenderRect rect;
        OrnMinRenderGetTextRect(nullptr, font.get(), "\nA", &pen, 0, &rect);
        EXPECT_EQ(pen.x != 0 || rect.top != 0, inside) << offset;
        EXPECT_EQ(pen.y, 16);
    }
}

// What a caller's entry becomes; the record may stand anywhere.
std::vector<uint32_t> RenderRecord(const OrnMinRenderFont *font, const uint8_t *record) {
    OrnMinRenderGlyph glyph = {};
    glyph.record = record;
    glyph.bitmapWords = glyph.outlineWords = 9;
    OrnMinRenderTextRenderCacheGlyph(font, &glyph);
    const std::vector<uint32_t> words(glyph.bitmap, glyph.bitmap + glyph.bitmapWords);
    EXPECT_EQ(glyph.outlineWords, words.empty() ? 0 : words.size() + 5);
    free(glyph.bitmap);
    free(glyph.outline);
    return words;
}

// Decoded by its own length, in a font that holds less, and with no byte to read behind it.
TEST(GlyphRecords, OfTheCallersOwnAreTrusted) {
    static uint8_t below[16]; // in the program's own memory; the fence lies above the glyph data
    const Fenced memory(16);
    FontFile longCode = SmallFont("00", 8);
    longCode.tables[0] = Table({12}, {2}); // half of it past the coded byte
    const struct {
        FontFile file;
        std::vector<uint32_t> words;
    } cases[] = {{SmallFont("13", 8), {6, 1}},
                 {SmallFont("131", 9), {6, 5}},
                 {SmallFont("", 0), {0, 0}},
                 {SmallFont("", -5), {0, 0}},
                 {longCode, {4, 7}}};
    for (const auto &c : cases) {
        FontFile file = c.file;
        uint8_t *const record = memory.end - file.glyphData.size();
        std::copy(file.glyphData.begin(), file.glyphData.end(), record);
        std::copy(file.glyphData.begin(), file.glyphData.end(), below);
        file.glyphData.resize(2);
        const FontPtr font = Load(file.Bytes());
        EXPECT_EQ(RenderRecord(font.get(), record), c.words) << "case " << &c - cases;
        EXPECT_EQ(RenderRecord(font.get(), below), c.words) << "case " << &c - cases;
    }
}

TEST(GlyphRecords, CutByTheDataAreEmpty) {
    for (const uint32_t size : {9, 8, 4}) {
        FontFile file = SmallFont("13", 8);
        file.glyphData.resize(size);
        const FontPtr font = Load(file.Bytes());
        EXPECT_EQ(GetGlyph(font.get(), 0) != nullptr, size >= 8);
        const std::vector<uint32_t> whole[] = {{}, {0, 0}, {6, 1}};
        EXPECT_EQ(RenderRecord(font.get(), font->glyphData), whole[size < 8 ? 0 : size - 7]);
        EXPECT_TRUE(RenderRecord(font.get(), font->glyphData + 2).empty());
        EXPECT_TRUE(RenderRecord(font.get(), font->glyphData + size - 1).empty());
    }
}

TEST(GlyphCache, KeepsOneEntryACodePoint) {
    cbf::Font source;
    source.fallback = {1, 1, 0, 1, 2, {1}};
    for (const uint32_t c : {65u, 321u, 577u})
        source.glyphs[c] = {1, 1, 0, 1, 3, {1}};
    const FontPtr font = Load(cbf::WriteFont(source).bytes);
    const uint32_t order[] = {321, 65, 577, 321, 65, 578, 0, 577, 66};
    const uint32_t counts[] = {1, 2, 3, 3, 3, 4, 4, 4, 5}; // 578 lies outside and is served as 0
    for (size_t i = 0; i < std::size(order); ++i) {
        const auto *glyph = GetGlyph(font.get(), order[i]);
        EXPECT_EQ(glyph->codePoint, order[i] == 578 ? 0 : order[i]);
        EXPECT_EQ(font->glyphCount, counts[i]) << order[i];
        const std::vector<uint32_t> outline(glyph->outline, glyph->outline + glyph->outlineWords);
        EXPECT_EQ(outline, (std::vector<uint32_t>{0x3E, 0x3E, 0x36, 0x3E, 0x3E, 0}));
    }
    OrnMinRenderSetFontDirection(font.get(), 0);
    EXPECT_EQ(font->glyphCount, 5u) << "the direction it has";
    OrnMinRenderSetFontDirection(font.get(), 7);
    EXPECT_EQ(font->glyphCount, 0u);
    EXPECT_NE(GetGlyph(font.get(), 65), nullptr);
}

// As many as make a second way to them worth while, all in one chain.
TEST(GlyphCache, FindsTheEntriesOfLongChains) {
    FontFile file;
    file.glyphData.assign(64, 0);
    file.index = Index(0x7FFFFFFF, Table({1}, {0}), {});
    const FontPtr font = Load(file.Bytes());
    constexpr uint32_t kEntries = 40000;
    for (int round = 0; round < 2; ++round)
        for (uint32_t i = 0; i < kEntries; ++i)
            ASSERT_EQ(GetGlyph(font.get(), 256 * i + 7)->codePoint, 256 * i + 7);
    ASSERT_EQ(font->glyphCount, kEntries);
    uint32_t link = font->buckets[7];
    for (uint32_t i = 0; i < kEntries; link = font->glyphs[link - 1].next, ++i)
        ASSERT_EQ(link, i + 1) << "chains are in the order of creation";
    EXPECT_EQ(link, 0u);
    OrnMinRenderSetFontDirection(font.get(), 1);
    EXPECT_EQ(GetGlyph(font.get(), 263), font->glyphs);
}

} // namespace
