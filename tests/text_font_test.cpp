// SPDX-License-Identifier: MIT
// Loading fonts that no converter would write, their code-point index, and the glyph cache: missing
// sections, odd and hostile indexes, records that lie outside the glyph data.
#include "font_exercise.h"
#include "font_files.h"
#include "text_font.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

using namespace orn;

namespace {

using cbf::Bytes;

// Deltas 0: "00", 5: "01", 7: "10", end mark: "110", -16: "111".
const Bytes kDeltas = Table({2, 2, 2, 3, 3}, {0, 5, 7, 0xFFFF, 0xFFF0});

FontPtr FontWithIndex(const Bytes &index, uint32_t dataBytes = 64) {
    FontFile file;
    file.index = index;
    file.glyphData.assign(dataBytes, 0);
    return Load(file.Bytes());
}

TEST(FontIndex, DecodesItsRecords) {
    const struct {
        uint32_t count;
        std::vector<IndexRecord> records;
        std::vector<uint32_t> words;
    } cases[] = {
        // clang-format off
        {4, {{0, "01 00 10 110"}}, {5, 0, 12, 0}},
        {4, {{0, "01 110"}, {2, "10 111"}}, {5, 0, 12, 0xFFFFFFFC}}, // 12 - 16, modulo 2^32
        {4, {{0, "01 110"}, {0, "10 01 10 01"}}, {7, 12, 19, 24}},   // the later one counts
        {4, {{2, "01 110"}, {0, "01 110"}}, {5, 0, 10, 0}},
        {4, {{0, "01 110"}, {9, ""}, {1, "01"}}, {5, 0, 0, 0}},      // length 0 ends the section,
        {4, {{0, "01 110"}, {4, "01"}, {1, "01"}}, {5, 0, 0, 0}},    // as does a slot past the end
        {4, {{0, "01 01 01 01"}, {0, "10"}}, {5, 10, 15, 20}},       // or filling the last slot
        {9, {{0, "01 01 01 01"}, {4, "10 110"}}, {5, 10, 15, 20, 27}}, // no end mark: all its bits
        {0, {{0, "01"}}, {}},
        // clang-format on
    };
    for (const auto &c : cases) {
        const FontPtr font = FontWithIndex(Index(c.count, kDeltas, c.records));
        ASSERT_NE(font, nullptr);
        ASSERT_NE(font->index.words, nullptr);
        EXPECT_EQ(font->index.words[0], c.count);
        for (size_t i = 0; i < c.words.size(); ++i)
            EXPECT_EQ(font->index.words[1 + i], c.words[i]) << "slot " << i << " of " << c.count;
    }
}

// A code that reaches past the record's bytes fills no slot; the next record is read. A walk that
// takes no bits would go on for ever and ends the section.
TEST(FontIndex, EndsWithTheBytesOfItsRecords) {
    const Bytes longCodes = Table({1, 3, 12}, {5, 0xFFFF, 9});
    FontPtr font = FontWithIndex(Index(6, longCodes, {{0, "0010 1001"}, {4, "0"}}));
    EXPECT_EQ(font->index.words[1 + 2], 0u) << "12 bits of a code, of which the record has few";
    EXPECT_EQ(font->index.words[1 + 4], 15u);
    font = FontWithIndex(Index(1u << 20, Table({1}, {0}), {{0, "1111"}, {5, "0"}}));
    EXPECT_EQ(font->index.words[1 + 5], 0u);
    font = FontWithIndex(Index(1u << 20, Table({}), {{0, "1111"}}));
    ASSERT_NE(font->index.words, nullptr);
}

// Font files of a few bytes that claim 2^32 - 1 of everything.
TEST(FontIndex, HostileCountsCostNeitherMemoryNorTime) {
    rusage before, after;
    getrusage(RUSAGE_SELF, &before);
    for (uint32_t count : {0x7FFFFFFFu, 0xFFFFFFFFu}) {
        const FontPtr font = FontWithIndex(
            Index(count, kDeltas, {{0, "01 110"}, {count - 1, "10"}, {count - 9, "01"}}));
        ASSERT_NE(font, nullptr);
        ASSERT_NE(font->index.words, nullptr);
        EXPECT_NE(GetGlyph(font.get(), 5), nullptr);
        EXPECT_EQ(GetGlyph(font.get(), count - 1)->record, font->glyphData + 12);
        EXPECT_EQ(GetGlyph(font.get(), count - 2)->record, font->glyphData);
    }
    FontFile file;
    file.glyphData.assign(64, 0);
    file.index = Index(4, kDeltas, {});
    cbf::PutWord(file.index, 0);
    cbf::PutWord(file.index, 0xFFFFFFFF); // a record of 2^32 - 1 bytes
    EXPECT_NE(Load(file.Bytes())->index.words, nullptr);
    file.dataSize = 0xFFFFFFFF;
    EXPECT_EQ(Load(file.Bytes()), nullptr);
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 64 * 1024) << "kilobytes";
}

TEST(FontIndex, RecordsOutsideTheDataAreSkippedByAll) {
    const auto source = SmallFont("13", 8);
    for (uint32_t offset = 0; offset < 6; ++offset) {
        FontFile file = source;
        const Bytes table = Table({1}, {int(offset)});
        file.index = Index(1, table, {{0, "0"}});
        const FontPtr font = Load(file.Bytes());
        const bool inside = offset <= 1; // nine bytes of data, eight of them the record's head
        EXPECT_EQ(GetGlyph(font.get(), 0) != nullptr, inside) << offset;
        OrnMinRenderPoint pen = {0, 0};
        OrnMinRenderRect rect;
        OrnMinRenderGetTextRect(nullptr, font.get(), "\n\t", &pen, 0, &rect);
        EXPECT_EQ(pen.x != 0 || rect.top != 0, inside) << offset;
        EXPECT_EQ(pen.y, 16);
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

TEST(HostileFonts, MissingSectionsStillLoad) {
    const auto source = SmallFont("13", 8);
    for (int missing = 0; missing < 3; ++missing) {
        Bytes bytes = source.Bytes();
        for (int i = 0; i < 4; ++i)
            bytes[size_t(12 + 4 * missing + i)] = 0xFE; // an offset past the end
        const FontPtr font = Load(bytes);
        ASSERT_NE(font, nullptr);
        EXPECT_EQ(missing == 2 ? (void *)font->index.words : (void *)font->huffLuts[missing],
                  nullptr);
        EXPECT_EQ(GetGlyph(font.get(), 'A') != nullptr, missing != 2);
        ExerciseFont(bytes);
    }
}

} // namespace
