// Pixel writers, span painters and the rectangle building blocks, none of which clips; and the
// calls that put pictures into a frame, the blit and the scaled bitmaps, which do.
#include "pixop.h"

void OrnMinRenderSetYPixel(const OrnMinRenderImage *image, int32_t x, int32_t y, uint8_t luma) {
    LumaRow(image, y)[x] = luma;
}

void OrnMinRenderSetUVPixel(const OrnMinRenderImage *image, int32_t cx, int32_t cy,
                            OrnMinRenderColour colour) {
    StoreChroma(ChromaRow(image, cy) + 2 * ptrdiff_t{cx}, colour);
}

// The number of spans in a list of count points; an odd last point still begins a span.
static int32_t SpanCount(int32_t count) {
    return count <= 0 ? 0 : count / 2 + count % 2;
}

void OrnMinRenderDrawScanlinesY8(const OrnMinRenderImage *image, const OrnMinRenderScanline *spans,
                                 int32_t count, uint8_t luma) {
    PaintSpans(LumaPlane(image), spans, SpanCount(count), LumaPattern(luma));
}

void OrnMinRenderDrawScanlinesUV(const OrnMinRenderImage *image, const OrnMinRenderScanline *spans,
                                 int32_t count, OrnMinRenderColour colour) {
    PaintSpans(ChromaPlane(image), spans, SpanCount(count), ChromaPattern(colour));
}

// A rectangle's spans, one for each row, are all alike, and so are painted without being listed.

static bool IsEmpty(const OrnMinRenderRect *rect) {
    return rect->left >= rect->right || rect->top >= rect->bottom;
}

void OrnMinRenderFillRectY8Impl(OrnMinRenderContext *, const OrnMinRenderImage *image,
                                const OrnMinRenderRect *rect, uint8_t luma) {
    if (!image->yPlane || IsEmpty(rect))
        return;
    FillRows(LumaRow(image, rect->top) + rect->left, image->stride,
             int64_t{rect->bottom} - rect->top, int64_t{rect->right} - rect->left,
             LumaPattern(luma));
}

void OrnMinRenderFillRectUVImpl(OrnMinRenderContext *, const OrnMinRenderImage *image,
                                const OrnMinRenderRect *rect, OrnMinRenderColour colour) {
    // An empty rectangle at odd coordinates would round outward to a sample that holds none of it.
    if (!image->uvPlane || IsEmpty(rect))
        return;
    const int64_t left = rect->left / 2;
    const int64_t top = rect->top / 2;
    FillRows(ChromaRow(image, top) + static_cast<ptrdiff_t>(2 * left), image->stride,
             ChromaSize(rect->bottom) - top, 2 * (ChromaSize(rect->right) - left),
             ChromaPattern(colour));
}

// ---- Blit ----

struct PlaneBlock {
    int64_t rows;
    size_t bytes; // of each row
};

static void CopyRows(uint8_t *to, int64_t toStride, const uint8_t *from, int64_t fromStride,
                     PlaneBlock block) {
    const auto bytes = static_cast<int64_t>(block.bytes);
    if (toStride == bytes && fromStride == bytes) { // no gap between the rows
        block.bytes *= static_cast<size_t>(block.rows);
        block.rows = 1;
    }
    for (int64_t row = 0; row < block.rows; ++row)
        memcpy(to + static_cast<ptrdiff_t>(row * toStride),
               from + static_cast<ptrdiff_t>(row * fromStride), block.bytes);
}

