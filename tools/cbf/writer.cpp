// SPDX-License-Identifier: MIT
// Glyphs become runs, runs get codes, coded records get places, and the sections follow each other.
#include "cbf/writer.h"

#include "cbf.h"
#include "cbf/layout.h"
#include "cbf/run_coding.h"

namespace cbf {

constexpr uint32_t kHeaderWord = 'C' | 'B' << 8 | 'F' << 16 | '1' << 24;

// A glyph by its code point, which is 0 for the fallback glyph, the first of the list.
struct Entry {
    const Glyph *glyph;
    uint32_t codePoint;
};

static std::vector<Entry> ListEntries(const Font &font) {
    std::vector<Entry> entries = {{&font.fallback, 0}};
    for (const auto &[codePoint, glyph] : font.glyphs)
        entries.push_back({&glyph, codePoint});
    return entries;
}

static Fault CheckFont(const Font &font) {
    if (const Problem problem = CheckGlyph(font.fallback); problem != Problem::None)
        return {problem, true, 0};
    for (const auto &[codePoint, glyph] : font.glyphs) {
        if (codePoint > kMaxTextCodePoint)
            return {Problem::CodePoint, false, codePoint};
        if (const Problem problem = CheckGlyph(glyph); problem != Problem::None)
            return {problem, false, codePoint};
    }
    return {};
}

struct Records {
    Fault fault;
    std::vector<Record> list;
};

static Records MakeRecords(const std::vector<Entry> &entries,
                           const std::vector<std::vector<uint16_t>> &runs,
                           const RunCoding &coding) {
    const RunWriter runWriter(coding);
    Records records;
    for (size_t i = 0; i < entries.size(); ++i) {
        const BitWriter coded = runWriter.Write(runs[i]);
        if (coded.bitCount > kMaxCodedBits)
            return {{Problem::CodedRuns, i == 0, entries[i].codePoint}, {}};
        const size_t paddingBits = coded.bytes.size() * 8 - coded.bitCount;
        records.list.push_back({entries[i].codePoint, RecordBytes(*entries[i].glyph, coded),
                                static_cast<uint8_t>((1u << paddingBits) - 1)});
    }
    return records;
}

static Bytes HeaderBytes(const Font &font, const Bytes (&sections)[4]) {
    const auto size = [&](size_t i) { return static_cast<uint32_t>(sections[i].size()); };
    Bytes bytes;
    PutWord(bytes, kHeaderWord);
    PutWord(bytes, static_cast<uint32_t>(font.lineHeight));
    PutWord(bytes, size(3));
    uint32_t offset = kHeaderBytes;
    for (size_t i = 0; i < 4; ++i) {
        PutWord(bytes, offset);
        offset += size(i);
    }
    return bytes;
}

File WriteFont(const Font &font) {
    if (const Fault fault = CheckFont(font); fault.problem != Problem::None)
        return {fault, {}, {}};
    const std::vector<Entry> entries = ListEntries(font);
    std::vector<std::vector<uint16_t>> runs;
    for (const Entry &entry : entries)
        runs.push_back(CodedRuns(*entry.glyph));
    const RunCoding coding = CodeRuns(runs);
    const Records records = MakeRecords(entries, runs, coding);
    if (records.fault.problem != Problem::None)
        return {records.fault, {}, {}};
    Layout layout = SmallestLayout(records.list);
    const Bytes sections[4] = {TableBytes(coding.codes[0]), TableBytes(coding.codes[1]),
                               std::move(layout.index), std::move(layout.glyphData)};
    File file;
    file.records = layout.records;
    file.bytes = HeaderBytes(font, sections);
    for (const Bytes &section : sections)
        Append(file.bytes, section);
    if (file.bytes.size() > UINT32_MAX)
        return {{Problem::FileSize, false, entries.back().codePoint}, {}, {}};
    file.sizes = {kHeaderBytes, sections[0].size() + sections[1].size(), sections[2].size(),
                  sections[3].size()};
    return file;
}

} // namespace cbf
