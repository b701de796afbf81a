// SPDX-License-Identifier: MIT
// Sections are listed as the file has them, glyph records counted once however many characters
// share them.
#include "cbfdump/summary.h"

#include "cbf.h"
#include "cbf/code_points.h"
#include "cbf/glyph_reader.h"
#include "cbfdump/tables.h"
#include "cbfdump/unicode_blocks.h"
#include "common/shown.h"
#include "common/text.h"

#include <algorithm>
#include <cstring>

namespace cbfdump {

namespace {

// ---- Totals ----

struct GlyphTotals {
    size_t records = 0;
    size_t codedBytes = 0;
    size_t paddingBits = 0;
    size_t runs = 0;
    int32_t ascent = 0;  // rows of ink above the baseline
    int32_t descent = 0; // and below
    int32_t minAdvance = INT32_MAX;
    int32_t maxAdvance = INT32_MIN;
    int32_t maxWidth = 0;
    int32_t maxHeight = 0;
    size_t withoutOutline = 0;
};

void AddGlyph(GlyphTotals &totals, const cbf::StoredGlyph &stored) {
    const cbf::Glyph &glyph = stored.glyph;
    ++totals.records;
    totals.codedBytes += stored.codedBytes;
    totals.paddingBits += stored.paddingBits;
    totals.runs += stored.runs;
    totals.ascent = std::max(totals.ascent, glyph.bearingY);
    totals.descent = std::max(totals.descent, glyph.height - glyph.bearingY);
    totals.minAdvance = std::min(totals.minAdvance, glyph.advance);
    totals.maxAdvance = std::max(totals.maxAdvance, glyph.advance);
    totals.maxWidth = std::max(totals.maxWidth, glyph.width);
    totals.maxHeight = std::max(totals.maxHeight, glyph.height);
    totals.withoutOutline += std::max(glyph.width, glyph.height) > cbf::kMaxOutlinedSide;
}

GlyphTotals SumGlyphs(const cbf::View &file, const cbf::FontFile &font) {
    GlyphTotals totals;
    cbf::ForEachRecord(file, font, [&](const cbf::NamedGlyph &glyph) {
        if (glyph.stored.whole)
            AddGlyph(totals, glyph.stored);
    });
    return totals;
}

// ---- The parts of the summary ----

std::string Metrics(const std::string &path, const cbf::View &file, const cbf::FontFile &font,
                    const GlyphTotals &totals) {
    const size_t characters = font.index.entries.size();
    std::string text = tool::Format(
        "%s: %zu bytes, %zu characters in %zu glyph records, %.1f bytes a character\n",
        tool::Shown(path).c_str(), file.size, characters, totals.records,
        static_cast<double>(file.size) / static_cast<double>(std::max<size_t>(characters, 1)));
    text += tool::Format("  header word   0x%08X\n", font.headerWord);
    text += tool::Format("  line height   %d\n", font.lineHeight);
    text += tool::Format("  ink           %d rows above the baseline, %d below\n", totals.ascent,
                         totals.descent);
    if (totals.records > 0)
        text +=
            tool::Format("  largest box   %d wide, %d high\n  advances      %d to %d\n",
                         totals.maxWidth, totals.maxHeight, totals.minAdvance, totals.maxAdvance);
    return text;
}

// A row of the list of sections.
struct Section {
    const char *name;
    uint64_t offset;
    uint64_t size;
    std::string contents;
};

std::string ListSection(const Section &section, size_t fileSize) {
    const int padding =
        section.contents.empty() ? 0 : static_cast<int>(18 - std::strlen(section.name));
    return tool::Format("  %8llu %9llu %5.1f %%  %s%*s%s\n",
                        static_cast<unsigned long long>(section.offset),
                        static_cast<unsigned long long>(section.size),
                        100 * static_cast<double>(section.size) / static_cast<double>(fileSize),
                        section.name, padding, "", section.contents.c_str());
}

Section TableSection(const char *name, const cbf::Table &table) {
    return {name, table.offset,
            cbf::kTableHeadBytes + cbf::kTableEntryBytes * uint64_t{table.codes.size()},
            DescribeTable(table)};
}

std::string ListSections(const cbf::View &file, const cbf::FontFile &font,
                         const GlyphTotals &totals) {
    const cbf::Index &index = font.index;
    const Section deltas = TableSection("  delta table", index.deltas);
    std::vector<Section> sections = {
        {"header", 0, cbf::kHeaderBytes, ""},
        TableSection("background table", font.runTables[0]),
        TableSection("ink table", font.runTables[1]),
        {"index", index.offset, cbf::kIndexHeadBytes, std::to_string(index.slots) + " slots"},
        deltas};
    const uint64_t recordsStart = deltas.offset + deltas.size;
    if (index.end > recordsStart)
        sections.push_back({"  index records", recordsStart, index.end - recordsStart,
                            std::to_string(index.recordCount)});
    sections.push_back({"glyph data", font.dataOffset, font.dataSize,
                        "heads " + std::to_string(cbf::kGlyphHeadBytes * totals.records) + ", " +
                            std::to_string(totals.runs) + " runs " +
                            std::to_string(totals.codedBytes) + ", of which padding " +
                            std::to_string(totals.paddingBits / 8)});
    std::string text = "\n    offset     bytes   share  section\n";
    for (const Section &section : sections)
        text += ListSection(section, file.size);
    return text;
}

std::string ListBlocks(const cbf::FontFile &font) {
    std::string text = "\ncharacters  block\n";
    const std::vector<cbf::IndexEntry> &entries = font.index.entries;
    for (auto entry = entries.begin(); entry != entries.end();) {
        const UnicodeBlock *block = FindUnicodeBlock(entry->codePoint);
        size_t count = 0;
        for (; entry != entries.end() && FindUnicodeBlock(entry->codePoint) == block; ++entry)
            ++count;
        if (block)
            text += tool::Format("%6zu of %5u  %s (%s-%s)\n", count, block->last - block->first + 1,
                                 block->name, cbf::CodePointName(block->first).c_str(),
                                 cbf::CodePointName(block->last).c_str());
        else
            text += tool::Format("%6zu           outside all blocks\n", count);
    }
    return text;
}

} // namespace

std::string Summarise(const std::string &path, const cbf::View &file, const cbf::FontFile &font) {
    const GlyphTotals totals = SumGlyphs(file, font);
    return Metrics(path, file, font, totals) + ListSections(file, font, totals) + ListBlocks(font);
}

size_t CountWithoutOutline(const cbf::View &file, const cbf::FontFile &font) {
    return SumGlyphs(file, font).withoutOutline;
}

} // namespace cbfdump
