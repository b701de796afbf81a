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
constexpr int64_t kLargestGatherStep = 2 * kSameSize; // 32 samples lie within 64 columns
constexpr int32_t kMaxBitmapSide = 32767;             // times 65536 stays below 2^31

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

// The first sample that shows the given column (or row) of an enlarged bitmap, or a later one.
static int64_t FirstSampleOf(const Sampling &sampling, uint32_t index) {
    if (index == 0)
        return 0;
    if (sampling.step == 0) // a bitmap of one column over more than 65536 samples
        return sampling.end;
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

// How the rows of a bitmap become rows of a piece.
enum class Expansion { Gather, SpreadRuns, Sample };

static Expansion ChooseExpansion(const Sampling &columns) {
    if (columns.step < kSameSize && !GathersWide())
        return Expansion::SpreadRuns;
    return columns.step <= kLargestGatherStep ? Expansion::Gather : Expansion::Sample;
}

// One bit for each sample; the choice where the bitmap is reduced to less than half.
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

// Where the 32 samples from the given one on come from. Up to a reduction by two they lie within 64
// columns; those that the piece has no more do not matter.
static BitSource MakeBitSource(int64_t sample, const Sampling &columns, int32_t pitch) {
    const int64_t position = sample * columns.step;
    const auto column = static_cast<int32_t>(position >> 16);
    const auto start = static_cast<uint32_t>(position & 0xFFFF);
    const auto step = static_cast<uint32_t>(columns.step);
    BitSource source;
    for (uint32_t k = 0; k < 32; ++k)
        source.places[k] = static_cast<uint16_t>(63 - ((start + k * step) >> 16));
    source.shift = column % 32;
    source.spacing = step % kSameSize == 0 ? static_cast<int32_t>(step / kSameSize) : 0;
    for (int32_t i = 0; i < 3; ++i)
        source.words[i] = static_cast<int32_t>(Min(column / 32 + i, pitch - 1));
    return source;
}

static void SetBits(uint32_t *words, int32_t first, int32_t end) {
    for (int32_t i = first; i < end;) {
        const auto wordEnd = static_cast<int32_t>(Min(end, (i / 32 + 1) * 32));
        words[i / 32] |= BitRange(i % 32, wordEnd - i / 32 * 32);
        i = wordEnd;
    }
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

// What the rows of a piece have in common; only the part for its expansion is filled.
struct PieceColumns {
    Expansion expansion;
    ColumnEdges edges;
    BitSource sources[kPieceWords];
};

static void PrepareColumns(PieceColumns *prepared, const MaskPiece &piece, const Sampling &columns,
                           int32_t pitch) {
    prepared->expansion = ChooseExpansion(columns);
    if (prepared->expansion == Expansion::SpreadRuns)
        FindEdges(&prepared->edges, piece, columns);
    if (prepared->expansion == Expansion::Gather)
        for (int32_t i = 0; i < WordsPerRow(piece.samples); ++i)
            prepared->sources[i] = MakeBitSource(piece.first + 32 * i, columns, pitch);
}

// Some rows of the bitmap, and for each the end of the samples that show it.
struct SourceRows {
    int32_t count;
    const uint32_t *bits[kPieceRows];
    int64_t ends[kPieceRows];
};

// The rows shown from the given sample on, as many as a piece holds.
static void FindSourceRows(SourceRows *source, const BitmapView &bitmap, const Sampling &rows,
                           int64_t begin) {
    const int64_t pitch = WordsPerRow(bitmap.width);
    source->count = 0;
    for (int64_t end = begin; end < rows.end && source->count < kPieceRows; ++source->count) {
        const int64_t row = end * rows.step >> 16;
        const bool repeats = rows.step < kSameSize;
        end =
            repeats ? Min(rows.end, FirstSampleOf(rows, static_cast<uint32_t>(row + 1))) : end + 1;
        source->bits[source->count] = bitmap.words + row * pitch;
        source->ends[source->count] = end;
    }
}

// Turns rows of the bitmap into rows of the piece.
static void ExpandRows(MaskPiece *piece, const SourceRows &source, const Sampling &columns,
                       const PieceColumns &prepared) {
    if (prepared.expansion == Expansion::Gather) {
        GatherBits(piece->words, kPieceWords, source.bits, source.count, prepared.sources,
                   WordsPerRow(piece->samples));
        return;
    }
    for (int32_t i = 0; i < source.count; ++i) {
        uint32_t *words = piece->words + i * kPieceWords;
        if (prepared.expansion == Expansion::SpreadRuns)
            SpreadRuns(words, piece->samples, source.bits[i], prepared.edges);
        else
            SampleBits(words, *piece, source.bits[i], columns);
    }
}

// Each row of the bitmap becomes a mask once, for all the rows of the plane that show it. Where
// each of them shows another, the masks of many are painted as one.
static void PaintColumns(const Plane &plane, const BitmapView &bitmap, MaskPiece *piece,
                         const Sampling &columns, const Sampling &rows, const Ink &ink) {
    PieceColumns prepared;
    PrepareColumns(&prepared, *piece, columns, WordsPerRow(bitmap.width));
    const bool repeats = rows.step < kSameSize;
    uint8_t *const first =
        plane.first + static_cast<ptrdiff_t>(columns.origin + piece->first) * ink.sampleBytes;
    Mask mask = {piece->words,
                 repeats ? 0 : kPieceWords,
                 0,
                 WordsPerRow(piece->samples),
                 0xFFFFFFFFu,
                 BitRange(0, (piece->samples - 1) % 32 + 1)};
    SourceRows source;
    for (int64_t begin = rows.first; begin < rows.end;) {
        FindSourceRows(&source, bitmap, rows, begin);
        ExpandRows(piece, source, columns, prepared);
        for (int32_t i = repeats ? 0 : source.count - 1; i < source.count; ++i) {
            mask.words = piece->words + (repeats ? i * kPieceWords : 0);
            mask.rows = static_cast<int32_t>(source.ends[i] - begin);
            PaintMask(first + static_cast<ptrdiff_t>((rows.origin + begin) * plane.stride),
                      plane.stride, mask, ink);
            begin = source.ends[i];
        }
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
