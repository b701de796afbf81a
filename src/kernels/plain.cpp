// SPDX-License-Identifier: MIT
// The innermost loops with what every processor has: the reference for all other sets, and what
// runs where none of them does. Short runs are stored inline, a whole run of ink at a time.
#include "kernels/kernels.h"

using namespace orn;

namespace {

#define ORN_SET static inline
using Block = uint64_t __attribute__((vector_size(16)));
using Wide = Block;
constexpr bool kSingleRowsApart = false;
constexpr ptrdiff_t kBlockBytes = sizeof(Block);
constexpr ptrdiff_t kWideBytes = sizeof(Wide);

ORN_SET Block FirstBlock(Wide wide) {
    return wide;
}

ORN_SET uint64_t FirstBytes(Wide wide) {
    return wide[0];
}
ORN_SET Block Average(Block a, Block b) {
    const Block upperBits = {0xFEFEFEFEFEFEFEFE, 0xFEFEFEFEFEFEFEFE};
    return (a & b) + (((a ^ b) & upperBits) >> 1);
}

} // namespace

#include "kernels/mask_runs.h"

// ---- Rows and spans ----

// Chroma from this many bytes on is stored by string instructions: they need not read what they
// replace. (AMD EPYC 9004; jobs "fill" of 3840 columns and "frame-fill", cold.)
constexpr ptrdiff_t kHugeRun = 16384;

static void FillHugeRun(uint8_t *first, ptrdiff_t bytes, Pattern pattern) {
#if defined(__x86_64__) && defined(__GNUC__)
    void *to = first;
    ptrdiff_t words = bytes / 8;
    __asm__ volatile("rep stosq" : "+D"(to), "+c"(words) : "a"(pattern.bytes) : "memory");
    StorePattern<8>(first + bytes - 8, pattern);
#else
    FillRun(first, bytes, pattern);
#endif
}

// Equal bytes from this many on are what the C library does best.
constexpr ptrdiff_t kLongRun = 128;

static void FillAnyRun(uint8_t *first, ptrdiff_t bytes, Pattern pattern) {
    const auto byte = static_cast<uint8_t>(pattern.bytes);
    if (bytes < kLongRun)
        FillRun(first, bytes, pattern);
    else if (pattern.bytes == LumaPattern(byte).bytes)
        memset(first, byte, static_cast<size_t>(bytes));
    else if (bytes < kHugeRun)
        FillRun(first, bytes, pattern);
    else
        FillHugeRun(first, bytes, pattern);
}

// Rows of 16 to 32 bytes: one or two stores each.
static void FillShortRows(uint8_t *first, ptrdiff_t stride, int64_t rows, ptrdiff_t bytes,
                          Pattern pattern) {
    const ptrdiff_t second = bytes - 16;
    for (; rows > 0; --rows, first += stride) {
        StorePattern<16>(first, pattern);
        if (second > 0)
            StorePattern<16>(first + second, pattern);
    }
}

void kernels::plain::FillRows(uint8_t *first, ptrdiff_t stride, int64_t rows, ptrdiff_t bytes,
                              Pattern pattern) {
    if (bytes >= 16 && bytes <= 32) {
        FillShortRows(first, stride, rows, bytes, pattern);
        return;
    }
    for (ptrdiff_t row = 0; row < rows; ++row)
        FillAnyRun(first + row * stride, bytes, pattern);
}

void kernels::plain::PaintSpans(const Plane &plane, const OrnMinRenderScanline *spans,
                                int32_t count, Pattern pattern) {
    for (int32_t i = 0; i < count; ++i)
        FillAnyRun(SpanStart(plane, spans[i]), SpanBytes(plane, spans[i]), pattern);
}

// ---- Masks ----

void kernels::plain::PaintMask(const Plane &plane, const Mask &mask, const Ink &ink) {
    PaintMaskRuns(plane, mask, ink);
}

// ---- Bits of bitmaps: an enlarged row by its runs ----

__attribute__((cold)) static void FindEdges(BitPlan *plan) {
    const BitScaling &scaling = plan->scaling;
    const int64_t last = scaling.first + scaling.samples - 1;
    plan->firstColumn = static_cast<int32_t>(scaling.first * scaling.step >> kFractionBits);
    plan->endColumn = static_cast<int32_t>(last * scaling.step >> kFractionBits) + 1;
    for (int32_t c = plan->firstColumn; c <= plan->endColumn; ++c) {
        const int64_t sample = FirstSampleOf(static_cast<uint32_t>(c), scaling.step);
        plan->edges[c - plan->firstColumn] = ClampToSize(sample - scaling.first, scaling.samples);
    }
}

static int32_t EdgeOf(const BitPlan &plan, int32_t column) {
    const auto inside = static_cast<int32_t>(Max(plan.firstColumn, Min(column, plan.endColumn)));
    return plan.edges[inside - plan.firstColumn];
}

