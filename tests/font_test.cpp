// Fonts that no converter would write: odd section orders, broken tables and indexes, hostile
// counts. The Huffman builder is checked by itself over all short length vectors.
#include "font_files.h"
#include "frame.h"
#include "text.h"

#include <algorithm>
#include <sys/resource.h>

// All that is done with fonts.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

namespace {

using cbf::Bytes;
using HuffLutPtr = std::unique_ptr<HuffLut, decltype(&free)>;

HuffLutPtr LoadTable(const Bytes &bytes) {
    FontReader reader = {fmemopen(const_cast<uint8_t *>(bytes.data()), bytes.size(), "rb"),
                         bytes.size(), 0};
    HuffLutPtr table(LoadHuffTable(&reader, 0), free);
    fclose(reader.file);
    return table;
}

std::vector<int> Entry(const HuffLut *table, int index) {
    const HuffLutEntry &entry = table[index / 16].entries[index % 16];
    return {entry.bits, entry.value};
}

// ---- Huffman tables ----

// Canonical codes as bit strings, by the rule that defines them; empty when a length is illegal.
std::vector<std::string> CodeStrings(const std::vector<int> &lengths) {
    std::vector<std::string> codes;
    uint32_t code = 0xFFFFFFFF;
    int previous = 0;
    for (const int length : lengths) {
        if (length < 1 || length > 32)
            return {};
        code = (code + 1) << ((length - previous) & 31);
        previous = length;
        std::string bits;
        for (int i = length - 1; i >= 0; --i)
            bits += code >> i & 1 ? '1' : '0';
        codes.push_back(bits);
    }
    return codes;
}

bool ArePrefixFree(const std::vector<std::string> &codes) {
    for (size_t i = 0; i < codes.size(); ++i)
        for (size_t j = 0; j < codes.size(); ++j)
            if (i != j && codes[j].compare(0, codes[i].size(), codes[i]) == 0)
                return false;
    return true;
}

// The code that the next bits spell, zeros following; -1 when none does.
int Match(const std::vector<std::string> &codes, std::string bits) {
    bits += std::string(32, '0');
    for (size_t i = 0; i < codes.size(); ++i)
        if (bits.compare(0, codes[i].size(), codes[i]) == 0)
            return static_cast<int>(i);
    return -1;
}

void CheckTable(const std::vector<int> &lengths) {
    const auto codes = CodeStrings(lengths);
    const bool legal = codes.size() == lengths.size() && ArePrefixFree(codes);
    std::vector<int> symbols;
    for (size_t i = 0; i < lengths.size(); ++i)
        symbols.push_back(int(i) + 1);
    const HuffLutPtr table = LoadTable(Table(lengths, symbols));
    ASSERT_EQ(table != nullptr, legal);
    for (size_t i = 0; legal && i < codes.size(); ++i) { // each code by itself, however long
        cbf::BitWriter writer;
        for (const char bit : codes[i])
            cbf::PutBits(writer, bit == '1', 1);
        BitReader reader = {writer.bytes.data(), writer.bytes.size(), 0};
        ASSERT_EQ(WalkHuffLut(table.get(), &reader), symbols[i]);
        ASSERT_EQ(reader.position, codes[i].size());
    }
    for (int input = 0; legal && input < 256; ++input) {
        std::string bits;
        for (int i = 7; i >= 0; --i)
            bits += input >> i & 1 ? '1' : '0';
        const auto byte = static_cast<uint8_t>(input);
        BitReader reader = {&byte, 1, 0};
        const int symbol = WalkHuffLut(table.get(), &reader);
        const int code = Match(codes, bits);
        if (code >= 0) {
            ASSERT_EQ(symbol, code + 1) << bits;
            ASSERT_EQ(reader.position, codes[size_t(code)].size()) << bits;
        } else if (symbol == 0) {
            // No progress, but for the child tables on the way to where no code passes.
            ASSERT_EQ(reader.position % 4, 0u) << bits;
        } else {
            // A code alone under its four bits is taken without a look at the bits that follow.
            ASSERT_EQ(codes[size_t(symbol - 1)].compare(0, 4, bits, 0, 4), 0) << bits;
        }
    }
}

TEST(HuffmanTables, AcceptExactlyPrefixFreeLengths) {
    const auto check = [](const Ints &v) { CheckTable(std::vector<int>(v.begin(), v.end())); };
    for (size_t count = 0; count <= 5; ++count)
        ForAll(std::vector<Ints>(count, Range(0, 8)), check);
    ForAll(std::vector<Ints>(3, {-1, 1, 9, 31, 32, 33}), check);
    Ints longest = Range(1, 32);
    longest.push_back(32);
    for (const auto &lengths :
         {longest, {2, 2, 3, 3, 3, 3, 3}, {4, 4, 4, 4, 5, 5, 9, 13, 32, 32}, {32}, {1, 32}})
        check(lengths);
}

TEST(HuffmanTables, AreLaidOutInPreOrder) {
    std::vector<int> lengths(17, 5);
    lengths[0] = 1;
    const HuffLutPtr table = LoadTable(Table(lengths));
    const int offsets[] = {8, 23, 38, 53, 68, 83, 98, 113};
    for (int i = 0; i < 8; ++i) {
        EXPECT_EQ(Entry(table.get(), i), (std::vector<int>{1, 0}));
        EXPECT_EQ(Entry(table.get(), 8 + i), (std::vector<int>{0xFFFF, offsets[i]}));
        EXPECT_EQ(Entry(table.get(), 16 * (i + 1)), (std::vector<int>{1, 2 * i + 1}));
        EXPECT_EQ(Entry(table.get(), 16 * (i + 1) + 15), (std::vector<int>{1, 2 * i + 2}));
    }
}

// The codes under the first four bits 0000 take so many subtables that the child of 0001 lies just
// within reach, at 32767 entries from its parent; a subtable more, and it is out of reach.
TEST(HuffmanTables, ReachChildrenUpTo32767EntriesAway) {
    for (const size_t leaves : {2, 1}) { // codes of 16 bits, each instead of a subtable
        std::vector<int> lengths(8, 8);
        lengths.resize(16, 12);
        lengths.resize(16 + leaves, 16);
        lengths.resize(lengths.size() + 30720 - 16 * leaves + 2, 20);
        const HuffLutPtr table = LoadTable(Table(lengths));
        ASSERT_EQ(table != nullptr, leaves == 2);
        const uint8_t bytes[] = {0x10, 0, 0};
        BitReader reader = {bytes, sizeof bytes, 0};
        if (table) {
            EXPECT_EQ(WalkHuffLut(table.get(), &reader), int(lengths.size()) - 2);
        }
    }
}

TEST(HuffmanTables, RefuseWhatIsNotThere) {
    Bytes bytes = Table({1, 2, 2});
    bytes.pop_back();
    EXPECT_EQ(LoadTable(bytes), nullptr);
    bytes = Table({1, 2, 2});
    for (int i = 0; i < 4; ++i)
        bytes[size_t(i)] = 0xFF; // 2^32 - 1 entries
    EXPECT_EQ(LoadTable(bytes), nullptr);
}

// ---- The index ----

struct IndexRecord {
    uint32_t first;
    std::string bits;
};

Bytes Index(uint32_t count, const Bytes &table, const std::vector<IndexRecord> &records) {
    Bytes bytes;
    cbf::PutWord(bytes, count);
    bytes.insert(bytes.end(), table.begin(), table.end());
    for (const auto &record : records) {
        cbf::BitWriter writer;
        for (const char bit : record.bits)
            if (bit != ' ')
                cbf::PutBits(writer, bit == '1', 1);
        cbf::PutWord(bytes, record.first);
        cbf::PutWord(bytes, uint32_t(writer.bytes.size()));
        bytes.insert(bytes.end(), writer.bytes.begin(), writer.bytes.end());
    }
    return bytes;
}

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
        ASSERT_NE(font->index, nullptr);
        EXPECT_EQ(font->index[0], c.count);
        for (size_t i = 0; i < c.words.size(); ++i)
            EXPECT_EQ(font->index[1 + i], c.words[i]) << "slot " << i << " of " << c.count;
    }
}

