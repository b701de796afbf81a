#include "cbf_writer.h"

#include <algorithm>

namespace cbf {

constexpr uint32_t kHeaderWord = 'C' | 'B' << 8 | 'F' << 16 | '1' << 24;
constexpr uint32_t kHeaderBytes = 28;
constexpr size_t kGlyphHeadBytes = 8;
constexpr int32_t kMaxSide = 127;
constexpr uint32_t kMaxCodePoint = 0x7FFFFFFF;
constexpr size_t kMaxCodedBits = 32767;
constexpr uint32_t kMaxCodeLength = 32;
constexpr uint16_t kEndMark = 0xFFFF;

constexpr size_t kMaxDelta = 32767;

// Records begin at least seven bytes apart, so that no delta is the end mark.
static_assert(kGlyphHeadBytes + (kMaxCodedBits + 7) / 8 <= kMaxDelta, "a delta fits 16 bits");

// ---- Bytes and bits ----

void PutHalf(Bytes *bytes, uint32_t value) {
    bytes->push_back(static_cast<uint8_t>(value));
    bytes->push_back(static_cast<uint8_t>(value >> 8));
}

void PutWord(Bytes *bytes, uint32_t value) {
    PutHalf(bytes, value);
    PutHalf(bytes, value >> 16);
}

static void Append(Bytes *bytes, const Bytes &more) {
    bytes->insert(bytes->end(), more.begin(), more.end());
}

void PutBits(BitWriter *writer, uint32_t bits, uint32_t count) {
    while (count-- > 0) {
        if (writer->bitCount % 8 == 0)
            writer->bytes.push_back(0);
        const uint32_t bit = bits >> count & 1;
        writer->bytes.back() |= static_cast<uint8_t>(bit << (7 - writer->bitCount % 8));
        ++writer->bitCount;
    }
}

// ---- Huffman codes ----

// Package-merge (Larmore and Hirschberg, 1990): every symbol may be bought once at each of
// maxLength levels. A coin is a symbol at one level, or a package of two coins of the level below.
struct Coin {
    uint64_t weight;
    size_t first; // the symbol's position, or the package's cheaper coin
    size_t second;
};
constexpr size_t kNoCoin = SIZE_MAX; // the second of a symbol's coin

using Level = std::vector<size_t>; // positions of coins, by weight

// A symbol goes before a package of the same weight, which keeps the longest code short.
static Level MergeByWeight(const std::vector<Coin> &coins, const Level &symbols,
                           const Level &packages) {
    Level merged;
    std::merge(symbols.begin(), symbols.end(), packages.begin(), packages.end(),
               std::back_inserter(merged),
               [&](size_t a, size_t b) { return coins[a].weight < coins[b].weight; });
    return merged;
}

static Level PackagePairs(std::vector<Coin> *coins, const Level &level) {
    Level packages;
    for (size_t i = 0; i + 1 < level.size(); i += 2) {
        const uint64_t weight = (*coins)[level[i]].weight + (*coins)[level[i + 1]].weight;
        packages.push_back(coins->size());
        coins->push_back({weight, level[i], level[i + 1]});
    }
    return packages;
}

// A symbol's code is as long as the number of its coins that were bought.
static void CountSymbols(const std::vector<Coin> &coins, size_t position,
                         std::vector<Code> *codes) {
    const Coin &coin = coins[position];
    if (coin.second == kNoCoin) {
        ++(*codes)[coin.first].length;
        return;
    }
    CountSymbols(coins, coin.first, codes);
    CountSymbols(coins, coin.second, codes);
}

static void LimitedLengths(const Counts &counts, uint32_t maxLength, std::vector<Code> *codes) {
    std::vector<Coin> coins;
    Level symbols;
    for (const auto &[symbol, count] : counts) {
        symbols.push_back(coins.size());
        coins.push_back({count, coins.size(), kNoCoin});
    }
    std::stable_sort(symbols.begin(), symbols.end(),
                     [&](size_t a, size_t b) { return coins[a].weight < coins[b].weight; });
    Level level = symbols;
    for (uint32_t i = 1; i < maxLength; ++i)
        level = MergeByWeight(coins, symbols, PackagePairs(&coins, level));
    const size_t bought = 2 * counts.size() - 2;
    for (size_t i = 0; i < bought; ++i)
        CountSymbols(coins, level[i], codes);
}

std::vector<Code> CodeLengths(const Counts &counts, uint32_t maxLength) {
    if (maxLength < 32 && counts.size() > size_t{1} << maxLength)
        return {};
    std::vector<Code> codes;
    for (const auto &[symbol, count] : counts)
        codes.push_back({symbol, 0, 0});
    if (codes.size() == 1)
        codes[0].length = 1;
    else if (codes.size() > 1)
        LimitedLengths(counts, maxLength, &codes);
    std::stable_sort(codes.begin(), codes.end(),
                     [](const Code &a, const Code &b) { return a.length < b.length; });
    return codes;
}

void AssignCanonicalCodes(std::vector<Code> *codes) {
    uint64_t next = 0;
    uint16_t previousLength = 0;
    for (Code &code : *codes) {
        next <<= (code.length - previousLength) & 63; // lengths need not be sorted
        code.bits = static_cast<uint32_t>(next++);
        previousLength = code.length;
    }
}

std::vector<Code> MakeCodes(const Counts &counts) {
    std::vector<Code> codes = CodeLengths(counts, kMaxCodeLength);
    AssignCanonicalCodes(&codes);
    return codes;
}

Bytes TableBytes(const std::vector<Code> &codes) {
    Bytes bytes;
    PutWord(&bytes, static_cast<uint32_t>(codes.size()));
    for (const Code &code : codes) {
        PutHalf(&bytes, code.symbol);
        PutHalf(&bytes, code.length);
    }
    return bytes;
}

CodeBook MakeCodeBook(const std::vector<Code> &codes) {
    CodeBook book;
    for (const Code &code : codes)
        book[code.symbol] = code;
    return book;
}

void PutSymbol(BitWriter *writer, const CodeBook &book, uint16_t symbol) {
    const Code &code = book.at(symbol);
    PutBits(writer, code.bits, code.length);
}

// ---- Glyph records ----

const char *Reason(Problem problem) {
    switch (problem) {
    case Problem::None:
        return "is fine";
    case Problem::CodePoint:
        return "lies beyond U+7FFFFFFF";
    case Problem::Size:
        return "is wider or higher than 127 pixels";
    case Problem::PixelCount:
        return "has more or fewer pixels than its width and height say";
    case Problem::Bearing:
        return "reaches further than 127 pixels from the pen";
    case Problem::Advance:
        return "has an advance outside -32768..32767 pixels";
    case Problem::CodedRuns:
        return "takes more than 32767 bits";
    case Problem::FileSize:
        return "does not fit a font file of 4 GiB";
    }
    return "is bad";
}

Problem CheckGlyph(const Glyph &glyph) {
    const auto isSide = [](int32_t side) { return side >= 0 && side <= kMaxSide; };
    if (!isSide(glyph.width) || !isSide(glyph.height))
        return Problem::Size;
    if (glyph.pixels.size() != static_cast<size_t>(glyph.width * glyph.height))
        return Problem::PixelCount;
    // Every edge of the box, and its negative, is a bearing in one of the writing directions.
    const auto isEdge = [](int64_t edge) { return edge >= -127 && edge <= 127; };
    if (!isEdge(glyph.bearingX) || !isEdge(int64_t{glyph.bearingX} + glyph.width) ||
        !isEdge(glyph.bearingY) || !isEdge(int64_t{glyph.bearingY} - glyph.height))
        return Problem::Bearing;
    if (glyph.advance < INT16_MIN || glyph.advance > INT16_MAX)
        return Problem::Advance;
    return Problem::None;
}

std::vector<uint16_t> CodedRuns(const Glyph &glyph) {
    std::vector<uint16_t> runs;
    bool ink = false;
    uint16_t length = 0;
    for (const uint8_t pixel : glyph.pixels) {
        if ((pixel != 0) != ink) {
            runs.push_back(length);
            ink = !ink;
            length = 0;
        }
        ++length;
    }
    return runs;
}

Bytes RecordBytes(const Glyph &glyph, const BitWriter &codedRuns) {
    Bytes bytes;
    for (const int32_t field : {glyph.width, glyph.height, glyph.bearingX, glyph.bearingY})
        bytes.push_back(static_cast<uint8_t>(field));
    PutHalf(&bytes, static_cast<uint32_t>(glyph.advance));
    PutHalf(&bytes, static_cast<uint32_t>(codedRuns.bitCount));
    Append(&bytes, codedRuns.bytes);
    return bytes;
}

// ---- The index ----

// The symbols of one index record: deltas, zeros for the gaps between, an end mark except at last.
struct IndexRecord {
    uint32_t firstSlot;
    std::vector<uint16_t> symbols;
};

static std::vector<IndexRecord> SplitIndex(const std::vector<IndexSlot> &slots, uint32_t maxGap) {
    std::vector<IndexRecord> records;
    uint32_t next = 0;
    for (const IndexSlot &slot : slots) {
        const uint32_t gap = slot.codePoint - next;
        if (records.empty() || gap > maxGap) {
            if (!records.empty())
                records.back().symbols.push_back(kEndMark);
            records.push_back({slot.codePoint, {}});
        } else {
            records.back().symbols.insert(records.back().symbols.end(), gap, 0);
        }
        records.back().symbols.push_back(slot.delta);
        next = slot.codePoint + 1;
    }
    return records;
}

static Bytes SectionBytes(uint32_t count, const std::vector<IndexRecord> &records) {
    Counts counts;
    for (const IndexRecord &record : records)
        for (const uint16_t symbol : record.symbols)
            ++counts[symbol];
    const std::vector<Code> codes = MakeCodes(counts);
    const CodeBook book = MakeCodeBook(codes);
    Bytes bytes;
    PutWord(&bytes, count);
    Append(&bytes, TableBytes(codes));
    for (const IndexRecord &record : records) {
        BitWriter deltas;
        for (const uint16_t symbol : record.symbols)
            PutSymbol(&deltas, book, symbol);
        PutWord(&bytes, record.firstSlot);
        PutWord(&bytes, static_cast<uint32_t>(deltas.bytes.size()));
        Append(&bytes, deltas.bytes);
    }
    return bytes;
}

// The longest gaps that are bridged, one for each way to split. A record costs its head, an end
// mark of at most 32 bits and padding, 103 bits at most, and a zero at least one bit, so that
// longer gaps never pay.
constexpr uint32_t kBridgedGaps[] = {0, 1, 2, 3, 4, 6, 8, 11, 16, 23, 32, 45, 64, 90, 128};

// The codes depend on where the index is split and the best split on the codes, so several are
// tried.
Bytes IndexBytes(const std::vector<IndexSlot> &slots) {
    if (slots.empty())
        return SectionBytes(1, {{0, {0}}});
    const uint32_t count = slots.back().codePoint + 1;
    Bytes best;
    for (const uint32_t maxGap : kBridgedGaps) {
        Bytes section = SectionBytes(count, SplitIndex(slots, maxGap));
        if (best.empty() || section.size() < best.size())
            best = std::move(section);
    }
    return best;
}

// ---- Run lengths ----

struct Entry {
    const Glyph *glyph;
    uint32_t codePoint; // 0 for the fallback glyph, the first of the list
    std::vector<uint16_t> runs;
};

// The codes of both colours, background first. A rare length does without: its run is written as
// two shorter ones with a run of 0 of the other colour between them.
struct RunCoding {
    Counts counts[2];
    std::vector<Code> codes[2];
    std::map<uint16_t, uint16_t> firstParts[2]; // of the lengths without code
};

constexpr uint64_t kTableEntryBits = 32;

static uint64_t CodingBits(const RunCoding &coding) {
    uint64_t bits = 0;
    for (size_t colour = 0; colour < 2; ++colour)
        for (const Code &code : coding.codes[colour])
            bits += kTableEntryBits + coding.counts[colour].at(code.symbol) * code.length;
    return bits;
}

static void RecodeRuns(RunCoding *coding) {
    for (size_t colour = 0; colour < 2; ++colour)
        coding->codes[colour] = MakeCodes(coding->counts[colour]);
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
    RecodeRuns(&split);
    return split;
}

// Splits a length if that makes tables and runs smaller together. The codes change with it, so the
// estimate by the present ones only says where trying is worth it.
static void SplitIfShorter(RunCoding *coding, size_t colour, uint16_t length) {
    const CodeBook book = MakeCodeBook(coding->codes[colour]);
    const Split split = CheapestSplit(book, length);
    const uint64_t count = coding->counts[colour].at(length);
    if (split.firstPart == 0 ||
        count * split.bits >= kTableEntryBits + count * book.at(length).length)
        return;
    RunCoding trial = WithSplit(*coding, colour, length, split.firstPart);
    if (CodingBits(trial) < CodingBits(*coding))
        *coding = std::move(trial);
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

static RunCoding CodeRuns(const std::vector<Entry> &entries) {
    RunCoding coding;
    for (const Entry &entry : entries)
        for (size_t i = 0; i < entry.runs.size(); ++i)
            ++coding.counts[i % 2][entry.runs[i]];
    RecodeRuns(&coding);
    for (size_t colour = 0; colour < 2; ++colour)
        for (const uint16_t length : ByRarity(coding.counts[colour]))
            SplitIfShorter(&coding, colour, length);
    return coding;
}

static void PutRun(BitWriter *writer, const RunCoding &coding, const CodeBook (&books)[2],
                   size_t colour, uint16_t length) {
    const auto split = coding.firstParts[colour].find(length);
    if (split == coding.firstParts[colour].end()) {
        PutSymbol(writer, books[colour], length);
        return;
    }
    PutRun(writer, coding, books, colour, split->second);
    PutSymbol(writer, books[1 - colour], 0);
    PutRun(writer, coding, books, colour, static_cast<uint16_t>(length - split->second));
}

// ---- Glyph data ----

struct Record {
    uint32_t codePoint;
    Bytes bytes;
    uint8_t padding; // which bits of the last byte say nothing
};

struct Records {
    Fault fault;
    std::vector<Record> list; // the fallback glyph first
};

static Records MakeRecords(const std::vector<Entry> &entries, const RunCoding &coding) {
    const CodeBook books[2] = {MakeCodeBook(coding.codes[0]), MakeCodeBook(coding.codes[1])};
    Records records;
    for (const Entry &entry : entries) {
        BitWriter writer;
        for (size_t i = 0; i < entry.runs.size(); ++i)
            PutRun(&writer, coding, books, i % 2, entry.runs[i]);
        if (writer.bitCount > kMaxCodedBits)
            return {{Problem::CodedRuns, &entry == &entries.front(), entry.codePoint}, {}};
        const size_t paddingBits = writer.bytes.size() * 8 - writer.bitCount;
        records.list.push_back({entry.codePoint, RecordBytes(*entry.glyph, writer),
                                static_cast<uint8_t>((1u << paddingBits) - 1)});
    }
    return records;
}

struct Layout {
    Bytes glyphData;
    size_t records = 0;
    std::vector<IndexSlot> slots;
    Bytes index;
};

// Puts records one after the other. The delta from one glyph to the next is one of 16 bits, and 0
// means the fallback glyph. So a record is shared only while it is near the end, which the next new
// record must be reached from, and never by two neighbours.
class Placer {
  public:
    Placer(const Record &fallback, size_t minSharedSize)
        : fallbackBytes(fallback.bytes), minSharedBytes(minSharedSize) {
        Append(fallback);
    }

    void Add(const Record &record) {
        if (record.bytes == fallbackBytes)
            return;
        const size_t offset = FindOrAppend(record);
        layout.slots.push_back({record.codePoint, static_cast<uint16_t>(offset - previous)});
        previous = offset;
    }

    Layout layout;

  private:
    size_t FindOrAppend(const Record &record) {
        if (record.bytes.size() < minSharedBytes)
            return Append(record);
        std::vector<size_t> &copies = offsets[record.bytes];
        const size_t end = layout.glyphData.size();
        for (auto copy = copies.rbegin(); copy != copies.rend() && end - *copy <= kMaxDelta; ++copy)
            if (*copy != previous)
                return *copy;
        copies.push_back(Append(record));
        return copies.back();
    }

    // A record begins in the last byte of the one before where the bits that say something there
    // are the same.
    size_t Append(const Record &record) {
        Bytes &data = layout.glyphData;
        const uint8_t first = record.bytes.front();
        const bool overlaps = !data.empty() && ((data.back() ^ first) & ~padding & 0xFF) == 0;
        if (overlaps)
            data.back() = first;
        const size_t offset = data.size() - overlaps;
        data.insert(data.end(), record.bytes.begin() + overlaps, record.bytes.end());
        padding = record.padding;
        ++layout.records;
        return offset;
    }

    const Bytes &fallbackBytes;
    const size_t minSharedBytes;
    std::map<Bytes, std::vector<size_t>> offsets;
    size_t previous = 0;
    uint8_t padding = 0; // of the last record
};

// Sharing a record saves its bytes and adds two deltas to the index, rare ones as a rule. From what
// size on it pays depends on the index's codes, so it is tried.
static Layout SmallestLayout(const std::vector<Record> &records) {
    Layout best;
    for (const size_t minSharedBytes : {size_t{0}, size_t{16}, size_t{24}, size_t{32}, SIZE_MAX}) {
        Placer placer(records.front(), minSharedBytes);
        for (size_t i = 1; i < records.size(); ++i)
            placer.Add(records[i]);
        Layout &layout = placer.layout;
        layout.index = IndexBytes(layout.slots);
        if (best.glyphData.empty() || layout.glyphData.size() + layout.index.size() <
                                          best.glyphData.size() + best.index.size())
            best = std::move(layout);
    }
    return best;
}

// ---- Whole fonts ----

static std::vector<Entry> ListEntries(const Font &font) {
    std::vector<Entry> entries = {{&font.fallback, 0, CodedRuns(font.fallback)}};
    for (const auto &[codePoint, glyph] : font.glyphs)
        entries.push_back({&glyph, codePoint, CodedRuns(glyph)});
    return entries;
}

static Fault CheckFont(const Font &font) {
    if (const Problem problem = CheckGlyph(font.fallback); problem != Problem::None)
        return {problem, true, 0};
    for (const auto &[codePoint, glyph] : font.glyphs) {
        if (codePoint > kMaxCodePoint)
            return {Problem::CodePoint, false, codePoint};
        if (const Problem problem = CheckGlyph(glyph); problem != Problem::None)
            return {problem, false, codePoint};
    }
    return {};
}

static Bytes HeaderBytes(const Font &font, const Bytes (&sections)[4]) {
    const auto size = [&](size_t i) { return static_cast<uint32_t>(sections[i].size()); };
    Bytes bytes;
    PutWord(&bytes, kHeaderWord);
    PutWord(&bytes, static_cast<uint32_t>(font.lineHeight));
    PutWord(&bytes, size(3));
    uint32_t offset = kHeaderBytes;
    for (size_t i = 0; i < 4; ++i) {
        PutWord(&bytes, offset);
        offset += size(i);
    }
    return bytes;
}

File WriteFont(const Font &font) {
    if (const Fault fault = CheckFont(font); fault.problem != Problem::None)
        return {fault, {}, {}};
    const std::vector<Entry> entries = ListEntries(font);
    const RunCoding coding = CodeRuns(entries);
    const Records records = MakeRecords(entries, coding);
    if (records.fault.problem != Problem::None)
        return {records.fault, {}, {}};
    Layout layout = SmallestLayout(records.list);
    const Bytes sections[4] = {TableBytes(coding.codes[0]), TableBytes(coding.codes[1]),
                               std::move(layout.index), std::move(layout.glyphData)};
    File file;
    file.records = layout.records;
    file.bytes = HeaderBytes(font, sections);
    for (const Bytes &section : sections)
        Append(&file.bytes, section);
    if (file.bytes.size() > UINT32_MAX)
        return {{Problem::FileSize, false, entries.back().codePoint}, {}, {}};
    file.sizes = {kHeaderBytes, sections[0].size() + sections[1].size(), sections[2].size(),
                  sections[3].size()};
    return file;
}

} // namespace cbf
