// Glyphs as bitmaps: a glyph record's coded runs become a 1-bit bitmap turned for the writing
// direction, the outline is derived from that bitmap, and either is stamped into the luma plane.
#include "pixop.h"
#include "text.h"

#include <stdlib.h>

// Rows of whole words, the least significant bit leftmost.
struct Bitmap {
    uint32_t *words;
    int32_t columns;
    int32_t rows;
    int32_t pitch; // words per row
};

// ---- Decoding ----

static void SetRow(const Bitmap *bitmap, int32_t y, int32_t first, int32_t end) {
    uint32_t *row = bitmap->words + y * bitmap->pitch;
    for (int32_t x = first; x < end;) {
        const int32_t wordEnd = static_cast<int32_t>(Min(end, (x / 32 + 1) * 32));
        row[x / 32] |= BitRange(x % 32, wordEnd - x / 32 * 32);
        x = wordEnd;
    }
}

static void SetColumn(const Bitmap *bitmap, int32_t x, int32_t first, int32_t end) {
    for (int32_t y = first; y < end; ++y)
        bitmap->words[y * bitmap->pitch + x / 32] |= 1u << x % 32;
}

// Sets ink at columns first..end - 1 of an upright row, width and height being the upright size.
static void SetTurned(const Bitmap *bitmap, int32_t direction, int32_t width, int32_t height,
                      int32_t row, int32_t first, int32_t end) {
    switch (direction) {
    case OrnMinRenderTextDirectionDown:
        SetColumn(bitmap, height - 1 - row, first, end);
        break;
    case OrnMinRenderTextDirectionUp:
        SetColumn(bitmap, row, width - end, width - first);
        break;
    case OrnMinRenderTextDirectionInverted:
        SetRow(bitmap, height - 1 - row, width - end, width - first);
        break;
    default:
        SetRow(bitmap, row, first, end);
    }
}

// Reads the run lengths of one glyph: background and ink in turn, background first.
struct RunReader {
    const OrnMinRenderFont *font;
    BitReader bits;
    uint64_t endBit; // where the coded runs end
    int32_t colour;  // of the next run: 0 background, 1 ink
};

struct Run {
    bool ink;
    uint32_t length; // pixels; 0xFFFFFFFF: all that remain
};

// What the coded runs leave over is one run of the colour whose turn it is. Where no run can be
// read, for want of a table or of progress, the rest is background.
static Run NextRun(RunReader *reader) {
    const bool ink = reader->colour == 1;
    if (reader->bits.position >= reader->endBit)
        return {ink, UINT32_MAX};
    const HuffLut *lut = reader->font->huffLuts[reader->colour];
    const uint64_t before = reader->bits.position;
    const int32_t symbol = lut ? WalkHuffLut(lut, &reader->bits) : 0;
    if (reader->bits.position == before)
        return {false, UINT32_MAX};
    reader->colour = 1 - reader->colour;
    return {ink, static_cast<uint32_t>(symbol)}; // a negative symbol covers any glyph
}

static RunReader StartRuns(const OrnMinRenderFont *font, const uint8_t *record) {
    const uint8_t *coded = record + kGlyphHeadBytes;
    const uint8_t *dataEnd = font->glyphData + font->glyphDataSize;
    const auto bitCount = static_cast<uint64_t>(Max(0, GlyphBitCount(record)));
    return {font, {coded, static_cast<uint64_t>(dataEnd - coded), 0}, bitCount, 0};
}

// Lays the runs of the upright glyph, which may cross its row ends, into the turned bitmap.
static void DecodeRuns(const OrnMinRenderFont *font, const uint8_t *record, const Bitmap *bitmap) {
    const OrnMinRenderGlyphBox box = UprightBox(record);
    const int32_t width = box.width;
    const int32_t pixels = width * box.height;
    RunReader reader = StartRuns(font, record);
    for (int32_t pixel = 0; pixel < pixels;) {
        const Run run = NextRun(&reader);
        const auto end = static_cast<int32_t>(Min(pixels, int64_t{pixel} + run.length));
        while (pixel < end) {
            const int32_t row = pixel / width;
            const auto pieceEnd = static_cast<int32_t>(Min(end, (row + 1) * width));
            if (run.ink)
                SetTurned(bitmap, font->direction, width, box.height, row, pixel - row * width,
                          pieceEnd - row * width);
            pixel = pieceEnd;
        }
    }
}

// ---- Outlines ----

constexpr int32_t kOutlineGrowth = 5; // columns and rows by which an outline exceeds its glyph

static uint32_t WordOrClear(const Bitmap *bitmap, int32_t row, int32_t word) {
    const bool inside = row >= 0 && row < bitmap->rows && word >= 0 && word < bitmap->pitch;
    return inside ? bitmap->words[row * bitmap->pitch + word] : 0;
}

// A word of a glyph row, or of the union of several, with the word to its left, so that shifts to
// the right pull in what precedes it.
static uint64_t WithLeftNeighbour(uint32_t word, uint32_t left) {
    return static_cast<uint64_t>(word) << 32 | left;
}

// Word w of outline row j: the glyph moved by (3, 2) and grown by two pixels each way, less itself.
static uint32_t OutlineWord(const Bitmap *fill, int32_t j, int32_t w) {
    uint32_t word = 0;
    uint32_t left = 0;
    for (int32_t row = j - 4; row <= j; ++row) {
        word |= WordOrClear(fill, row, w);
        left |= WordOrClear(fill, row, w - 1);
    }
    const uint64_t near = WithLeftNeighbour(word, left);
    const uint64_t grown = near << 1 | near << 2 | near << 3 | near << 4 | near << 5;
    const uint64_t own =
        WithLeftNeighbour(WordOrClear(fill, j - 2, w), WordOrClear(fill, j - 2, w - 1)) << 3;
    return static_cast<uint32_t>((grown & ~own) >> 32);
}