void OrnMinRenderBltYUV420SP(const OrnMinRenderImage *image, OrnMinRenderRect rect,
                             const OrnMinRenderImage *source, OrnMinRenderPoint position) {
    if (!image || !source)
        return;
    // A start outside either image moves the start in the other one along.
    const int64_t outsideX = Max(0, Max(-int64_t{rect.left}, -int64_t{position.x}));
    const int64_t outsideY = Max(0, Max(-int64_t{rect.top}, -int64_t{position.y}));
    const int64_t x = rect.left + outsideX;
    const int64_t y = rect.top + outsideY;
    const int64_t sourceX = position.x + outsideX;
    const int64_t sourceY = position.y + outsideY;
    const int64_t width = Min(Min(image->width, rect.right) - x, source->width - sourceX);
    const int64_t height = Min(Min(image->height, rect.bottom) - y, source->height - sourceY);
    if (width <= 0 || height <= 0)
        return;
    const auto bytes = static_cast<size_t>(width);
    if (image->yPlane && source->yPlane)
        CopyRows(LumaRow(image, y) + x, image->stride, LumaRow(source, sourceY) + sourceX,
                 source->stride, {height, bytes});
    // Whole chroma samples from the one that holds the first pixel; an odd last row has none.
    if (image->uvPlane && source->uvPlane)
        CopyRows(ChromaRow(image, y / 2) + x / 2 * 2, image->stride,
                 ChromaRow(source, sourceY / 2) + sourceX / 2 * 2, source->stride,
                 {height / 2, bytes});
}

// ---- Bitmaps ----

const int64_t WordWidth = 32;

// How one side of a bitmap is spread over a side of its rectangle: sample i of the rectangle shows
// column (or row) i * step / 65536 of the bitmap.
struct Sampling {
    int64_t origin; // of the rectangle in the plane
    int64_t first;  // the samples inside the plane
    int64_t end;
    int64_t step;
};

constexpr int64_t kSameSize = 65536; // the step at which every sample shows a column of its own
constexpr int32_t kMaxBitmapSide = 32767; // times 65536 stays below 2^31

static bool MakeSampling(int64_t from, int64_t to, int32_t bitmapSide, int32_t planeSide,
                         Sampling *sampling) {
    if (to <= from || bitmapSide < 1 || bitmapSide > kMaxBitmapSide)
        return false;
    const int64_t size = to - from;
    *sampling = {from, Max(0, -from), Min(size, planeSide - from),
                 int64_t{bitmapSide} * 65536 / size};
    return sampling->first < sampling->end;
}

struct BitmapView {
    const uint32_t *words; // the most significant bit leftmost
    int32_t width;
    int32_t height;
};

// The first sample that shows the given column (or row) of the bitmap, or a later one.
static int64_t FirstSampleOf(const Sampling &sampling, uint32_t index) {
    if (index == 0)
        return 0;
    if (sampling.step == 0) // a bitmap of one column over more than 65536 samples
        return sampling.end;
    if (sampling.step == kSameSize)
        return index;
    const auto step = static_cast<uint32_t>(sampling.step);
    return ((index << 16) - 1) / step + 1;
}

// A piece of some rows of the plane, as a mask.
constexpr int32_t kPieceSamples = 512;
constexpr int32_t kPieceWords = kPieceSamples / 32;
constexpr int32_t kPieceRows = 16;

struct MaskPiece {
    int64_t first; // sample of bit 0
    int32_t samples;
    uint32_t words[kPieceRows * kPieceWords];
};

// One bit for each sample; the choice where the bitmap is reduced.
static void SampleBits(uint32_t *words, const MaskPiece &piece, const uint32_t *bits,
                       const Sampling &columns) {
    int64_t position = piece.first * columns.step;
    for (int32_t i = 0; i < piece.samples; i += 32) {
        const auto count = static_cast<int32_t>(Min(32, piece.samples - i));
        uint32_t word = 0;
        for (int32_t k = 0; k < count; ++k, position += columns.step) {
            const auto column = static_cast<uint32_t>(position >> 16);
            word |= (bits[column / 32] >> (31 - column % 32) & 1) << k;
        }
        words[i / 32] = word;
    }
}

static void SetBits(uint32_t *words, int32_t first, int32_t end) {
    for (int32_t i = first; i < end;) {
        const auto wordEnd = static_cast<int32_t>(Min(end, (i / 32 + 1) * 32));
        words[i / 32] |= BitRange(i % 32, wordEnd - i / 32 * 32);
        i = wordEnd;
    }
}

static uint32_t ReverseBits(uint32_t word) {
    word = (word >> 1 & 0x55555555) | (word & 0x55555555) << 1;
    word = (word >> 2 & 0x33333333) | (word & 0x33333333) << 2;
    word = (word >> 4 & 0x0F0F0F0F) | (word & 0x0F0F0F0F) << 4;
    return __builtin_bswap32(word);
}

