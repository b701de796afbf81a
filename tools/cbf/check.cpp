// SPDX-License-Identifier: MIT
#include "cbf/check.h"

#include "cbf/code_points.h"
#include "cbf/glyph_reader.h"

namespace cbf {

Complaints CheckFont(const View &file, const FontFile &font) {
    Complaints complaints = font.complaints;
    if (!font.loads || !font.index.deltas.usable || font.index.slots == 0)
        return complaints;
    ForEachRecord(file, font, [&](std::optional<uint32_t> codePoint, const StoredGlyph &stored) {
        complaints.AddAll(stored.complaints, [&] {
            return codePoint ? CodePointName(*codePoint) : std::string("fallback glyph");
        });
    });
    return complaints;
}

} // namespace cbf
