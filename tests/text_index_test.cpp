// SPDX-License-Identifier: MIT
// The code-point index: its records as tables of what they fill, and indexes that are odd or
// hostile.
#include "font_files.h"
#include "text_font.h"

#include <gtest/gtest.h>
#include <sys/resource.h>

using namespace orn;

namespace {

// Deltas 0: "00", 5: "01", 7: "10", end mark: "110", -16: "111".
const cbf::Bytes kDeltas = Table({2, 2, 2, 3, 3}, {0, 5, 7, 0xFFFF, 0xFFF0});

FontPtr FontWithIndex(const cbf::Bytes &index) {
    FontFile file;
    file.index = index;
    file.glyphData.assign(64, 1);
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

// A walk that takes no bits stores 0 from there to the end, whatever was there, and nothing
// follows.
TEST(FontIndex, StuckWalksClearTheRest) {
    const cbf::Bytes gap = Table({2, 2, 3}, {7, 5, 0xFFFF}); // 5: "01", end mark: "100"; none: "11"
    const struct {
        std::vector<IndexRecord> records;
        std::vector<uint32_t> words;
    } cases[] = {
        {{{3, "01 100"}, {0, "01 11 01"}, {5, "01 100"}}, {5, 0, 0, 0, 0, 0}},
        {{{0, "01 01 01 01"}, {2, "11"}}, {5, 10, 0, 0, 0, 0}},
        {{{0, "01 100"}, {5, "11"}, {1, "01 100"}}, {5, 0, 0, 0, 0, 0}},
    };
    for (const auto &c : cases) {
        const FontPtr font = FontWithIndex(Index(6, gap, c.records));
        EXPECT_EQ(std::vector<uint32_t>(font->index.words + 1, font->index.words + 7), c.words);
    }
    const uint32_t far = 0x110004;
    const FontPtr font = FontWithIndex(Index(far + 9, gap,
                                             {{far + 5, "01 100"},
                                              {far + 1, "00 100"}, // a later one counts
                                              {far, "01 01 01 100"},
                                              {far + 2, "11"},
                                              {9, "01"}}));
    const uint32_t offsets[] = {5, 10, 0, 0, 0, 0};
    for (uint32_t i = 0; i < std::size(offsets); ++i)
        EXPECT_EQ(GetGlyph(font.get(), far + i)->record, font->glyphData + offsets[i]) << i;
    EXPECT_EQ(font->index.words[1 + 9], 0u);
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
    EXPECT_NE(FontWithIndex(Index(0xFFFFFFFF, Table({}), {{0, "1"}}))->index.words, nullptr);
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
    EXPECT_LT(after.ru_utime.tv_sec - before.ru_utime.tv_sec, 3);
}

} // namespace
