// SPDX-License-Identifier: MIT
// The innermost loops: rows, spans and masks painted in one colour, and the bits of bitmaps put in
// the order of a mask. Each set of instructions has a file that defines all of them; plain.cpp is
// the reference, whose bytes all others must store. None writes a byte that is not drawn, not even
// with its own value. choose.cpp knows which sets there are.
#pragma once

#include "bits.h"
#include "plane.h"

namespace orn {

// ---- What the loops work on ----

// Eight bytes of a plane painted in one colour: equal luma bytes, or four U,V pairs.
struct Pattern {
    uint64_t bytes;
};

inline Pattern LumaPattern(uint8_t luma) {
    return {luma * 0x0101010101010101u};
}

inline Pattern ChromaPattern(OrnMinRenderColour colour) {
    uint16_t sample;
    StoreChroma(reinterpret_cast<uint8_t *>(&sample), colour);
    return {sample * 0x0001000100010001u};
}

// Stores the first count bytes of the pattern, 16 at most; count is a constant, so that this is one
// store.
template <size_t count> inline void StorePattern(uint8_t *to, Pattern pattern) {
    using Block = uint64_t __attribute__((vector_size(16)));
    const Block block = {pattern.bytes, pattern.bytes};
    memcpy(to, &block, count);
}

// Repeats the pattern over a run of bytes, whole samples of the plane. A run that is no whole
// number of stores ends with one that overlaps the last: no byte outside it is written.
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

inline uint8_t *SpanStart(const Plane &plane, const OrnMinRenderScanline &span) {
    return SampleAt(plane, span.start.x, span.start.y);
}

inline ptrdiff_t SpanBytes(const Plane &plane, const OrnMinRenderScanline &span) {
    return (ptrdiff_t{span.end.x} - span.start.x) * plane.sampleBytes;
}

// What a set bit of a mask does to the bytes of its sample.
struct Ink {
    Pattern pattern;
    bool half; // average with what is there, rounded down
};

// Rows of words whose set bits paint samples, the least significant bit leftmost.
struct Mask {
    const uint32_t *words;
    int32_t pitch; // words from one row to the next
    int32_t rows;
    int32_t wordsPerRow;
    uint32_t firstWordBits; // which bits of the first and of the last word count
    uint32_t lastWordBits;
    const int32_t *repeats; // for each row, how many of the plane's it paints; null: one
};

// The bits of word i of a row that count.
inline uint32_t EdgeBits(const Mask &mask, int32_t i) {
    return (i == 0 ? mask.firstWordBits : 0xFFFFFFFFu) &
           (i == mask.wordsPerRow - 1 ? mask.lastWordBits : 0xFFFFFFFFu);
}

inline int32_t Repeats(const Mask &mask, int32_t row) {
    return mask.repeats ? mask.repeats[row] : 1;
}

// A narrow mask has one word a row. What a set prepares for painting it stands behind those words:
// at most so many words more.
constexpr int32_t kMaxNarrowRows = 132;
constexpr int32_t kMaxNarrowStores = 16; // of a row: every other bit, or three of every four

constexpr int32_t NarrowRoom(int32_t rows) {
    return (rows * kMaxNarrowStores + 16) / 2;
}

// ---- Bitmaps on their way to a mask ----

// Sample i of a bitmap's rectangle shows column i * step / kSameSize of a row whose most
// significant bit is leftmost.
struct BitScaling {
    int64_t first; // sample
    int64_t step;
    int32_t samples; // kMaxScaledBits at the most
    int32_t rowWords;
};

constexpr int32_t kFractionBits = 16;
constexpr int64_t kSameSize = 1 << kFractionBits; // every sample shows a column of its own
constexpr int32_t kMaxScaledBits = 512;
constexpr int32_t kMaxExpandedRows = 32; // in one call

// The first sample that shows the given column of an enlarged bitmap, or a later one.
inline int64_t FirstSampleOf(uint32_t column, int64_t step) {
    if (column == 0)
        return 0;
    if (step == 0) // a bitmap of one column over more than 65536 samples
        return INT64_MAX;
    return ((column << kFractionBits) - 1) / static_cast<uint32_t>(step) + 1;
}

// Where 32 neighbouring samples come from: out of 64 columns.
struct BitSource {
    uint16_t places[kWordBits]; // of the samples in the 64 columns, the last of which is 0
    int32_t words[3];           // of the row; the columns begin in the first
    int32_t shift;              // columns of the first word to the left of them
    int32_t spacing;            // 1: neighbouring columns, 2: every other one, 0: any
};

inline uint64_t SourceColumns(const uint32_t *row, const BitSource &source) {
    const uint64_t two = uint64_t{row[source.words[0]]} << 32 | row[source.words[1]];
    const uint64_t third = row[source.words[2]];
    return two << source.shift | third >> (32 - source.shift);
}

// Where a word of samples, or two words, come from: out of 64 columns, as of a BitSource, and a bit
// for each that matters of them or of the samples.
struct BitGroup {
    uint64_t places;
    int32_t words[3];
    int32_t shift;
};

// What the rows of a bitmap have in common on their way; made by a set's PlanBits for its
// ExpandBits.
struct BitPlan {
    enum Way {
        Spread, // a range of bits for each run of set columns: for enlarged bitmaps
        Gather, // 32 samples out of 64 columns: up to a reduction by two
        Sample, // one sample after the other
        Deposit // a word or two at once, where there are instructions for it
    } way;
    BitScaling scaling;
    BitSource sources[kMaxScaledBits / kWordBits]; // of Gather
    BitGroup groups[kMaxScaledBits / kWordBits];   // of Deposit

