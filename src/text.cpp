// SPDX-License-Identifier: MIT
// Text: the writing direction, UTF-8, the pen that walks along a text, and the two things that are
// done on its way, measuring and drawing.
#include "text.h"

#include "text_font.h"

using namespace orn;

// ---- UTF-8 ----

struct LeadByte {
    uint32_t continuations;
    uint32_t mask; // of the code point
};

// Of sequences of two to six bytes, as RFC 2279 has them.
static LeadByte ClassifyLeadByte(uint8_t lead) {
    if (lead >= 0xC0 && lead < 0xE0)
        return {1, 0x7FF};
    if (lead >= 0xE0 && lead < 0xF0)
        return {2, 0xFFFF};
    if (lead >= 0xF0 && lead < 0xF8)
        return {3, 0x1FFFFF};
    if (lead >= 0xF8 && lead < 0xFC)
        return {4, 0x3FFFFFF};
    if (lead >= 0xFC && lead < 0xFE)
        return {5, 0x7FFFFFFF};
    return {0, 0}; // no lead byte: ends the text, as a 0 does
}

uint32_t orn::DecodeSequence(const char **text) {
    const auto *bytes = reinterpret_cast<const uint8_t *>(*text);
    const LeadByte lead = ClassifyLeadByte(bytes[0]);
    uint32_t codePoint = bytes[0];
    for (uint32_t i = 1; i <= lead.continuations; ++i) {
        if (bytes[i] == 0)
            return 0;
        codePoint = codePoint << 6 | (bytes[i] & 0x3F);
    }
    codePoint &= lead.mask;
    if (codePoint)
        *text += 1 + lead.continuations;
    return codePoint;
}

// ---- Direction ----

void OrnMinRenderSetFontDirection(OrnMinRenderFont *font, int32_t direction) {
    if (!font || font->direction == direction)
        return;
    font->direction = direction;
    FlushGlyphCache(font); // its bitmaps are turned for the old direction
}

// In a direction other than the normal one; values that are none count as normal.
static inline bool IsTurned(int32_t direction) {
    return IsVertical(direction) || direction == OrnMinRenderTextDirection::Inverted;
}

// A box whose cells are turned about the pen point. The fields wrap as bytes do.
static OrnMinRenderGlyphBox TurnBox(OrnMinRenderGlyphBox box, int32_t direction) {
    const auto wrap = [](int32_t value) { return static_cast<int8_t>(value); };
    switch (direction) {
    case OrnMinRenderTextDirection::Down:
        return {box.height, box.width, wrap(box.bearingY - box.height), wrap(-box.bearingX)};
    case OrnMinRenderTextDirection::Up:
        return {box.height, box.width, wrap(-box.bearingY), wrap(box.bearingX + box.width)};
    default:
        return {box.width, box.height, wrap(-(box.bearingX + box.width)),
                wrap(box.height - box.bearingY)};
    }
}

// The box of a record as it stands in the font's direction.
static inline OrnMinRenderGlyphBox RotateBoundingBox(const uint8_t *record, int32_t direction) {
    const OrnMinRenderGlyphBox box = UprightBox(record);
    return IsTurned(direction) ? TurnBox(box, direction) : box;
}

// ---- The pen, passed by value, so that it stays in registers while a text is laid out ----

static inline int32_t Moved(int32_t coordinate, int64_t step) {
    int32_t moved;
    if (__builtin_add_overflow(coordinate, step, &moved))
        return step < 0 ? INT32_MIN : INT32_MAX;
    return moved;
}

static OrnMinRenderPoint StartNewLine(const OrnMinRenderFont *font, OrnMinRenderPoint pen,
                                      int32_t lineStart) {
    const int64_t height = font->lineHeight;
    switch (font->direction) {
    case OrnMinRenderTextDirection::Down:
        return {Moved(pen.x, -height), lineStart};
    case OrnMinRenderTextDirection::Up:
        return {Moved(pen.x, height), lineStart};
    case OrnMinRenderTextDirection::Inverted:
        return {lineStart, Moved(pen.y, -height)};
    default:
        return {lineStart, Moved(pen.y, height)};
    }
}

static OrnMinRenderPoint AdvanceTurned(OrnMinRenderPoint pen, int32_t direction, int64_t advance) {
    switch (direction) {
    case OrnMinRenderTextDirection::Down:
        return {pen.x, Moved(pen.y, advance)};
    case OrnMinRenderTextDirection::Up:
        return {pen.x, Moved(pen.y, -advance)};
    default:
        return {Moved(pen.x, -advance), pen.y};
    }
}