// The bits of 32 columns from the given one on, the first of them the most significant; those past
// the row's words are clear.
static uint32_t ColumnBits(const uint32_t *bits, int64_t column, int64_t pitch) {
    const int64_t index = column / 32;
    const auto shift = static_cast<uint32_t>(column % 32);
    const uint32_t next = index + 1 < pitch ? bits[index + 1] : 0;
    return shift ? bits[index] << shift | next >> (32 - shift) : bits[index];
}

// The columns as they are; the choice where the bitmap keeps its width.
static void CopyBits(uint32_t *words, const MaskPiece &piece, const uint32_t *bits, int64_t pitch) {
    for (int32_t i = 0; i < piece.samples; i += 32)
        words[i / 32] = ReverseBits(ColumnBits(bits, piece.first + i, pitch));
    const int32_t rest = piece.samples % 32;
    if (rest)
        words[piece.samples / 32] &= BitRange(0, rest);
}

// Where the columns of a piece begin, in samples of the piece: for a bitmap that is not reduced, so
// that a piece shows at most so many columns.
struct ColumnEdges {
    int32_t firstColumn;
    int32_t endColumn;
    int32_t samples[kPieceSamples + 2]; // of firstColumn..endColumn
};

static void FindEdges(ColumnEdges *edges, const MaskPiece &piece, const Sampling &columns) {
    const int64_t last = piece.first + piece.samples - 1;
    edges->firstColumn = static_cast<int32_t>(piece.first * columns.step >> 16);
    edges->endColumn = static_cast<int32_t>(last * columns.step >> 16) + 1;
    for (int32_t c = edges->firstColumn; c <= edges->endColumn; ++c) {
        const int64_t sample = FirstSampleOf(columns, static_cast<uint32_t>(c)) - piece.first;
        edges->samples[c - edges->firstColumn] =
            static_cast<int32_t>(Max(0, Min(sample, piece.samples)));
    }
}

// One range of bits for each run of set columns, word by word; the choice where the bitmap is
// enlarged.
static void SpreadRuns(uint32_t *words, int32_t samples, const uint32_t *bits,
                       const ColumnEdges &edges) {
    memset(words, 0, static_cast<size_t>(WordsPerRow(samples)) * sizeof *words);
    const auto sampleOf = [&](int32_t column) {
        const int32_t inside =
            static_cast<int32_t>(Max(edges.firstColumn, Min(column, edges.endColumn)));
        return edges.samples[inside - edges.firstColumn];
    };
    for (int32_t base = edges.firstColumn / 32 * 32; base < edges.endColumn; base += 32) {
        uint32_t word = bits[base / 32];
        while (word) {
            const int start = __builtin_clz(word);
            const uint32_t rest = ~(word << start);
            const int end = rest ? start + __builtin_clz(rest) : 32;
            SetBits(words, sampleOf(base + start), sampleOf(base + end));
            word = end < 32 ? word & (0xFFFFFFFFu >> end) : 0;
        }
    }
}

// Turns a row of the bitmap into a row of the piece.
static void ExpandRow(uint32_t *words, const MaskPiece &piece, const uint32_t *bits,
                      const BitmapView &bitmap, const Sampling &columns, const ColumnEdges &edges) {
    if (columns.step < kSameSize)
        SpreadRuns(words, piece.samples, bits, edges);
    else if (columns.step == kSameSize)
        CopyBits(words, piece, bits, WordsPerRow(bitmap.width));
    else
        SampleBits(words, piece, bits, columns);
}