// A code that reaches past the record's bytes fills no slot; the next record is read. A walk that
// takes no bits would go on for ever and ends the section.
TEST(FontIndex, EndsWithTheBytesOfItsRecords) {
    const Bytes longCodes = Table({1, 3, 12}, {5, 0xFFFF, 9});
    FontPtr font = FontWithIndex(Index(6, longCodes, {{0, "0010 1001"}, {4, "0"}}));
    EXPECT_EQ(font->index[1 + 2], 0u) << "12 bits of a code, of which the record has few";
    EXPECT_EQ(font->index[1 + 4], 15u);
    font = FontWithIndex(Index(1u << 20, Table({1}, {0}), {{0, "1111"}, {5, "0"}}));
    EXPECT_EQ(font->index[1 + 5], 0u);
    font = FontWithIndex(Index(1u << 20, Table({}), {{0, "1111"}}));
    ASSERT_NE(font->index, nullptr);
}

// Font files of a few bytes that claim 2^32 - 1 of everything.
TEST(FontIndex, HostileCountsCostNeitherMemoryNorTime) {
    rusage before, after;
    getrusage(RUSAGE_SELF, &before);
    for (uint32_t count : {0x7FFFFFFFu, 0xFFFFFFFFu}) {
        const FontPtr font = FontWithIndex(
            Index(count, kDeltas, {{0, "01 110"}, {count - 1, "10"}, {count - 9, "01"}}));
        ASSERT_NE(font, nullptr);
        ASSERT_NE(font->index, nullptr);
        EXPECT_NE(GetGlyph(font.get(), 5), nullptr);
        EXPECT_EQ(GetGlyph(font.get(), count - 1)->record, font->glyphData + 12);
        EXPECT_EQ(GetGlyph(font.get(), count - 2)->record, font->glyphData);
    }
    FontFile file;
    file.glyphData.assign(64, 0);
    file.index = Index(4, kDeltas, {});
    cbf::PutWord(file.index, 0);
    cbf::PutWord(file.index, 0xFFFFFFFF); // a record of 2^32 - 1 bytes
    EXPECT_NE(Load(file.Bytes())->index, nullptr);
    file.dataSize = 0xFFFFFFFF;
    EXPECT_EQ(Load(file.Bytes()), nullptr);
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 64 * 1024) << "kilobytes";
}