static inline OrnMinRenderPoint AdvancePen(const OrnMinRenderFont *font, OrnMinRenderPoint pen,
                                           int32_t advance) {
    if (IsTurned(font->direction))
        return AdvanceTurned(pen, font->direction, advance);
    return {Moved(pen.x, advance), pen.y};
}

// ---- Layout ----

// Walks along a text from a pen and returns where the pen ends. For each code point but line feeds,
// place gives the glyph record, after it has done with it what the walk is for, or null where the
// font has no glyph.
template <class Place>
static inline OrnMinRenderPoint LayOut(const OrnMinRenderFont *font, const char *text,
                                       OrnMinRenderPoint pen, int32_t lineStart, Place place) {
    while (const uint32_t codePoint = NextCodePoint(&text)) {
        if (codePoint == kLineFeed)
            pen = StartNewLine(font, pen, lineStart);
        else if (const uint8_t *record = place(codePoint, pen))
            pen = AdvancePen(font, pen, GlyphAdvance(record));
    }
    return pen;
}

// ---- Measuring ----

// The rectangle so far, not yet cut to int32.
struct Bounds {
    int64_t left;
    int64_t top;
    int64_t right;
    int64_t bottom;
};

static inline void Extend(Bounds *bounds, int64_t x, int64_t y, OrnMinRenderGlyphBox box) {
    const int64_t left = x + box.bearingX;
    const int64_t top = y - box.bearingY;
    bounds->left = Min(bounds->left, left);
    bounds->top = Min(bounds->top, top);
    bounds->right = Max(bounds->right, left + box.width);
    bounds->bottom = Max(bounds->bottom, top + box.height);
}

// Upright text on its way, with coordinates that no text is long enough to lead out of 64 bits.
struct UprightMeasure {
    const OrnMinRenderFont *font;
    int64_t x; // of the pen
    int64_t y;
    Bounds bounds;
};

// ASCII beyond the line feed, as far as it is in the dense part of the font's index: one lookup and
// a few sums a glyph, in a loop without calls. Returns where another character comes.
static inline const char *MeasureAscii(UprightMeasure *to, const char *text) {
    constexpr uint32_t kFirst = kLineFeed + 1;
    const auto end = static_cast<uint32_t>(Min(to->font->index.denseSlots, 0x80));
    const uint32_t codes = end > kFirst ? end - kFirst : 0;
    const uint32_t *offsets = codes ? to->font->index.words + 1 + kFirst : nullptr;
    const uint8_t *data = to->font->glyphData;
    const uint32_t recordEnd = to->font->recordEnd;
    int64_t x = to->x;
    int64_t left = to->bounds.left;
    int64_t right = to->bounds.right;
    int64_t above = to->y - to->bounds.top;
    int64_t below = to->bounds.bottom - to->y;
    for (;; ++text) {
        const uint32_t code = static_cast<uint8_t>(*text) - kFirst;
        if (code >= codes)
            break;
        const uint32_t offset = offsets[code];
        if (offset >= recordEnd)
            continue;
        const auto *box = reinterpret_cast<const OrnMinRenderGlyphBox *>(data + offset);
        const int64_t start = x + box->bearingX;
        left = Min(left, start);
        right = Max(right, start + box->width);
        above = Max(above, box->bearingY);
        below = Max(below, int64_t{box->height} - box->bearingY);
        x += GlyphAdvance(data + offset);
    }
    to->x = x;
    to->bounds = {left, to->y - above, right, to->y + below};
    return text;
}

// Whether the pen has never come near the limits of int32, where it would have stopped. Each place
// of it lies within the reach of a glyph's box, or is left in the direction in which it was
// entered, by line feeds.
static inline bool StayedInside(const UprightMeasure &measure) {
    constexpr int64_t kLimit = INT32_MAX - 0x400;
    return Min(Min(measure.bounds.left, measure.bounds.top), Min(measure.x, measure.y)) > -kLimit &&
           Max(Max(measure.bounds.right, measure.bounds.bottom), Max(measure.x, measure.y)) <
               kLimit;
}

