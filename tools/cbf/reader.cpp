// SPDX-License-Identifier: MIT
// Sections are read even where the font does not load, so that all their faults are found at once.
#include "cbf/reader.h"

#include "cbf.h"

namespace cbf {

static void ReadHeader(const View &file, FontFile &font) {
    font.headerWord = WordAt(file, kHeaderWordAt);
    font.lineHeight = static_cast<int32_t>(WordAt(file, kLineHeightAt));
    font.dataSize = WordAt(file, kDataSizeAt);
    font.dataOffset = WordAt(file, kDataAt);
    font.loads = font.dataSize > 0 && file.Holds(font.dataOffset, font.dataSize);
    if (font.dataSize == 0)
        font.complaints.Add(kDataSizeAt, Flaw::Section, [] {
            return std::string("glyph data: has no bytes: the font does not load");
        });
    else if (!font.loads)
        font.complaints.Add(kDataAt, Flaw::Section, [&] {
            return "glyph data: its " + std::to_string(font.dataSize) + " bytes from offset " +
                   std::to_string(font.dataOffset) + " on reach past the end of the file, " +
                   std::to_string(file.size) + ": the font does not load";
        });
}

FontFile ReadFont(const View &file) {
    FontFile font;
    if (file.size < kHeaderBytes) {
        font.complaints.Add(file.size, Flaw::Section, [&] {
            return "header: has " + std::to_string(file.size) + " of " +
                   std::to_string(kHeaderBytes) + " bytes: the font does not load";
        });
        return font;
    }
    ReadHeader(file, font);
    const uint32_t offsets[] = {kBackgroundTableAt, kInkTableAt};
    for (size_t colour = 0; colour < 2; ++colour)
        font.runTables[colour] = ReadTable(file, WordAt(file, offsets[colour]),
                                           kRunTableTitles[colour], font.complaints);
    font.index = ReadIndex(file, WordAt(file, kIndexAt), font.complaints);
    return font;
}

} // namespace cbf
