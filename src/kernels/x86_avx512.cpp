// SPDX-License-Identifier: MIT
// The innermost loops for AVX-512 (F, BW and VL), whose masked stores write the bytes of a run, or
// the set bits of a mask, and nothing else.
#include "kernels/x86_bmi2.h"

#if defined(__x86_64__) && defined(__GNUC__)
#include <immintrin.h>

// GCC 12 takes its own vector intrinsics for uses of uninitialised values.
#pragma GCC diagnostic ignored "-Wuninitialized"
#ifndef __clang__
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#define ORN_AVX512 __attribute__((target("avx512f,avx512bw,avx512vl"))) static
#define ORN_INLINE __attribute__((always_inline)) inline

using namespace orn;

namespace orn {
namespace kernels {
namespace avx512 {
ORN_KERNEL_LOOPS()
}
} // namespace kernels
} // namespace orn

constexpr ptrdiff_t kVectorBytes = 64;

ORN_AVX512 __m512i Broadcast(Pattern pattern) {
    return _mm512_set1_epi64(static_cast<int64_t>(pattern.bytes));
}

// ---- Rows and spans ----

// A colour for stores at even and at odd addresses: they differ for chroma.
struct WideColour {
    __m512i even;
    __m512i odd;
};

ORN_AVX512 ORN_INLINE WideColour MakeWideColour(Pattern pattern) {
    return {Broadcast(pattern), Broadcast({pattern.bytes >> 8 | pattern.bytes << 56})};
}

// The first and the last store are masked; all lie within cache lines.
ORN_AVX512 ORN_INLINE void FillWideRun(uint8_t *first, ptrdiff_t bytes, const WideColour &wide) {
    if (bytes <= 0)
        return;
    const auto offset = static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(first) % kVectorBytes);
    const __m512i colour = offset % 2 ? wide.odd : wide.even;
    uint8_t *const line = first - offset;
    const ptrdiff_t end = offset + bytes;
    const uint64_t head = ~uint64_t{0} << offset;
    const uint64_t tail = ~uint64_t{0} >> (-end & (kVectorBytes - 1));
    if (end <= kVectorBytes) {
        _mm512_mask_storeu_epi8(line, head & tail, colour);
        return;
    }
    _mm512_mask_storeu_epi8(line, head, colour);
    ptrdiff_t i = kVectorBytes;
    for (; i + kVectorBytes < end; i += kVectorBytes)
        _mm512_store_si512(line + i, colour);
    _mm512_mask_storeu_epi8(line + i, tail, colour);
}

ORN_AVX512 void FillWideRows(uint8_t *first, ptrdiff_t stride, int64_t rows, ptrdiff_t bytes,
                             Pattern pattern) {
    const WideColour colour = MakeWideColour(pattern);
    for (ptrdiff_t row = 0; row < rows; ++row)
        FillWideRun(first + row * stride, bytes, colour);
}

// Below, one or two plain stores a row are faster; above, what the C library or the processor does
// by itself. (AMD EPYC 9004; jobs "fill" of 16 to 3840 columns.)
constexpr ptrdiff_t kShortRun = 32;
constexpr ptrdiff_t kHugeRun = 16384;

void kernels::avx512::FillRows(uint8_t *first, ptrdiff_t stride, int64_t rows, ptrdiff_t bytes,
                               Pattern pattern) {
    if (bytes > kShortRun && bytes < kHugeRun)
        FillWideRows(first, stride, rows, bytes, pattern);
    else
        plain::FillRows(first, stride, rows, bytes, pattern);
}

ORN_AVX512 void PaintWideSpans(const Plane plane, const OrnMinRenderScanline *spans, int32_t count,
                               Pattern pattern) {
    const WideColour colour = MakeWideColour(pattern);
    for (int32_t i = 0; i < count; ++i)
        FillWideRun(SpanStart(plane, spans[i]), SpanBytes(plane, spans[i]), colour);
}

// Fewer spans do not pay for setting up the wide colour. (AMD EPYC 9004; jobs "disc" and "triangle"
// of 8 to 40 rows.)
constexpr int32_t kFewSpans = 24;

void kernels::avx512::PaintSpans(const Plane &plane, const OrnMinRenderScanline *spans,
                                 int32_t count, Pattern pattern) {
    if (count > kFewSpans)
        PaintWideSpans(plane, spans, count, pattern);
    else
        plain::PaintSpans(plane, spans, count, pattern);
}

// ---- Masks ----

// Rounded down, where the instruction rounds up.
ORN_AVX512 ORN_INLINE __m512i Average(__m512i a, __m512i b) {
    const __m512i odd = _mm512_and_si512(_mm512_xor_si512(a, b), _mm512_set1_epi8(1));
    return _mm512_sub_epi8(_mm512_avg_epu8(a, b), odd);
}

