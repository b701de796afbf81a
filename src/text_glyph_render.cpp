// SPDX-License-Identifier: MIT
// Glyphs as bitmaps: a glyph record's coded runs become a 1-bit bitmap turned for the writing
// direction, the outline is derived from that bitmap, and either is stamped into the luma plane.
#include "text_glyph_render.h"

#include <stdlib.h>

using namespace orn;

// Rows of whole words, the least significant bit leftmost.
struct GlyphBitmap {
    uint32_t *words;
    int32_t columns;
    int32_t rows;
    int32_t pitch; // words per row
};

// ---- Runs ----

// Reads the run lengths of one glyph: background and ink in turn, background first.
struct RunReader {
    const HuffLut *const *huffLuts;
    BitReader bits;
    uint64_t endBit; // where the coded runs end
    int32_t colour;  // of the next run: 0 background, 1 ink
    bool stuck;      // the last walk took no bits
};

struct Run {
    bool ink;
    uint32_t length; // pixels; 0xFFFFFFFF: all that remain
};

// What the coded runs leave over is one run of the colour whose turn it is. A walk that takes no
// bits is an empty run; after two of them in turn, with nothing but such walks to come, the rest is
// background, and so it is where a table is missing.
static Run NextRun(RunReader *reader) {
    const bool ink = reader->colour == 1;
    if (reader->bits.position >= reader->endBit)
        return {ink, UINT32_MAX};
    const HuffLut *lut = reader->huffLuts[reader->colour];
    if (!lut)
        return {false, UINT32_MAX};
    const uint64_t before = reader->bits.position;
    const int32_t symbol = WalkHuffLut(lut, &reader->bits);
    const bool stuck = reader->bits.position == before;
    if (stuck && reader->stuck)
        return {false, UINT32_MAX};
    reader->stuck = stuck;
    reader->colour = 1 - reader->colour;
    return {ink, static_cast<uint32_t>(symbol)}; // a negative symbol covers any glyph
}

static RunReader StartRuns(const GlyphCoding &coding, const uint8_t *record) {
    const uint8_t *coded = record + cbf::kGlyphHeadBytes;
    return {coding.huffLuts,
            {coded, static_cast<uint64_t>(coding.end - coded), 0},
            GlyphBitCount(record),
            0,
            false};
}

// ---- Fills ----

static void SetColumn(const GlyphBitmap &bitmap, int32_t x, int32_t first, int32_t end) {
    for (int32_t y = first; y < end; ++y)
        bitmap.words[y * bitmap.pitch + x / kWordBits] |= 1u << x % kWordBits;
}

static void SetRow(const GlyphBitmap &bitmap, int32_t y, int32_t first, int32_t end) {
    SetBits(bitmap.words + y * bitmap.pitch, first, end);
}

// Sets ink at columns first..end - 1 of an upright row, width and height being the upright size.
static void SetTurned(const GlyphBitmap &bitmap, int32_t direction, OrnMinRenderGlyphBox upright,
                      int32_t row, int32_t first, int32_t end) {
    switch (direction) {
    case OrnMinRenderTextDirection::Down:
        SetColumn(bitmap, upright.height - 1 - row, first, end);
        break;
    case OrnMinRenderTextDirection::Up:
        SetColumn(bitmap, row, upright.width - end, upright.width - first);
        break;
    case OrnMinRenderTextDirection::Inverted:
        SetRow(bitmap, upright.height - 1 - row, upright.width - end, upright.width - first);
        break;
    default:
        SetRow(bitmap, row, first, end);
    }
}

// Lays the runs of the upright glyph, which may cross its row ends, into the turned bitmap. Ends,
// since of any three runs in turn one covers a pixel, takes bits or is the last.
static void DecodeRuns(const GlyphCoding &coding, const uint8_t *record,
                       const GlyphBitmap &bitmap) {
    const OrnMinRenderGlyphBox box = UprightBox(record);
    const int32_t width = box.width;
    const int32_t pixels = width * box.height;
    RunReader reader = StartRuns(coding, record);
    for (int32_t pixel = 0; pixel < pixels;) {
        const Run run = NextRun(&reader);
        const auto end = static_cast<int32_t>(Min(pixels, int64_t{pixel} + run.length));
        while (pixel < end) {
            const int32_t row = pixel / width;
            const auto pieceEnd = static_cast<int32_t>(Min(end, (row + 1) * width));
            if (run.ink)
                SetTurned(bitmap, coding.direction, box, row, pixel - row * width,
                          pieceEnd - row * width);
            pixel = pieceEnd;
        }
    }
}