static void SpreadRow(uint32_t *to, const uint32_t *row, const BitPlan &plan) {
    const int32_t words = WordsPerRow(plan.scaling.samples);
    memset(to, 0, static_cast<size_t>(words) * sizeof *to);
    const int32_t firstWord = plan.firstColumn / kWordBits;
    for (int32_t base = firstWord * kWordBits; base < plan.endColumn; base += kWordBits) {
        uint32_t word = row[base / kWordBits];
        while (word) {
            const int start = __builtin_clz(word);
            const uint32_t rest = ~(word << start);
            const int end = rest ? start + __builtin_clz(rest) : kWordBits;
            SetBits(to, EdgeOf(plan, base + start), EdgeOf(plan, base + end));
            word = end < kWordBits ? word & (0xFFFFFFFFu >> end) : 0;
        }
    }
}

// ---- 32 samples at a time ----

// Samples that the row has no more may come from anywhere.
__attribute__((cold)) static BitSource MakeBitSource(const BitScaling &scaling, int64_t sample) {
    const int64_t position = sample * scaling.step;
    const auto column = static_cast<int32_t>(position >> kFractionBits);
    const auto start = static_cast<uint32_t>(position % kSameSize);
    const auto step = static_cast<uint32_t>(scaling.step);
    BitSource source;
    for (uint32_t k = 0; k < kWordBits; ++k)
        source.places[k] = static_cast<uint16_t>(63 - ((start + k * step) >> kFractionBits));
    source.shift = column % kWordBits;
    source.spacing = step % kSameSize == 0 ? static_cast<int32_t>(step / kSameSize) : 0;
    for (int32_t i = 0; i < 3; ++i)
        source.words[i] = static_cast<int32_t>(Min(column / kWordBits + i, scaling.rowWords - 1));
    return source;
}

static uint32_t ReverseBits(uint32_t word) {
    word = (word >> 1 & 0x55555555) | (word & 0x55555555) << 1;
    word = (word >> 2 & 0x33333333) | (word & 0x33333333) << 2;
    word = (word >> 4 & 0x0F0F0F0F) | (word & 0x0F0F0F0F) << 4;
    return __builtin_bswap32(word);
}

// The odd bits, closed up.
__attribute__((noinline)) static uint32_t EveryOtherBit(uint64_t bits) {
    bits = bits >> 1 & 0x5555555555555555;
    bits = (bits | bits >> 1) & 0x3333333333333333;
    bits = (bits | bits >> 2) & 0x0F0F0F0F0F0F0F0F;
    bits = (bits | bits >> 4) & 0x00FF00FF00FF00FF;
    bits = (bits | bits >> 8) & 0x0000FFFF0000FFFF;
    return static_cast<uint32_t>(bits | bits >> 16);
}

static uint32_t GatherWord(const uint32_t *row, const BitSource &source) {
    const uint64_t columns = SourceColumns(row, source);
    if (source.spacing > 0)
        return ReverseBits(source.spacing == 1 ? static_cast<uint32_t>(columns >> 32)
                                               : EveryOtherBit(columns));
    uint32_t word = 0;
    for (int32_t k = 0; k < kWordBits; ++k)
        word |= static_cast<uint32_t>(columns >> source.places[k] & 1) << k;
    return word;
}

static void GatherRow(uint32_t *to, const uint32_t *row, const BitPlan &plan) {
    for (int32_t i = 0; i < WordsPerRow(plan.scaling.samples); ++i)
        to[i] = GatherWord(row, plan.sources[i]);
}

// ---- Sample by sample: the choice where the bitmap is reduced to less than half ----

static void SampleRow(uint32_t *to, const uint32_t *row, const BitScaling &scaling) {
    int64_t position = scaling.first * scaling.step;
    for (int32_t i = 0; i < scaling.samples; i += kWordBits) {
        const auto count = static_cast<int32_t>(Min(kWordBits, scaling.samples - i));
        uint32_t word = 0;
        for (int32_t k = 0; k < count; ++k, position += scaling.step) {
            const auto column = static_cast<uint32_t>(position >> kFractionBits);
            word |= (row[column / kWordBits] >> (kWordBits - 1 - column % kWordBits) & 1) << k;
        }
        to[i / kWordBits] = word;
    }
}

// ---- The way for a step ----

__attribute__((cold)) void orn::MakePlan(BitPlan *plan, BitPlan::Way way,
                                         const BitScaling &scaling) {
    plan->way = way;
    plan->scaling = scaling;
    if (way == BitPlan::Spread)
        FindEdges(plan);
    if (way == BitPlan::Gather)
        for (int32_t i = 0; i < WordsPerRow(scaling.samples); ++i)
            plan->sources[i] = MakeBitSource(scaling, scaling.first + kWordBits * i);
}

__attribute__((cold)) void kernels::plain::PlanBits(BitPlan *plan, const BitScaling &scaling) {
    const BitPlan::Way reduced = scaling.step <= kMaxGatherStep ? BitPlan::Gather : BitPlan::Sample;
    MakePlan(plan, scaling.step < kSameSize ? BitPlan::Spread : reduced, scaling);
}

void kernels::plain::ExpandBits(uint32_t *to, int32_t pitch, const uint32_t *const *rows,
                                int32_t rowCount, const BitPlan &plan) {
    for (int32_t i = 0; i < rowCount; ++i, to += pitch) {
        if (plan.way == BitPlan::Spread)
            SpreadRow(to, rows[i], plan);
        else if (plan.way == BitPlan::Gather)
            GatherRow(to, rows[i], plan);
        else
            SampleRow(to, rows[i], plan.scaling);
    }
}
