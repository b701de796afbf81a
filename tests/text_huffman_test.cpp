// SPDX-License-Identifier: MIT
// Huffman tables by themselves: over all short vectors of code lengths, walked with every input of
// eight bits; and the limits of what they hold.
#include "font_files.h"
#include "frame.h"
#include "text_huffman.h"

#include <bitset>
#include <cstdlib>

using namespace orn;

namespace {

using HuffLutPtr = std::unique_ptr<HuffLut, decltype(&free)>;

HuffLutPtr LoadTable(const cbf::Bytes &bytes) {
    FontReader reader = {fmemopen(const_cast<uint8_t *>(bytes.data()), bytes.size(), "rb"),
                         bytes.size(), 0};
    HuffLutPtr table(LoadHuffTable(&reader, 0), free);
    fclose(reader.file);
    return table;
}

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
        codes.push_back(std::bitset<32>(code).to_string().substr(32 - size_t(length)));
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
        const std::string bits = std::bitset<8>(unsigned(input)).to_string();
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

} // namespace
