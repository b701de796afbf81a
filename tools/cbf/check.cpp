// SPDX-License-Identifier: MIT
// Sections, then glyphs, then what no text can ask for.
#include "cbf/check.h"

#include "cbf.h"
#include "cbf/code_points.h"
#include "cbf/glyph_reader.h"

namespace cbf {

// Text can't ask for them: a line feed is no character, and UTF-8 ends at 31 bits.
static void CheckCharacters(const FontFile &font, Complaints &complaints) {
    for (const IndexEntry &entry : font.index.entries)
        if (entry.codePoint == '\n' || entry.codePoint > kMaxTextCodePoint)
            complaints.Add(font.index.offset, Flaw::Undrawable, [&] {
                return CodePointName(entry.codePoint) + ": has a glyph, but is never drawn";
            });
}

Complaints CheckFont(const View &file, const FontFile &font) {
    Complaints complaints = font.complaints;
    if (!font.loads || !font.index.deltas.usable || font.index.slots == 0)
        return complaints;
    ForEachRecord(file, font, [&](const NamedGlyph &glyph) {
        const auto name = [&] {
            return glyph.codePoint ? CodePointName(*glyph.codePoint)
                                   : std::string("fallback glyph");
        };
        if (!glyph.stored.whole)
            complaints.Add(font.dataOffset + glyph.recordOffset, Flaw::RecordOutside,
                           [&] { return name() + ": its record lies outside the glyph data"; });
        else
            complaints.AddAll(glyph.stored.complaints, name);
    });
    CheckCharacters(font, complaints);
    return complaints;
}

} // namespace cbf