// ---- Outlines ----

constexpr int32_t kReach = 2; // pixels by which an outline reaches beyond the ink

static uint32_t WordOrClear(const GlyphBitmap &bitmap, int32_t row, int32_t word) {
    const bool inside = row >= 0 && row < bitmap.rows && word >= 0 && word < bitmap.pitch;
    return inside ? bitmap.words[row * bitmap.pitch + word] : 0;
}

// A word of a glyph row, or of the union of several, with the word to its left, so that shifts to
// the right pull in what precedes it.
static uint64_t WithLeftNeighbour(uint32_t word, uint32_t left) {
    return static_cast<uint64_t>(word) << 32 | left;
}

// Word w of outline row j: the glyph moved by kOutlineLeft and kOutlineAbove and grown by kReach
// pixels each way, less itself.
static uint32_t OutlineWord(const GlyphBitmap &fill, int32_t j, int32_t w) {
    const int32_t centre = j - cbf::kOutlineAbove;
    uint32_t word = 0;
    uint32_t left = 0;
    for (int32_t row = centre - kReach; row <= centre + kReach; ++row) {
        word |= WordOrClear(fill, row, w);
        left |= WordOrClear(fill, row, w - 1);
    }
    const uint64_t near = WithLeftNeighbour(word, left);
    uint64_t grown = 0;
    for (int32_t shift = cbf::kOutlineLeft - kReach; shift <= cbf::kOutlineLeft + kReach; ++shift)
        grown |= near << shift;
    const uint64_t own =
        WithLeftNeighbour(WordOrClear(fill, centre, w), WordOrClear(fill, centre, w - 1))
        << cbf::kOutlineLeft;
    return static_cast<uint32_t>((grown & ~own) >> 32);
}

// The outline, in the given words.
static GlyphBitmap RenderGlyphOutline(const GlyphBitmap &fill, uint32_t *words) {
    const int32_t rows = fill.rows + cbf::kOutlineGrowth;
    const int32_t columns = fill.columns + cbf::kOutlineGrowth;
    const int32_t pitch = WordsPerRow(columns);
    for (int32_t j = 0; j < rows; ++j)
        for (int32_t w = 0; w < pitch; ++w)
            words[j * pitch + w] = OutlineWord(fill, j, w);
    return {words, columns, rows, pitch};
}

// ---- Glyphs ----

// Bitmaps are made on the stack, and kept once it is known how much memory stamping adds to them.
constexpr int32_t kMaxSide = cbf::kMaxGlyphSide + cbf::kOutlineGrowth;
constexpr int32_t kMaxBitmapWords = kMaxSide + NarrowRoom(kMaxSide);
static_assert(kMaxSide <= kMaxNarrowRows, "");
static_assert(kMaxSide * ((kMaxSide + kWordBits - 1) / kWordBits) <= kMaxBitmapWords, "");

static uint32_t CountWords(const GlyphBitmap &bitmap) {
    return static_cast<uint32_t>(bitmap.rows * bitmap.pitch);
}

// The fill of a record with neither side negative, in the given words.
static GlyphBitmap RenderFill(const GlyphCoding &coding, const uint8_t *record, uint32_t *words) {
    const OrnMinRenderGlyphBox box = UprightBox(record);
    const bool vertical = IsVertical(coding.direction);
    const int32_t columns = vertical ? box.height : box.width;
    const int32_t rows = vertical ? box.width : box.height;
    const GlyphBitmap fill = {words, columns, rows, WordsPerRow(columns)};
    memset(words, 0, CountWords(fill) * sizeof *words);
    if (CountWords(fill) > 0)
        DecodeRuns(coding, record, fill);
    return fill;
}

// A copy in memory of its own; null when that was short.
static uint32_t *Keep(const GlyphBitmap &bitmap, kernels::Set set) {
    size_t words = CountWords(bitmap);
    if (bitmap.pitch == 1)
        words += static_cast<size_t>(kernels::PrepareNarrowMask(bitmap.words, bitmap.rows, set));
    auto *kept = static_cast<uint32_t *>(malloc(words * sizeof(uint32_t)));
    if (kept)
        memcpy(kept, bitmap.words, words * sizeof(uint32_t));
    return kept;
}

