// SPDX-License-Identifier: MIT
// The innermost loops for SVE, whose stores write the bytes that a predicate names. A predicate has
// a bit for each byte of a vector, the least significant bit for the first, and is loaded from
// memory as it is: a mask is a row of predicates. Vectors may have any length.
#include "kernels/kernels.h"

#if defined(__aarch64__) && defined(__GNUC__) && (!defined(__clang__) || defined(__ARM_FEATURE_SVE))
#include <arm_sve.h>

#define ORN_SVE __attribute__((target("+sve"))) static inline

using namespace orn;

namespace orn {
namespace kernels {
namespace sve {
ORN_KERNEL_LOOPS()
}
} // namespace kernels
} // namespace orn

constexpr int32_t kMaxVectorBytes = 256;

// ---- Rows and spans ----

void kernels::sve::FillRows(uint8_t *first, ptrdiff_t stride, int64_t rows, ptrdiff_t bytes,
                            Pattern pattern) {
    plain::FillRows(first, stride, rows, bytes, pattern);
}

void kernels::sve::PaintSpans(const Plane &plane, const OrnMinRenderScanline *spans, int32_t count,
                              Pattern pattern) {
    plain::PaintSpans(plane, spans, count, pattern);
}

// ---- Masks ----

// May lie at any address.
ORN_SVE svbool_t LoadPredicate(const uint8_t *bits) {
    svbool_t predicate;
    __asm__("ldr %0, [%1]" : "=Upa"(predicate) : "r"(bits) : "memory");
    return predicate;
}

// Rounded down: a + b = 2 (a & b) + (a ^ b).
ORN_SVE svuint8_t Average(svbool_t which, svuint8_t a, svuint8_t b) {
    const svuint8_t half = svlsr_n_u8_x(which, sveor_u8_x(which, a, b), 1);
    return svadd_u8_x(which, svand_u8_x(which, a, b), half);
}

// The bytes that the predicate names, in so many rows.
ORN_SVE void PaintVector(uint8_t *first, ptrdiff_t stride, int32_t rows, svbool_t which,
                         svuint8_t colour, bool half) {
    if (!svptest_any(which, which))
        return;
    for (; rows > 0; --rows, first += stride)
        svst1_u8(which, first, half ? Average(which, svld1_u8(which, first), colour) : colour);
}

// A predicate for samples of two bytes names the first byte of each.
ORN_SVE svbool_t BothBytes(svbool_t samples) {
    return svtrn1_b8(samples, samples);
}

// 64 samples, of which those whose bits are set.
ORN_SVE void PaintBits(uint8_t *first, ptrdiff_t stride, int32_t rows, uint64_t bits, bool luma,
                       svuint8_t colour, bool half) {
    uint64_t memory[kMaxVectorBytes / 64] = {}; // predicates may be longer than the bits
    memcpy(memory, &bits, sizeof bits);
    const auto length = static_cast<int32_t>(svcntb());
    for (int32_t i = 0; i < 64; i += length) {
        const svbool_t samples = LoadPredicate(reinterpret_cast<const uint8_t *>(memory) + i / 8);
        if (luma) {
            PaintVector(first + i, stride, rows, samples, colour, half);
        } else {
            PaintVector(first + 2 * i, stride, rows, BothBytes(svunpklo_b(samples)), colour, half);
            PaintVector(first + 2 * i + length, stride, rows, BothBytes(svunpkhi_b(samples)),
                        colour, half);
        }
    }
}

// Strips of two words, one after the other.
__attribute__((target("+sve"))) void kernels::sve::PaintMask(const Plane &plane, const Mask &mask,
                                                             const Ink &ink) {
    const svuint8_t colour = svreinterpret_u8_u64(svdup_n_u64(ink.pattern.bytes));
    const bool luma = plane.sampleBytes == kLumaBytes;
    const auto stride = static_cast<ptrdiff_t>(plane.stride);
    for (int32_t i = 0; i < mask.wordsPerRow; i += 2) {
        const bool two = i + 1 < mask.wordsPerRow;
        const uint64_t counting =
            uint64_t{two ? EdgeBits(mask, i + 1) : 0} << kWordBits | EdgeBits(mask, i);
        uint8_t *first = plane.first + i * kWordBits * plane.sampleBytes;
        const uint32_t *words = mask.words + i;
        for (int32_t row = 0; row < mask.rows; ++row, words += mask.pitch) {
            const uint64_t bits = (uint64_t{words[two]} << kWordBits | words[0]) & counting;
            const int32_t repeats = Repeats(mask, row);
            if (bits)
                PaintBits(first, stride, repeats, bits, luma, colour, ink.half);
            first += repeats * stride;
        }
    }
}

// Words to read past the last one: a predicate may be longer than a word.
int32_t kernels::sve::PrepareNarrowMask(uint32_t *words, int32_t rows) {
    constexpr int32_t kWords = kMaxVectorBytes / kWordBits;
    memset(words + rows, 0, kWords * sizeof *words);
    return kWords;
}

ORN_SVE void PaintColumns(uint8_t *first, ptrdiff_t stride, const uint32_t *words, int32_t rows,
                          int32_t begin, int32_t end, svuint8_t colour) {
    const svbool_t inside = svwhilelt_b8_s32(begin, end);
    const uint8_t *bits = reinterpret_cast<const uint8_t *>(words) + begin / 8;
    first += begin;
    for (; rows > 0; --rows, first += stride, bits += sizeof *words)
        svst1_u8(svand_b_z(inside, LoadPredicate(bits), inside), first, colour);
}

__attribute__((target("+sve"))) void kernels::sve::PaintNarrowMask(uint8_t *first, ptrdiff_t stride,
                                                                   const uint32_t *words,
                                                                   int32_t rows, uint32_t columns,
                                                                   Pattern pattern) {
    const svuint8_t colour = svreinterpret_u8_u64(svdup_n_u64(pattern.bytes));
    const int32_t end = kWordBits - __builtin_clz(columns);
    for (int32_t begin = 0; begin < end; begin += static_cast<int32_t>(svcntb()))
        PaintColumns(first, stride, words, rows, begin, end, colour);
}

// ---- Bits of bitmaps ----

void kernels::sve::PlanBits(BitPlan *plan, const BitScaling &scaling) {
    plain::PlanBits(plan, scaling);
}

void kernels::sve::ExpandBits(uint32_t *to, int32_t pitch, const uint32_t *const *rows,
                              int32_t rowCount, const BitPlan &plan) {
    plain::ExpandBits(to, pitch, rows, rowCount, plan);
}

#endif
