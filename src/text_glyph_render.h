// SPDX-License-Identifier: MIT
// Glyphs as bitmaps: the fields of a glyph record, its decoding into a fill and an outline turned
// for a writing direction, and the stamping of either into the luma plane.
#pragma once

#include "cbf.h"
#include "kernels/kernels.h"
#include "text_huffman.h"

namespace orn {

// ---- Glyph records, whose head must lie in memory ----

inline OrnMinRenderGlyphBox UprightBox(const uint8_t *record) {
    OrnMinRenderGlyphBox box;
    memcpy(&box, record, sizeof box); // four signed bytes, as in the record
    return box;
}

inline int32_t GlyphAdvance(const uint8_t *record) {
    return static_cast<int16_t>(LittleEndian16(record + cbf::kGlyphAdvanceAt));
}

// Of coded bits; none where the record has 0 or less.
inline uint32_t GlyphBitCount(const uint8_t *record) {
    const auto count = static_cast<int16_t>(LittleEndian16(record + cbf::kGlyphBitCountAt));
    return count > 0 ? static_cast<uint32_t>(count) : 0;
}

// ---- Decoding ----

// Turned by a quarter: rows and columns change places.
inline bool IsVertical(int32_t direction) {
    return direction == OrnMinRenderTextDirection::Down ||
           direction == OrnMinRenderTextDirection::Up;
}

// What decoding a glyph takes of its font.
struct GlyphCoding {
    const HuffLut *const *huffLuts; // background runs, ink runs; null where a table is missing
    int32_t direction;
    const uint8_t *end; // of what may be read, not before the record: coded runs beyond it are 0
    kernels::Set set;   // that stamps the bitmaps
};

// Decodes the glyph whose record is set into new bitmaps, without looking at its other fields: its
// fill, whose memory is the caller's, and its outline. A bitmap of one word a row is prepared for
// stamping: what the set needs stands behind its words. False, with neither, when the memory for
// the fill was short; without memory for the outline there is none. A record with a negative width
// or height has neither, nor has one whose head reaches past the coding's end.
bool RenderGlyph(const GlyphCoding &coding, OrnMinRenderGlyph *glyph);

// ---- Stamping ----

// A bitmap at its place. A null one is nothing to draw.
struct PlacedBitmap {
    OrnMinRenderGlyphBox box;
    const uint32_t *bitmap;
    uint32_t words;
    OrnMinRenderPoint pen;
};

// Stamps a bitmap of any size, clipped to the image.
void StampClipped(const PlacedBitmap &placed, const OrnMinRenderImage *image, uint8_t luma,
                  kernels::Set set);

// Most glyphs are at most a word wide and lie wholly inside the frame: those need no clipping. Only
// for bitmaps that RenderGlyph has made.
inline bool StampInside(const PlacedBitmap &placed, const OrnMinRenderImage *image, uint8_t luma,
                        kernels::Set set) {
    const int32_t width = placed.box.width;
    const int32_t height = placed.box.height;
    const int64_t x0 = int64_t{placed.pen.x} + placed.box.bearingX;
    const int64_t y0 = int64_t{placed.pen.y} - placed.box.bearingY;
    const bool inside = x0 >= 0 && y0 >= 0 && x0 + width <= image->width &&
                        y0 + height <= image->height && image->yPlane;
    const bool narrow = width > 0 && width <= kWordBits && height == int64_t{placed.words};
    if (!inside || !narrow)
        return false;
    kernels::PaintNarrowMask(LumaAt(image, x0, y0), static_cast<ptrdiff_t>(image->stride),
                             placed.bitmap, height, BitRange(0, width), LumaPattern(luma), set);
    return true;
}

inline void Stamp(const PlacedBitmap &placed, const OrnMinRenderImage *image, uint8_t luma,
                  kernels::Set set) {
    if (placed.bitmap && !StampInside(placed, image, luma, set))
        StampClipped(placed, image, luma, set);
}

// The place of a glyph's outline, given that of its fill. The fields wrap as bytes do.
inline PlacedBitmap PlaceOutline(const OrnMinRenderGlyph *glyph, const PlacedBitmap &fill) {
    const auto wrap = [](int32_t value) { return static_cast<int8_t>(value); };
    const OrnMinRenderGlyphBox box = {
        wrap(fill.box.width + cbf::kOutlineGrowth), wrap(fill.box.height + cbf::kOutlineGrowth),
        wrap(fill.box.bearingX - cbf::kOutlineLeft), wrap(fill.box.bearingY + cbf::kOutlineAbove)};
    return {box, glyph->outline, glyph->outlineWords, fill.pen};
}

} // namespace orn