bool orn::RenderGlyph(const GlyphCoding &coding, OrnMinRenderGlyph *glyph) {
    glyph->bitmap = nullptr;
    glyph->bitmapWords = 0;
    glyph->outline = nullptr;
    glyph->outlineWords = 0;
    if (coding.end - glyph->record < ptrdiff_t{cbf::kGlyphHeadBytes})
        return true;
    const OrnMinRenderGlyphBox box = UprightBox(glyph->record);
    if (box.width < 0 || box.height < 0)
        return true;

    uint32_t words[2][kMaxBitmapWords];
    const GlyphBitmap fill = RenderFill(coding, glyph->record, words[0]);
    if (CountWords(fill) > 0) {
        glyph->bitmap = Keep(fill, coding.set);
        if (!glyph->bitmap)
            return false;
        glyph->bitmapWords = CountWords(fill);
    }
    const GlyphBitmap outline = RenderGlyphOutline(fill, words[1]);
    glyph->outline = Keep(outline, coding.set);
    if (glyph->outline)
        glyph->outlineWords = CountWords(outline);
    return true;
}

// ---- Stamping ----

// A mask of which only so many words exist: whole rows of it, and what there is of the next. The
// rest counts as clear.
static void PaintCutMask(const Plane &plane, Mask mask, int64_t words, const Ink &ink,
                         kernels::Set set) {
    if (words <= 0)
        return;
    const int32_t wholeRows =
        static_cast<int32_t>((words + mask.pitch - mask.wordsPerRow) / mask.pitch);
    const auto rest = static_cast<int32_t>(words - int64_t{wholeRows} * mask.pitch);
    mask.rows = wholeRows;
    kernels::PaintMask(plane, mask, ink, set);
    if (rest <= 0)
        return;
    mask.words += wholeRows * ptrdiff_t{mask.pitch};
    mask.rows = 1;
    mask.wordsPerRow = rest;
    mask.lastWordBits = 0xFFFFFFFFu;
    kernels::PaintMask(PlaneFrom(plane, 0, wholeRows), mask, ink, set);
}

void orn::StampClipped(const PlacedBitmap &placed, const OrnMinRenderImage *image, uint8_t luma,
                       kernels::Set set) {
    const OrnMinRenderGlyphBox box = placed.box;
    if (!image->yPlane)
        return;
    const int64_t x0 = int64_t{placed.pen.x} + box.bearingX;
    const int64_t y0 = int64_t{placed.pen.y} - box.bearingY;
    const auto firstColumn = static_cast<int32_t>(Max(0, Min(-x0, box.width)));
    const int64_t endColumn = Min(box.width, image->width - x0);
    const auto firstRow = static_cast<int32_t>(Max(0, Min(-y0, box.height)));
    const int64_t endRow = Min(box.height, image->height - y0);
    if (firstColumn >= endColumn || firstRow >= endRow)
        return;

    const int32_t firstWord = firstColumn / kWordBits;
    const auto lastColumn = static_cast<int32_t>(endColumn - 1);
    const int32_t pitch = WordsPerRow(box.width);
    const Mask mask = {placed.bitmap + firstRow * pitch + firstWord,
                       pitch,
                       static_cast<int32_t>(endRow) - firstRow,
                       lastColumn / kWordBits - firstWord + 1,
                       BitRange(firstColumn % kWordBits, kWordBits),
                       BitRange(0, lastColumn % kWordBits + 1),
                       nullptr};
    const Ink ink = {LumaPattern(luma), false};
    const Plane plane = PlaneFrom(LumaPlane(image), x0 + firstWord * kWordBits, y0 + firstRow);
    const int64_t wordsLeft = int64_t{placed.words} - firstRow * pitch - firstWord;
    if (int64_t{mask.rows - 1} * pitch + mask.wordsPerRow <= wordsLeft)
        kernels::PaintMask(plane, mask, ink, set);
    else
        PaintCutMask(plane, mask, wordsLeft, ink, set);
}

void OrnMinRenderTextBitmap(const OrnMinRenderGlyphBox *box, const uint32_t *bitmap, uint32_t words,
                            const OrnMinRenderImage *image, const OrnMinRenderPoint *pen,
                            int32_t luma) {
    if (box && bitmap && image && pen)
        StampClipped({*box, bitmap, words, *pen}, image, static_cast<uint8_t>(luma),
                     kernels::Best());
}
