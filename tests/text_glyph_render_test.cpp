// SPDX-License-Identifier: MIT
// Glyphs as bitmaps: coded runs by tables of what they draw, and stamping against a naive reference
// at every edge of a frame.
#include "font_files.h"
#include "frame.h"
#include "text_font.h"

#include <algorithm>

using namespace orn;

namespace {

std::vector<uint32_t> Words(const FontFile &file, int direction = 0) {
    const FontPtr font = Load(file.Bytes());
    OrnMinRenderSetFontDirection(font.get(), direction);
    const OrnMinRenderGlyph *glyph = GetGlyph(font.get(), 'A');
    if (!glyph || !glyph->bitmap)
        return {};
    return std::vector<uint32_t>(glyph->bitmap, glyph->bitmap + glyph->bitmapWords);
}

TEST(GlyphDecoding, FollowsTheCodedRuns) {
    using W = std::vector<uint32_t>;
    EXPECT_EQ(Words(SmallFont("13", 8), 0), (W{6, 1}));
    EXPECT_EQ(Words(SmallFont("13", 8), 1), (W{1, 2, 2}));
    EXPECT_EQ(Words(SmallFont("13", 8), 2), (W{1, 1, 2}));
    EXPECT_EQ(Words(SmallFont("13", 8), 3), (W{4, 3}));
    EXPECT_EQ(Words(SmallFont("01", 8)), (W{1, 0}));
    EXPECT_EQ(Words(SmallFont("0102", 16)), (W{1 | 2 | 4, 0}));
    EXPECT_EQ(Words(SmallFont("", 0)), (W{0, 0}));
    EXPECT_EQ(Words(SmallFont("", -5)), (W{0, 0}));
    EXPECT_EQ(Words(SmallFont("2", 4)), (W{4, 7})) << "what remains after background is ink";
    EXPECT_EQ(Words(SmallFont("099999", 24)), (W{7, 7})) << "more runs than pixels";
    EXPECT_EQ(Words(SmallFont("01", 30000)), (W{1, 0})) << "zeros past the data: runs of 0";
    EXPECT_EQ(Words(SmallFont("13", 8, -1, 2)), W{}) << "a negative size is an empty glyph";
}

// A walk that takes no bits is a run of 0, two in turn end the glyph. '?' is 1111, which no table
// has a code for.
TEST(GlyphDecoding, StuckWalksSwitchTheColour) {
    const cbf::Bytes digits = Table(std::vector<int>(10, 4)), none = Table({}),
                     one = Table({4}, {1});
    const struct {
        cbf::Bytes background, ink;
        std::string runs;
        std::vector<uint32_t> words;
    } cases[] = {
        // clang-format off
        {none, digits, "13", {7, 1}},    {none, digits, "06", {7, 7}},
        {digits, none, "13", {0, 6}},    {none, none, "13", {0, 0}},
        {one, digits, "0223", {6, 7}},   {digits, one, "1211", {0, 4}},
        {digits, digits, "12?3", {6, 0}}, {digits, digits, "1?33", {0, 0}},
        // clang-format on
    };
    for (const auto &c : cases) {
        FontFile file = SmallFont(c.runs, 4 * int(c.runs.size()));
        file.tables[0] = c.background;
        file.tables[1] = c.ink;
        EXPECT_EQ(Words(file), c.words) << "case " << &c - cases;
    }
}

TEST(Stamping, MatchesTheReferenceAtEveryEdge) {
    std::mt19937 random(31);
    for (int i = 0; i < 60000; ++i) {
        const auto pick = [&](int from, int to) {
            return from + static_cast<int>(random() % unsigned(to - from + 1));
        };
        const OrnMinRenderGlyphBox box = {int8_t(pick(-2, i % 4 ? 12 : 127)), int8_t(pick(-1, 9)),
                                          int8_t(pick(-128, 127)), int8_t(pick(-128, 127))};
        const int perRow = (std::max<int>(box.width, 0) + 31) / 32;
        std::vector<uint32_t> words(size_t(perRow * std::max<int>(box.height, 0)) + random() % 9);
        for (auto &word : words)
            word = uint32_t(random() & random());
        const auto count = uint32_t(i % 3 ? words.size() : random() % (words.size() + 1));
        const OrnMinRenderPoint pen = {pick(i % 4 ? -12 : -120, 20) - box.bearingX,
                                       pick(-9, 12) + box.bearingY};
        Frame drawn(13, 8, 1), expected(13, 8, 1);
        OrnMinRenderTextBitmap(&box,
                               std::vector<uint32_t>(words.begin(), words.begin() + count).data(),
                               count, &drawn.image, &pen, 0x1C8);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 13; ++x) {
                const int c = x - pen.x - box.bearingX, r = y - pen.y + box.bearingY;
                if (c < 0 || c >= box.width || r < 0 || r >= box.height)
                    continue;
                const auto word = unsigned(r * perRow + c / 32);
                if (word < count && words[word] >> c % 32 & 1)
                    expected.Y(x, y) = 0xC8;
            }
        ASSERT_TRUE(drawn == expected) << "case " << i << "\n"
                                       << drawn.Picture() << expected.Picture();
    }
}

} // namespace
