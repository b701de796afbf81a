// SPDX-License-Identifier: MIT
// The font reader of the tools against the library, on sound files and on damaged ones: both read
// the same glyphs, also where no code fits, and what the library refuses the reader reports.
#include "cbf.h"
#include "cbf/check.h"
#include "cbf/glyph_reader.h"
#include "font_files.h"
#include "text_font.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>

using namespace orn;

namespace {

using cbf::Bytes;

Bytes SampleFile(uint32_t seed) {
    std::mt19937 random(seed);
    cbf::Font source;
    source.fallback = RandomGlyph(random, 9, 12);
    for (uint32_t c = 32; c < 60; ++c)
        source.glyphs[c + c / 50 * 500] = RandomGlyph(random, 12, 14);
    for (const uint32_t c : {70u, 71u, 72u, 560u}) // stored once, or twice for neighbours
        source.glyphs[c] = source.glyphs[40];
    return cbf::WriteFont(source).bytes;
}

void ExpectSameGlyphs(const Bytes &bytes, const cbf::FontFile &read, OrnMinRenderFont *font) {
    for (uint32_t c = 0; c < std::min(read.index.slots, 600u); ++c) {
        const uint32_t offset = cbf::FindOffset(read.index, c).value_or(0);
        const cbf::StoredGlyph record = cbf::ReadGlyph(bytes, read, offset);
        const cbf::Glyph &stored = record.glyph;
        const OrnMinRenderGlyph *glyph = GetGlyph(font, c);
        ASSERT_EQ(glyph != nullptr, record.whole) << c;
        if (!glyph)
            continue;
        ASSERT_EQ(glyph->record - font->glyphData, offset) << c;
        const int pitch = (stored.width + 31) / 32;
        for (int i = 0; glyph->bitmap && i < stored.width * stored.height; ++i) {
            const int x = i % stored.width, y = i / stored.width;
            ASSERT_EQ(glyph->bitmap[y * pitch + x / 32] >> x % 32 & 1, stored.pixels[i]) << c;
        }
    }
}

struct Verdicts {
    int refused = 0, faulty = 0, sound = 0;
};

void Compare(const Bytes &bytes, Verdicts *verdicts) {
    const cbf::FontFile read = cbf::ReadFont(bytes);
    const FontPtr font = Load(bytes);
    ASSERT_EQ(read.loads, font != nullptr);
    const bool sound = cbf::CheckFont(bytes, read).Empty();
    ASSERT_TRUE(font || !sound);
    ++(!font ? verdicts->refused : sound ? verdicts->sound : verdicts->faulty);
    if (!font)
        return;
    for (int colour = 0; colour < 2; ++colour)
        EXPECT_EQ(read.runTables[colour].usable, font->huffLuts[colour] != nullptr);
    EXPECT_EQ(read.index.deltas.usable, font->index.words != nullptr);
    if (read.index.deltas.usable)
        ExpectSameGlyphs(bytes, read, font.get());
}

TEST(FontReader, AgreesWithTheLibraryOnDamagedFiles) {
    Verdicts whole, damaged;
    std::vector<Bytes> samples;
    for (uint32_t seed = 0; seed < 20; ++seed)
        Compare(samples.emplace_back(SampleFile(seed)), &whole);
    for (uint32_t seed = 0; seed < 1000 && !HasFatalFailure(); ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        std::mt19937 random(seed);
        Bytes bytes = samples[seed % samples.size()];
        for (uint32_t changes = random() % 3; changes < 3; ++changes) {
            const size_t size = random() % 2 ? bytes.size() : 300; // half of them before the glyphs
            uint8_t &byte = bytes[random() % size];
            const int changed[] = {int(random() & 255), byte + 1, byte - 1, 0, 255};
            byte = uint8_t(changed[random() % 5]);
        }
        if (seed % 8 == 0)
            bytes.resize(random() % bytes.size());
        Compare(bytes, &damaged);
    }
    EXPECT_EQ(whole.sound, 20);
    EXPECT_GT(std::min({damaged.refused, damaged.faulty, damaged.sound}), 30);
}

TEST(FontReader, AgreesWithTheLibraryOnHostileFiles) {
    Verdicts verdicts;
    for (const auto &entry : std::filesystem::directory_iterator(ORN_FONT_CORPUS)) {
        SCOPED_TRACE(entry.path());
        std::ifstream file(entry.path(), std::ios::binary);
        Compare({std::istreambuf_iterator<char>(file), {}}, &verdicts);
    }
    EXPECT_GT(verdicts.faulty, 9);
}

// Draws the outlined letter A in all directions; whether ink lies where no glyph reaches.
bool OutlineLiesElsewhere(OrnMinRenderFont *font) {
    constexpr int kSide = 700, kPen = kSide / 2, kReach = 127 + 3;
    for (int32_t direction = 0; direction < 4; ++direction) {
        std::vector<uint8_t> luma(kSide * kSide);
        const OrnMinRenderImage image = {0, kSide, kSide, kSide, luma.data(), 0, nullptr};
        OrnMinRenderPoint pen = {kPen, kPen};
        OrnMinRenderSetFontDirection(font, direction);
        OrnMinRenderDrawOutlineTextY8(nullptr, &image, font, "A", &pen, 0, 1, 2);
        for (int i = 0; i < kSide * kSide; ++i)
            if (luma[i] && std::max(abs(i % kSide - kPen), abs(i / kSide - kPen)) > kReach)
                return true;
    }
    return false;
}

TEST(FontReader, NamesGlyphsWhoseOutlineIsDrawnElsewhere) {
    const int edges[] = {-127, -126, -125, -124, 0, 123, 124, 125, 126};
    int wrapped = 0;
    for (const int left : edges)
        for (const int bottom : edges) {
            cbf::Font source;
            source.glyphs['A'] = {1, 1, left, bottom + 1, 5, {1}};
            const Bytes bytes = cbf::WriteFont(source).bytes;
            const bool named = !cbf::CheckFont(bytes, cbf::ReadFont(bytes)).Empty();
            EXPECT_EQ(OutlineLiesElsewhere(Load(bytes).get()), named) << left << ' ' << bottom;
            wrapped += named;
        }
    EXPECT_EQ(wrapped, 9 * 9 - 5 * 5);
}

TEST(FontReader, CountsFaultsOfOneKindPastTheTwentieth) {
    FontFile file;
    std::vector<cbf::IndexSlot> slots;
    for (uint32_t c = 100; c < 100000; ++c)
        slots.push_back({c, 1}); // one byte further each, all but the first outside
    file.index = cbf::IndexBytes(slots);
    file.glyphData.resize(cbf::kGlyphHeadBytes + 1);
    const Bytes bytes = file.Bytes();
    const std::vector<std::string> lines = cbf::CheckFont(bytes, cbf::ReadFont(bytes)).Lines();
    ASSERT_EQ(lines.size(), 21u);
    EXPECT_NE(lines[0].find("U+0065: its record lies outside"), std::string::npos) << lines[0];
    EXPECT_EQ(lines[20], "and 99879 more glyph records outside the glyph data");
}

} // namespace