// The samples whose bits are set, of 64 luma or 32 chroma samples.
template <bool luma, bool half>
ORN_AVX512 ORN_INLINE void PaintBits(uint8_t *first, uint64_t bits, __m512i colour) {
    if (luma) {
        const __m512i bytes = half ? Average(_mm512_maskz_loadu_epi8(bits, first), colour) : colour;
        _mm512_mask_storeu_epi8(first, bits, bytes);
    } else {
        const auto samples = static_cast<uint32_t>(bits);
        const __m512i bytes =
            half ? Average(_mm512_maskz_loadu_epi16(samples, first), colour) : colour;
        _mm512_mask_storeu_epi16(first, samples, bytes);
    }
}

ORN_AVX512 ORN_INLINE uint64_t TwoWords(const uint32_t *words) {
    uint64_t both;
    memcpy(&both, words, sizeof both);
    return both;
}

// Paints strips of 64 bytes, which are two words of luma or one of chroma. The mask's fields are
// read once: a byte stored could change them, as far as a compiler knows.
template <bool luma, bool half>
ORN_AVX512 ORN_INLINE void PaintStrips(const Plane plane, const Mask &mask, Pattern pattern) {
    const __m512i colour = Broadcast(pattern);
    constexpr int32_t kWords = luma ? 2 : 1;
    const auto stride = static_cast<ptrdiff_t>(plane.stride);
    const ptrdiff_t pitch = mask.pitch;
    const int32_t rows = mask.rows;
    const int32_t once = 1;
    const int32_t *const counts = mask.repeats ? mask.repeats : &once;
    const int32_t everyRow = mask.repeats ? -1 : 0;
    const int32_t last = (mask.wordsPerRow - 1) / kWords;
    const bool lastIsWhole = mask.wordsPerRow % kWords == 0;
    const uint64_t firstBits = uint64_t{0xFFFFFFFF} << 32 | mask.firstWordBits;
    const uint64_t lastBits =
        luma && lastIsWhole ? uint64_t{mask.lastWordBits} << 32 | 0xFFFFFFFF : mask.lastWordBits;
    const uint32_t *words = mask.words;
    uint8_t *first = plane.first;
    for (int32_t i = 0; i <= last; ++i, words += kWords, first += kVectorBytes) {
        const bool two = luma && (i < last || lastIsWhole);
        const uint64_t edge =
            (i == 0 ? firstBits : ~uint64_t{0}) & (i == last ? lastBits : ~uint64_t{0});
        const uint32_t *from = words;
        uint8_t *to = first;
        for (int32_t row = 0; row < rows; ++row, from += pitch) {
            const uint64_t bits = (two ? TwoWords(from) : *from) & edge;
            const int32_t count = counts[row & everyRow];
            uint8_t *const end = to + count * stride;
            if (bits)
                for (; to != end; to += stride)
                    PaintBits<luma, half>(to, bits, colour);
            to = end;
        }
    }
}

ORN_AVX512 void PaintWideMask(const Plane &plane, const Mask &mask, const Ink &ink) {
    const bool luma = plane.sampleBytes == kLumaBytes;
    if (luma && !ink.half)
        PaintStrips<true, false>(plane, mask, ink.pattern);
    else if (luma)
        PaintStrips<true, true>(plane, mask, ink.pattern);
    else if (!ink.half)
        PaintStrips<false, false>(plane, mask, ink.pattern);
    else
        PaintStrips<false, true>(plane, mask, ink.pattern);
}

void kernels::avx512::PaintMask(const Plane &plane, const Mask &mask, const Ink &ink) {
    PaintWideMask(plane, mask, ink);
}

int32_t kernels::avx512::PrepareNarrowMask(uint32_t *, int32_t) {
    return 0;
}

// Stores of 16 bytes cross fewer borders of cache lines than wider ones do.
ORN_AVX512 void PaintNarrowRows(uint8_t *first, ptrdiff_t stride, const uint32_t *words,
                                int32_t rows, uint32_t columns, Pattern pattern) {
    const __m256i colour = _mm256_set1_epi64x(static_cast<int64_t>(pattern.bytes));
    if (columns <= 0xFFFF) {
        const __m128i half = _mm256_castsi256_si128(colour);
        for (int32_t row = 0; row < rows; ++row, first += stride)
            _mm_mask_storeu_epi8(first, static_cast<__mmask16>(words[row]), half);
        return;
    }
    for (int32_t row = 0; row < rows; ++row, first += stride)
        _mm256_mask_storeu_epi8(first, words[row], colour);
}

void kernels::avx512::PaintNarrowMask(uint8_t *first, ptrdiff_t stride, const uint32_t *words,
                                      int32_t rows, uint32_t columns, Pattern pattern) {
    PaintNarrowRows(first, stride, words, rows, columns, pattern);
}

// ---- Bits of bitmaps ----

void kernels::avx512::PlanBits(BitPlan *plan, const BitScaling &scaling) {
    bmi2::PlanBits(plan, scaling);
}

void kernels::avx512::ExpandBits(uint32_t *to, int32_t pitch, const uint32_t *const *rows,
                                 int32_t rowCount, const BitPlan &plan) {
    bmi2::ExpandBits(to, pitch, rows, rowCount, plan);
}

#endif