// False, and nothing changed, where the pen would come near the limits of int32.
static bool MeasureUpright(const OrnMinRenderFont *font, const char *text, OrnMinRenderPoint *pen,
                           int32_t lineStart, OrnMinRenderRect *rect) {
    UprightMeasure measure = {font, pen->x, pen->y, {pen->x, pen->y, pen->x, pen->y}};
    for (;;) {
        text = MeasureAscii(&measure, text);
        const uint32_t codePoint = NextCodePoint(&text);
        if (codePoint == 0)
            break;
        if (codePoint == kLineFeed) {
            measure.x = lineStart;
            measure.y += font->lineHeight;
        } else if (const uint8_t *record = FindRecord(font, codePoint)) {
            Extend(&measure.bounds, measure.x, measure.y, UprightBox(record));
            measure.x += GlyphAdvance(record);
        }
    }
    if (!StayedInside(measure))
        return false;
    *pen = {static_cast<int32_t>(measure.x), static_cast<int32_t>(measure.y)};
    const Bounds &bounds = measure.bounds;
    *rect = {static_cast<int32_t>(bounds.left), static_cast<int32_t>(bounds.top),
             static_cast<int32_t>(bounds.right), static_cast<int32_t>(bounds.bottom)};
    return true;
}

static void MeasureAny(const OrnMinRenderFont *font, const char *text, OrnMinRenderPoint *pen,
                       int32_t lineStart, OrnMinRenderRect *rect) {
    Bounds bounds = {pen->x, pen->y, pen->x, pen->y};
    *pen = LayOut(font, text, *pen, lineStart, [&](uint32_t codePoint, OrnMinRenderPoint at) {
        const uint8_t *record = FindRecord(font, codePoint);
        if (record)
            Extend(&bounds, at.x, at.y, RotateBoundingBox(record, font->direction));
        return record;
    });
    *rect = {Saturate(bounds.left), Saturate(bounds.top), Saturate(bounds.right),
             Saturate(bounds.bottom)};
}

void OrnMinRenderGetTextRect(OrnMinRenderContext *, const OrnMinRenderFont *font, const char *text,
                             OrnMinRenderPoint *pen, int32_t lineStart, OrnMinRenderRect *rect) {
    if (!rect || !pen)
        return;
    *rect = {pen->x, pen->y, pen->x, pen->y};
    if (!text || !font)
        return;
    if (IsTurned(font->direction) || !MeasureUpright(font, text, pen, lineStart, rect))
        MeasureAny(font, text, pen, lineStart, rect);
}

// ---- Drawing ----

static inline PlacedBitmap PlaceFill(const OrnMinRenderFont *font, const OrnMinRenderGlyph *glyph,
                                     OrnMinRenderPoint pen) {
    return {RotateBoundingBox(glyph->record, font->direction), glyph->bitmap, glyph->bitmapWords,
            pen};
}

void OrnMinRenderDrawTextY8(OrnMinRenderContext *, const OrnMinRenderImage *image,
                            OrnMinRenderFont *font, const char *text, OrnMinRenderPoint *pen,
                            int32_t lineStart, uint8_t luma) {
    if (!text || !image || !font || !pen)
        return;
    const kernels::Set set = kernels::Best();
    *pen = LayOut(font, text, *pen, lineStart,
                  [=](uint32_t codePoint, OrnMinRenderPoint at) -> const uint8_t * {
                      const OrnMinRenderGlyph *glyph = GetGlyph(font, codePoint);
                      if (!glyph)
                          return nullptr;
                      Stamp(PlaceFill(font, glyph, at), image, luma, set);
                      return glyph->record;
                  });
}

// A fill is held back until the outline of the next glyph is drawn, so that it lies on top.
void OrnMinRenderDrawOutlineTextY8(OrnMinRenderContext *, const OrnMinRenderImage *image,
                                   OrnMinRenderFont *font, const char *text, OrnMinRenderPoint *pen,
                                   int32_t lineStart, uint8_t outline, int32_t fill) {
    if (!text || !image || !font || !pen)
        return;
    const kernels::Set set = kernels::Best();
    const auto fillLuma = static_cast<uint8_t>(fill);
    PlacedBitmap pending = {};
    *pen = LayOut(font, text, *pen, lineStart,
                  [&](uint32_t codePoint, OrnMinRenderPoint at) -> const uint8_t * {
                      const OrnMinRenderGlyph *glyph = GetGlyph(font, codePoint);
                      if (!glyph)
                          return nullptr;
                      const PlacedBitmap current = PlaceFill(font, glyph, at);
                      Stamp(PlaceOutline(glyph, current), image, outline, set);
                      Stamp(pending, image, fillLuma, set);
                      pending = current;
                      return glyph->record;
                  });
    Stamp(pending, image, fillLuma, set);
}
