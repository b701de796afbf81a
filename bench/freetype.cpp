// SPDX-License-Identifier: MIT
// FreeType at the cold font: opens the outline font, renders every glyph of the text in one bit and
// stamps it.
#include "fonts.h"
#include "jobs.h"

#include <ft2build.h>
#include FT_FREETYPE_H

namespace bench {

namespace {

FT_Library Library() {
    static FT_Library library = [] {
        FT_Library made;
        FT_Init_FreeType(&made);
        return made;
    }();
    return library;
}

void Stamp(const Frame &frame, const FT_Bitmap &bitmap, int x, int y, uint8_t luma) {
    for (unsigned j = 0; j < bitmap.rows; ++j) {
        const uint8_t *bits = bitmap.buffer + int(j) * bitmap.pitch;
        uint8_t *row = frame.luma + (y + int(j)) * frame.stride + x;
        for (unsigned i = 0; i < bitmap.width; ++i)
            if (bits[i / 8] & 0x80 >> i % 8)
                row[i] = luma;
    }
}

} // namespace

Painter MakeFreeType(const Job &job, const Frame &frame) {
    if (job.shape != Shape::ColdFont)
        return {};
    return AtEveryPlace([=, library = Library()](int x, int y) {
        FT_Face face;
        FT_New_Face(library, kFontFile, 0, &face);
        FT_Set_Pixel_Sizes(face, 0, FT_UInt(job.fontSize));
        for (const char c : job.text) {
            FT_Load_Char(face, FT_ULong(c), FT_LOAD_RENDER | FT_LOAD_TARGET_MONO);
            const FT_GlyphSlot slot = face->glyph;
            Stamp(frame, slot->bitmap, x + slot->bitmap_left,
                  y + PenHeight(job.fontSize) - slot->bitmap_top, job.ink.y);
            x += int(slot->advance.x >> 6);
        }
        FT_Done_Face(face);
    });
}

} // namespace bench
