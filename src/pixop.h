// How pixels and chroma samples are addressed and stored. Everything that writes a plane goes
// through these helpers or the span painters; clipping is done before.
#pragma once

#include "min_render.h"

#include <string.h>

// Row offsets are 64-bit: a stride may be huge or negative, and a plane larger than 2 GiB.
inline uint8_t *LumaRow(const OrnMinRenderImage *image, int64_t y) {
    return image->yPlane + static_cast<ptrdiff_t>(y * image->stride);
}

inline uint8_t *ChromaRow(const OrnMinRenderImage *image, int64_t cy) {
    return image->uvPlane + static_cast<ptrdiff_t>(cy * image->stride);
}

// The chroma plane covers odd last rows and columns, too. Sizes below 0 count as 0.
inline int32_t ChromaSize(int32_t lumaSize) {
    return lumaSize <= 0 ? 0 : static_cast<int32_t>((int64_t{lumaSize} + 1) / 2);
}

inline void StoreChroma(uint8_t *sample, OrnMinRenderColour colour) {
    const uint8_t pair[2] = {colour.u, colour.v};
    memcpy(sample, pair, sizeof pair);
}

inline void StoreLumaPair(uint8_t *pixel, uint8_t luma) {
    const uint8_t pair[2] = {luma, luma};
    memcpy(pixel, pair, sizeof pair);
}

// Eight bytes of a plane painted in one colour: equal luma bytes, or four U,V pairs.
struct Pattern {
    uint64_t bytes;
};

inline Pattern LumaPattern(uint8_t luma) {
    return {luma * 0x0101010101010101u};
}

inline Pattern ChromaPattern(OrnMinRenderColour colour) {
    Pattern pattern;
    for (size_t i = 0; i < sizeof pattern; i += 2)
        StoreChroma(reinterpret_cast<uint8_t *>(&pattern) + i, colour);
    return pattern;
}

// Stores the first count bytes of the pattern, 16 at most; count is a constant, so that this is one
// store.
template <size_t count> inline void StorePattern(uint8_t *to, Pattern pattern) {
    using Block = uint64_t __attribute__((vector_size(16)));
    const Block block = {pattern.bytes, pattern.bytes};
    memcpy(to, &block, count);
}

// Repeats the pattern over a run of bytes, an even number of them in the chroma plane. A run that
// is no whole number of stores ends with one that overlaps the last: no byte outside it is written.
inline void FillRun(uint8_t *first, ptrdiff_t bytes, Pattern pattern) {
    if (bytes >= 16) {
        for (ptrdiff_t i = 0; i + 16 < bytes; i += 16)
            StorePattern<16>(first + i, pattern);
        StorePattern<16>(first + bytes - 16, pattern);
    } else if (bytes >= 8) {
        StorePattern<8>(first, pattern);
        StorePattern<8>(first + bytes - 8, pattern);
    } else if (bytes >= 4) {
        StorePattern<4>(first, pattern);
        StorePattern<4>(first + bytes - 4, pattern);
    } else if (bytes >= 2) {
        StorePattern<2>(first, pattern);
        StorePattern<2>(first + bytes - 2, pattern);
    } else if (bytes == 1) {
        StorePattern<1>(first, pattern);
    }
}

inline OrnMinRenderScanline MakeSpan(int32_t first, int32_t end, int32_t row) {
    return {{first, row}, {end, row}};
}

// ---- Rows and spans ----

// A plane as the loops over its samples see it.
struct Plane {
    uint8_t *first;
    int64_t stride;
    ptrdiff_t sampleBytes; // 1 luma, 2 chroma
};

inline Plane LumaPlane(const OrnMinRenderImage *image) {
    return {image->yPlane, image->stride, 1};
}

inline Plane ChromaPlane(const OrnMinRenderImage *image) {
    return {image->uvPlane, image->stride, 2};
}

// Fills the same range of bytes in each of so many rows.
void FillRows(uint8_t *first, int64_t stride, int64_t rows, int64_t bytes, Pattern pattern);

// Paints count spans. One whose end does not lie beyond its start is empty.
void PaintSpans(const Plane &plane, const OrnMinRenderScanline *spans, int32_t count,
                Pattern pattern);

// ---- Masks: rows of words whose set bits paint samples, the least significant bit leftmost ----

// What a set bit does to the bytes of its sample.
struct Ink {
    Pattern pattern;
    ptrdiff_t sampleBytes; // 1 luma, 2 chroma
    bool half;             // average with what is there, rounded down
};

struct Mask {
    const uint32_t *words;
    int32_t pitch; // words from one row to the next; 0 repeats a row
    int32_t rows;
    int32_t wordsPerRow;
    uint32_t firstWordBits; // which bits of the first and of the last word count
    uint32_t lastWordBits;
};

inline int32_t WordsPerRow(int32_t columns) {
    return (columns + 31) / 32;
}

// The bits of word i of a row that count.
inline uint32_t EdgeBits(const Mask &mask, int32_t i) {
    return (i == 0 ? mask.firstWordBits : 0xFFFFFFFFu) &
           (i == mask.wordsPerRow - 1 ? mask.lastWordBits : 0xFFFFFFFFu);
}

// Bits first..end - 1 of a word, both in 0..32, first < end.
inline uint32_t BitRange(int32_t first, int32_t end) {
    return (0xFFFFFFFFu << first) & (0xFFFFFFFFu >> (32 - end));
}

// Paints samples from first (bit 0 of the first word) on. Where the first word does not count in
// full, first may lie outside the plane: only samples of set bits are touched.
void PaintMask(uint8_t *first, int64_t stride, const Mask &mask, const Ink &ink);

// Paints luma through a mask of one word a row, without gaps, of which so many bits count: the
// shape of most glyphs.
void PaintNarrowMask(uint8_t *first, int64_t stride, const uint32_t *words, int32_t rows,
                     uint32_t columns, Pattern pattern);

// Where 32 neighbouring samples of a mask come from in a row of words whose most significant bit is
// leftmost: out of 64 columns.
struct BitSource {
    uint16_t places[32]; // of the samples in the 64 columns, the last of which is 0
    int32_t words[3];    // of the row; the columns begin in the first
    int32_t shift;       // columns of the first word to the left of them
    int32_t spacing;     // 1: neighbouring columns, 2: every other one, 0: any
};

// Collects rows of a mask, pitch words apart, of count words each, from as many rows of columns.
void GatherBits(uint32_t *to, int32_t pitch, const uint32_t *const *rows, int32_t rowCount,
                const BitSource *sources, int32_t count);

// Whether GatherBits takes all samples of a word in one go.
bool GathersWide();

// ---- What these five do, without special instructions ----

void FillRowsPlain(uint8_t *first, int64_t stride, int64_t rows, ptrdiff_t bytes, Pattern pattern);
void PaintSpansPlain(const Plane &plane, const OrnMinRenderScanline *spans, int32_t count,
                     Pattern pattern);
void PaintMaskPlain(uint8_t *first, int64_t stride, const Mask &mask, const Ink &ink);
void PaintNarrowMaskPlain(uint8_t *first, ptrdiff_t stride, const uint32_t *words, int32_t rows,
                          uint32_t columns, Pattern pattern);
void GatherBitsPlain(uint32_t *to, int32_t pitch, const uint32_t *const *rows, int32_t rowCount,
                     const BitSource *sources, int32_t count);