// ---- Whole files ----

// A glyph 3 x 2 with the given runs, in tables of one-digit run lengths of four bits each.
FontFile SmallFont(const std::string &runs, int bitCount, int width = 3, int height = 2) {
    FontFile file;
    const Bytes digits = Table(std::vector<int>(10, 4));
    file.tables[0] = file.tables[1] = digits;
    file.index = Index(1, Table({1}, {0}), {{0, "0"}});
    cbf::BitWriter writer;
    for (const char run : runs)
        cbf::PutBits(writer, uint32_t(run - '0'), 4);
    const cbf::Glyph glyph = {width, height, 1, 2, 4, {}};
    file.glyphData = cbf::RecordBytes(glyph, writer);
    file.glyphData[6] = uint8_t(bitCount);
    file.glyphData[7] = uint8_t(bitCount >> 8);
    return file;
}

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

TEST(GlyphDecoding, MissingTablesAndStuckWalksLeaveBackground) {
    FontFile noInk = SmallFont("13", 8);
    noInk.tables[1].clear(); // its offset is now that of the index: 1 entry, of length 0
    EXPECT_EQ(Words(noInk), (std::vector<uint32_t>{0, 0}));
    FontFile empty = SmallFont("13", 8);
    empty.tables[0] = Table({});
    EXPECT_EQ(Words(empty), (std::vector<uint32_t>{0, 0}));
    FontFile largeSymbol = SmallFont("01", 8);
    largeSymbol.tables[1] = Table({1, 4}, {1, 0x8000}); // code 1000 covers the rest
    largeSymbol.glyphData[8] = 0x08;
    EXPECT_EQ(Words(largeSymbol), (std::vector<uint32_t>{7, 7}));
}

TEST(GlyphDecoding, RecordsOutsideTheDataAreSkippedByAll) {
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
    const uint8_t foreign[16] = {3, 3, 0, 0, 0, 0, 8, 0, 0xFF};
    FontFile small = source;
    small.glyphData.resize(4);
    for (const FontFile &file : {source, small}) {
        const FontPtr font = Load(file.Bytes());
        const uint8_t *data = font->glyphData;
        EXPECT_EQ(GetGlyph(font.get(), 0) != nullptr, file.glyphData.size() >= 8);
        for (const uint8_t *record : {foreign, data - 8, data + 2}) {
            OrnMinRenderGlyph glyph = {};
            glyph.record = record;
            glyph.bitmapWords = 9;
            OrnMinRenderTextRenderCacheGlyph(font.get(), &glyph);
            EXPECT_EQ(glyph.bitmap, nullptr);
            EXPECT_EQ(glyph.bitmapWords, 0u);
        }
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

cbf::File SampleFont() {
    std::mt19937 random(77);
    cbf::Font source;
    source.lineHeight = 12;
    source.fallback = RandomGlyph(random, 9, 12);
    for (uint32_t c = 32; c < 70; ++c)
        source.glyphs[c] = RandomGlyph(random, 20, 30);
    source.glyphs[0x110004] = RandomGlyph(random, 20, 30);
    return cbf::WriteFont(source);
}

TEST(HostileFonts, CutShortAnywhere) {
    const auto file = SampleFont();
    for (size_t length = 0; length < file.bytes.size(); ++length) {
        Bytes bytes = file.bytes;
        bytes.resize(length);
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
    EXPECT_EQ(OrnMinRenderLoadCbfFont("/nowhere/at/all.cbf"), nullptr);
    EXPECT_EQ(OrnMinRenderLoadCbfFont("/tmp"), nullptr);
    EXPECT_EQ(OrnMinRenderLoadCbfFont(nullptr), nullptr);
    OrnMinRenderDestroyFont(nullptr);
}

TEST(HostileFonts, MissingSectionsStillLoad) {
    const auto source = SmallFont("13", 8);
    for (int missing = 0; missing < 3; ++missing) {
        Bytes bytes = source.Bytes();
        for (int i = 0; i < 4; ++i)
            bytes[size_t(12 + 4 * missing + i)] = 0xFE; // an offset past the end
        const FontPtr font = Load(bytes);
        ASSERT_NE(font, nullptr);
        EXPECT_EQ(missing == 2 ? (void *)font->index : (void *)font->huffLuts[missing], nullptr);
        EXPECT_EQ(GetGlyph(font.get(), 'A') != nullptr, missing != 2);
        LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    }
}

} // namespace