    // Of Spread: where columns firstColumn..endColumn begin, in samples from the first on.
    int32_t firstColumn;
    int32_t endColumn;
    int32_t edges[kMaxScaledBits + 2];
};

// Fills in what the way needs.
void MakePlan(BitPlan *plan, BitPlan::Way way, const BitScaling &scaling);

// The step up to which 32 samples lie within 64 columns.
constexpr int64_t kMaxGatherStep = 2 * kSameSize;

// ---- The loops ----

namespace kernels {

// In order of preference, the best last. A processor has those of its own kind.
enum class Set { Plain, Avx2, Avx512, Neon, Sve };
constexpr Set kLastSet = Set::Sve;

// Whether the processor has a set, and the build does not leave it out.
bool Has(Set set);

// The best one that Has. To be asked once for a whole call.
Set Best();

// The arguments of each loop, once for all sets:
//
// FillRows: fills the same range of bytes in each of so many rows, whole samples of the pattern.
//
// PaintSpans: paints count spans. One whose end does not lie beyond its start is empty.
//
// PaintMask: paints samples through a mask, bit 0 of its first word being the plane's first sample.
// Where the first word does not count in full, that may lie outside the frame: only samples of set
// bits are touched, read or written.
//
// PrepareNarrowMask: makes what the set wants to know of a mask of one word a row, without gaps,
// and puts it behind the words. Returns how many words that takes.
//
// PaintNarrowMask: paints luma through a mask so prepared, all of whose bits lie in columns: the
// shape of most glyphs.
//
// PlanBits, ExpandBits: turn up to kMaxExpandedRows rows of a bitmap into rows of a mask, pitch
// words apart; what lies past the last sample in a row's last word is undefined.
#define ORN_KERNEL_LOOPS(SET)                                                                      \
    void FillRows(uint8_t *first, ptrdiff_t stride, int64_t rows, ptrdiff_t bytes,                 \
                  Pattern pattern SET);                                                            \
    void PaintSpans(const Plane &plane, const OrnMinRenderScanline *spans, int32_t count,          \
                    Pattern pattern SET);                                                          \
    void PaintMask(const Plane &plane, const Mask &mask, const Ink &ink SET);                      \
    int32_t PrepareNarrowMask(uint32_t *words, int32_t rows SET);                                  \
    void PaintNarrowMask(uint8_t *first, ptrdiff_t stride, const uint32_t *words, int32_t rows,    \
                         uint32_t columns, Pattern pattern SET);                                   \
    void PlanBits(BitPlan *plan, const BitScaling &scaling SET);                                   \
    void ExpandBits(uint32_t *to, int32_t pitch, const uint32_t *const *rows, int32_t rowCount,    \
                    const BitPlan &plan SET);

// Through the switch in choose.cpp, with the set as last argument.
#define ORN_SET_ARGUMENT , Set set
ORN_KERNEL_LOOPS(ORN_SET_ARGUMENT)

namespace plain {
ORN_KERNEL_LOOPS()
}

} // namespace kernels
} // namespace orn