// Without the memory for it the glyph stays without outline.
static void RenderGlyphOutline(const Bitmap *fill, OrnMinRenderGlyph *glyph) {
    const int32_t rows = fill->rows + kOutlineGrowth;
    const int32_t pitch = WordsPerRow(fill->columns + kOutlineGrowth);
    const auto words = static_cast<uint32_t>(rows * pitch);
    glyph->outline = static_cast<uint32_t *>(malloc(words * sizeof(uint32_t)));
    if (!glyph->outline)
        return;
    glyph->outlineWords = words;
    for (int32_t j = 0; j < rows; ++j)
        for (int32_t w = 0; w < pitch; ++w)
            glyph->outline[j * pitch + w] = OutlineWord(fill, j, w);
}

// ---- Glyphs ----

static bool HasRecord(const OrnMinRenderFont *font, const uint8_t *record) {
    if (!font->glyphData)
        return false;
    const auto first = reinterpret_cast<uintptr_t>(font->glyphData);
    const auto address = reinterpret_cast<uintptr_t>(record);
    return address >= first && font->glyphDataSize >= kGlyphHeadBytes &&
           address - first <= font->glyphDataSize - kGlyphHeadBytes;
}

bool RenderGlyph(const OrnMinRenderFont *font, OrnMinRenderGlyph *glyph) {
    glyph->bitmap = nullptr;
    glyph->bitmapWords = 0;
    glyph->outline = nullptr;
    glyph->outlineWords = 0;
    if (!HasRecord(font, glyph->record))
        return true;
    const OrnMinRenderGlyphBox box = UprightBox(glyph->record);
    if (box.width < 0 || box.height < 0)
        return true;

    const bool vertical = IsVertical(font->direction);
    const int32_t columns = vertical ? box.height : box.width;
    const int32_t rows = vertical ? box.width : box.height;
    const int32_t pitch = WordsPerRow(columns);
    const auto words = static_cast<uint32_t>(rows * pitch);
    Bitmap fill = {nullptr, columns, rows, pitch};
    if (words > 0) {
        fill.words = static_cast<uint32_t *>(calloc(words, sizeof(uint32_t)));
        if (!fill.words)
            return false;
        DecodeRuns(font, glyph->record, &fill);
        glyph->bitmap = fill.words;
        glyph->bitmapWords = words;
    }
    RenderGlyphOutline(&fill, glyph);
    return true;
}

void OrnMinRenderTextRenderCacheGlyph(const OrnMinRenderFont *font, OrnMinRenderGlyph *glyph) {
    if (font && glyph && glyph->record)
        RenderGlyph(font, glyph);
}

// ---- Stamping ----

// A mask of which only so many words exist: whole rows of it, and what there is of the next. The
// rest counts as clear.
static void PaintCutMask(uint8_t *first, int64_t stride, Mask mask, int64_t words, const Ink &ink) {
    if (words <= 0)
        return;
    const int32_t wholeRows =
        static_cast<int32_t>((words + mask.pitch - mask.wordsPerRow) / mask.pitch);
    const auto rest = static_cast<int32_t>(words - int64_t{wholeRows} * mask.pitch);
    mask.rows = wholeRows;
    PaintMask(first, stride, mask, ink);
    if (rest <= 0)
        return;
    mask.words += wholeRows * ptrdiff_t{mask.pitch};
    mask.rows = 1;
    mask.wordsPerRow = rest;
    mask.lastWordBits = 0xFFFFFFFFu;
    PaintMask(first + static_cast<ptrdiff_t>(wholeRows * stride), stride, mask, ink);
}

void OrnMinRenderTextBitmap(const OrnMinRenderGlyphBox *box, const uint32_t *bitmap, uint32_t words,
                            const OrnMinRenderImage *image, const OrnMinRenderPoint *pen,
                            int32_t luma) {
    if (!box || !bitmap || !image || !image->yPlane || !pen)
        return;
    const int64_t x0 = int64_t{pen->x} + box->bearingX;
    const int64_t y0 = int64_t{pen->y} - box->bearingY;
    const auto firstColumn = static_cast<int32_t>(Max(0, Min(-x0, box->width)));
    const int64_t endColumn = Min(box->width, image->width - x0);
    const auto firstRow = static_cast<int32_t>(Max(0, Min(-y0, box->height)));
    const int64_t endRow = Min(box->height, image->height - y0);
    if (firstColumn >= endColumn || firstRow >= endRow)
        return;

    const int32_t firstWord = firstColumn / 32;
    const auto lastColumn = static_cast<int32_t>(endColumn - 1);
    const int32_t pitch = WordsPerRow(box->width);
    Mask mask = {bitmap + firstRow * pitch + firstWord,   pitch,
                 static_cast<int32_t>(endRow) - firstRow, lastColumn / 32 - firstWord + 1,
                 BitRange(firstColumn % 32, 32),          BitRange(0, lastColumn % 32 + 1)};
    const Ink ink = {LumaPattern(static_cast<uint8_t>(luma)), 1, false};
    uint8_t *first = LumaRow(image, y0 + firstRow) + static_cast<ptrdiff_t>(x0 + firstWord * 32);
    const int64_t wordsLeft = int64_t{words} - firstRow * pitch - firstWord;
    if (int64_t{mask.rows - 1} * pitch + mask.wordsPerRow <= wordsLeft)
        PaintMask(first, image->stride, mask, ink);
    else
        PaintCutMask(first, image->stride, mask, wordsLeft, ink);
}