// Each row of the bitmap becomes a mask once: for all the rows of the plane that show it, where the
// bitmap is enlarged, and together with others, where every row of the plane shows another.
static void PaintColumns(const Plane &plane, const BitmapView &bitmap, MaskPiece *piece,
                         const Sampling &columns, const Sampling &rows, const Ink &ink) {
    const int64_t pitch = WordsPerRow(bitmap.width);
    const int32_t batch = rows.step < kSameSize ? 1 : kPieceRows;
    uint8_t *const first =
        plane.first + static_cast<ptrdiff_t>(columns.origin + piece->first) * ink.sampleBytes;
    ColumnEdges edges;
    edges.firstColumn = edges.endColumn = 0;
    if (columns.step < kSameSize)
        FindEdges(&edges, *piece, columns);
    for (int64_t begin = rows.first, end = begin; begin < rows.end; begin = end) {
        for (int32_t i = 0; i < batch && end < rows.end; ++i) {
            const int64_t source = end * rows.step >> 16;
            ExpandRow(piece->words + i * kPieceWords, *piece, bitmap.words + source * pitch, bitmap,
                      columns, edges);
            end = Min(rows.end, FirstSampleOf(rows, static_cast<uint32_t>(source + 1)));
        }
        const Mask mask = {piece->words,
                           batch == 1 ? 0 : kPieceWords,
                           static_cast<int32_t>(end - begin),
                           WordsPerRow(piece->samples),
                           0xFFFFFFFFu,
                           0xFFFFFFFFu};
        PaintMask(first + static_cast<ptrdiff_t>((rows.origin + begin) * plane.stride),
                  plane.stride, mask, ink);
    }
}

static void PaintBitmap(const Plane &plane, const BitmapView &bitmap, const Sampling &columns,
                        const Sampling &rows, const Ink &ink) {
    MaskPiece piece;
    for (piece.first = columns.first; piece.first < columns.end; piece.first += kPieceSamples) {
        piece.samples = static_cast<int32_t>(Min(kPieceSamples, columns.end - piece.first));
        PaintColumns(plane, bitmap, &piece, columns, rows, ink);
    }
}

static void DrawBitmapLuma(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                           const BitmapView &bitmap, uint8_t luma, bool half) {
    Sampling columns;
    Sampling rows;
    if (image->yPlane &&
        MakeSampling(rect->left, rect->right, bitmap.width, image->width, &columns) &&
        MakeSampling(rect->top, rect->bottom, bitmap.height, image->height, &rows))
        PaintBitmap(LumaPlane(image), bitmap, columns, rows, {LumaPattern(luma), 1, half});
}

// The bitmap is sampled afresh onto the chroma grid, over the halved rectangle.
static void DrawBitmapChroma(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                             const BitmapView &bitmap, OrnMinRenderColour colour, bool half) {
    Sampling columns;
    Sampling rows;
    if (image->uvPlane &&
        MakeSampling(rect->left / 2, rect->right / 2, bitmap.width, ChromaSize(image->width),
                     &columns) &&
        MakeSampling(rect->top / 2, rect->bottom / 2, bitmap.height, ChromaSize(image->height),
                     &rows))
        PaintBitmap(ChromaPlane(image), bitmap, columns, rows, {ChromaPattern(colour), 2, half});
}

void OrnMinRenderDrawBitmapY8(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                              int32_t width, int32_t height, const uint32_t *bits, uint8_t luma) {
    if (image && rect && bits)
        DrawBitmapLuma(image, rect, {bits, width, height}, luma, false);
}

static void DrawBitmap(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                       const BitmapView &bitmap, OrnMinRenderColour colour, bool half) {
    if (!image || !rect || !bitmap.words)
        return;
    DrawBitmapLuma(image, rect, bitmap, colour.y, half);
    DrawBitmapChroma(image, rect, bitmap, colour, half);
}

void OrnMinRenderDrawBitmapYUV420SP(const OrnMinRenderImage *image, const OrnMinRenderRect *rect,
                                    int32_t width, int32_t height, const uint32_t *bits,
                                    OrnMinRenderColour colour) {
    DrawBitmap(image, rect, {bits, width, height}, colour, false);
}

void OrnMinRenderDrawBitmapSemiTransparentYUV420SP(const OrnMinRenderImage *image,
                                                   const OrnMinRenderRect *rect, int32_t width,
                                                   int32_t height, const uint32_t *bits,
                                                   OrnMinRenderColour colour) {
    DrawBitmap(image, rect, {bits, width, height}, colour, true);
}
