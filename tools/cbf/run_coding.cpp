// SPDX-License-Identifier: MIT
// Codes are made, then rare lengths are given up for two shorter runs where tables and runs get
// smaller together.
#include "cbf/run_coding.h"

#include "cbf.h"

#include <algorithm>

namespace cbf {

constexpr uint64_t kTableEntryBits = 8 * kTableEntryBytes;

static uint64_t CodingBits(const RunCoding &coding) {
    uint64_t bits = 0;
    for (size_t colour = 0; colour < 2; ++colour)
        for (const Code &code : coding.codes[colour])
            bits += kTableEntryBits + coding.counts[colour].at(code.symbol) * code.length;
    return bits;
}

static void RecodeRuns(RunCoding &coding) {
    for (size_t colour = 0; colour < 2; ++colour)
        coding.codes[colour] = MakeCodes(coding.counts[colour]);
}

struct Split {
    uint16_t firstPart = 0;     // 0: none of the others add up to the length
    uint32_t bits = UINT32_MAX; // of both parts
};

static Split CheapestSplit(const CodeBook &book, uint16_t length) {
    Split best;
    for (const auto &[part, code] : book) {
        const auto rest = book.find(static_cast<uint16_t>(length - part));
        if (part == 0 || part > length / 2 || rest == book.end())
            continue;
        const uint32_t bits = uint32_t{code.length} + rest->second.length;
        if (bits < best.bits)
            best = {part, bits};
    }
    return best;
}

static RunCoding WithSplit(const RunCoding &coding, size_t colour, uint16_t length,
                           uint16_t firstPart) {
    RunCoding split = coding;
    const uint64_t count = split.counts[colour].at(length);
    split.counts[colour].erase(length);
    split.counts[colour][firstPart] += count;
    split.counts[colour][static_cast<uint16_t>(length - firstPart)] += count;
    split.counts[1 - colour][0] += count;
    split.firstParts[colour][length] = firstPart;
    RecodeRuns(split);
    return split;
}

// Splits a length if that makes tables and runs smaller together. The codes change with it, so the
// estimate by the present ones only says where trying is worth it.
static void SplitIfShorter(RunCoding &coding, size_t colour, uint16_t length) {
    const CodeBook book = MakeCodeBook(coding.codes[colour]);
    const Split split = CheapestSplit(book, length);
    const uint64_t count = coding.counts[colour].at(length);
    if (split.firstPart == 0 ||
        count * split.bits >= kTableEntryBits + count * book.at(length).length)
        return;
    RunCoding trial = WithSplit(coding, colour, length, split.firstPart);
    if (CodingBits(trial) < CodingBits(coding))
        coding = std::move(trial);
}

// The rarest first, of these the longest.
static std::vector<uint16_t> ByRarity(const Counts &counts) {
    std::vector<uint16_t> lengths;
    for (const auto &[length, count] : counts)
        lengths.insert(lengths.begin(), length);
    std::stable_sort(lengths.begin(), lengths.end(),
                     [&](uint16_t a, uint16_t b) { return counts.at(a) < counts.at(b); });
    return lengths;
}

RunCoding CodeRuns(const std::vector<std::vector<uint16_t>> &glyphs) {
    RunCoding coding;
    for (const std::vector<uint16_t> &runs : glyphs)
        for (size_t i = 0; i < runs.size(); ++i)
            ++coding.counts[i % 2][runs[i]];
    RecodeRuns(coding);
    for (size_t colour = 0; colour < 2; ++colour)
        for (const uint16_t length : ByRarity(coding.counts[colour]))
            SplitIfShorter(coding, colour, length);
    return coding;
}

RunWriter::RunWriter(const RunCoding &runCoding)
    : coding(runCoding), books{MakeCodeBook(coding.codes[0]), MakeCodeBook(coding.codes[1])} {
}

BitWriter RunWriter::Write(const std::vector<uint16_t> &runs) const {
    BitWriter writer;
    for (size_t i = 0; i < runs.size(); ++i)
        PutRun(writer, i % 2, runs[i]);
    return writer;
}

void RunWriter::PutRun(BitWriter &writer, size_t colour, uint16_t length) const {
    const auto split = coding.firstParts[colour].find(length);
    if (split == coding.firstParts[colour].end()) {
        PutSymbol(writer, books[colour], length);
        return;
    }
    PutRun(writer, colour, split->second);
    PutSymbol(writer, books[1 - colour], 0);
    PutRun(writer, colour, static_cast<uint16_t>(length - split->second));
}

} // namespace cbf
