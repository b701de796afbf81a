// SPDX-License-Identifier: MIT
// Omissions are notes on standard error, results the answer to -v on standard output.
#include "cbfconv/report.h"

#include "cbf.h"
#include "cbf/code_points.h"
#include "cbfconv/glyph_box.h"
#include "common/shown.h"
#include "common/streams.h"
#include "common/text.h"

#include <algorithm>

namespace cbfconv {

std::string ListPaths(const std::vector<Input> &inputs) {
    std::string list;
    for (const Input &input : inputs)
        list += (list.empty() ? "" : ", ") + input.path;
    return list;
}

// "U+0041-U+0043, U+0050, ... and 7 more", of code points in ascending order.
static std::string ListCodePoints(const std::vector<uint32_t> &codePoints) {
    constexpr size_t kListed = 6; // ranges
    std::string list;
    size_t first = 0;
    for (size_t ranges = 0; first < codePoints.size() && ranges < kListed; ++ranges) {
        size_t last = first;
        while (last + 1 < codePoints.size() && codePoints[last + 1] == codePoints[last] + 1)
            ++last;
        list += (first ? ", " : "") + cbf::CodePointName(codePoints[first]);
        if (last > first)
            list += "-" + cbf::CodePointName(codePoints[last]);
        first = last + 1;
    }
    const size_t more = codePoints.size() - first;
    return list + (more ? ", ... and " + std::to_string(more) + " more" : "");
}

static size_t CountWithoutOutline(const cbf::Font &font) {
    return static_cast<size_t>(
        std::count_if(font.glyphs.begin(), font.glyphs.end(), [](const auto &entry) {
            return std::max(entry.second.width, entry.second.height) > cbf::kMaxOutlinedSide;
        }));
}

void TellLeftOut(const std::vector<Input> &inputs, const MergedFont &merged) {
    for (const auto &[reason, codePoints] : merged.leftOut)
        tool::Say("cbfconv", ListPaths(inputs) + ": left out " + std::to_string(codePoints.size()) +
                                 (codePoints.size() > 1 ? " characters, each of which "
                                                        : " character, which ") +
                                 reason + ": " + ListCodePoints(codePoints));
}

void TellOmissions(const std::vector<Input> &inputs, const MergedFont &merged) {
    const std::string paths = ListPaths(inputs);
    const size_t present = merged.font.glyphs.size();
    if (const size_t missing = merged.missing.size(); missing > 0)
        tool::Say("cbfconv",
                  paths + (inputs.size() > 1 ? ": have " : ": has ") + std::to_string(present) +
                      " of the " + std::to_string(present + missing) + " characters, " +
                      std::to_string(missing) + " missing: " + ListCodePoints(merged.missing));
    for (size_t i = 0; i < inputs.size(); ++i)
        if (std::none_of(merged.origins.begin(), merged.origins.end(),
                         [&](const auto &entry) { return entry.second == i; }))
            tool::Say("cbfconv", inputs[i].path + ": none of its characters are taken");
    if (const size_t count = CountWithoutOutline(merged.font))
        tool::Say("cbfconv", paths + ": " + std::to_string(count) +
                                 " glyphs are too large to be drawn with an outline");
}

// Of the glyphs' boxes at one bit a pixel, in rows of whole bytes.
static size_t RawBytes(const cbf::Font &font) {
    size_t bytes = 0;
    for (const auto &[codePoint, glyph] : font.glyphs)
        bytes += static_cast<size_t>((glyph.width + 7) / 8 * glyph.height);
    return bytes;
}

// Of the table that begins so many bytes behind a header word's offset. A table's entries are
// sorted, so the last is the longest.
static uint32_t LongestCode(const cbf::View &file, uint32_t headerWordAt, uint32_t bytesBehind) {
    const uint64_t table = uint64_t{cbf::WordAt(file, headerWordAt)} + bytesBehind;
    const uint64_t count = cbf::WordAt(file, table);
    const uint64_t end = table + cbf::kTableHeadBytes + cbf::kTableEntryBytes * count;
    return count ? cbf::HalfAt(file, end - 2) : 0;
}

std::string DescribeResult(const std::string &output, const cbf::File &file,
                           const cbf::Font &font) {
    const auto longest = [&](uint32_t headerWordAt, uint32_t bytesBehind) {
        return LongestCode(file.bytes, headerWordAt, bytesBehind);
    };
    const size_t glyphs = font.glyphs.size();
    const auto total = static_cast<double>(file.bytes.size());
    const size_t raw = RawBytes(font);
    std::string text =
        tool::Format("%s: %zu glyphs, %zu bytes, %.1f bytes a glyph\n", tool::Shown(output).c_str(),
                     glyphs, file.bytes.size(), total / static_cast<double>(glyphs));
    text += tool::Format("  glyph data %zu (%zu records), index %zu, run tables %zu, header %zu\n",
                         file.sizes.glyphData, file.records, file.sizes.index, file.sizes.runTables,
                         file.sizes.header);
    text += tool::Format("  longest codes: background %u bits, ink %u, delta %u\n",
                         longest(cbf::kBackgroundTableAt, 0), longest(cbf::kInkTableAt, 0),
                         longest(cbf::kIndexAt, cbf::kIndexHeadBytes));
    if (raw > 0)
        text += tool::Format(
            "  the bitmaps alone, one bit a pixel, take %zu bytes: the file is %.2f times "
            "that\n",
            raw, total / static_cast<double>(raw));
    return text;
}

} // namespace cbfconv
