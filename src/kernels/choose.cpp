// SPDX-License-Identifier: MIT
// Which set of innermost loops a processor has, and the one switch over the sets. A set is a value
// that is passed along: nothing is kept, so nothing can change while threads draw.
#include "kernels/kernels.h"

using namespace orn;

// The best set that a build may use: an enumerator of kernels::Set, defined by CMakeLists.txt where
// it is not the last.
#ifndef ORN_BEST_SET
#define ORN_BEST_SET Avx512
#endif

#if defined(__x86_64__) && defined(__GNUC__)
#define ORN_HAS_AVX512 (__builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl"))
#define ORN_AVX512_CASE(call)                                                                      \
    case kernels::Set::Avx512:                                                                     \
        return kernels::avx512::call;
namespace orn {
namespace kernels {
namespace avx512 {
ORN_KERNEL_LOOPS()
}
} // namespace kernels
} // namespace orn
#else
#define ORN_HAS_AVX512 false
#define ORN_AVX512_CASE(call)
#endif

static inline bool ProcessorHas(kernels::Set set) {
    switch (set) {
    case kernels::Set::Avx512:
        return ORN_HAS_AVX512;
    default:
        return true;
    }
}

bool kernels::Has(Set set) {
    return set <= Set::ORN_BEST_SET && ProcessorHas(set);
}

kernels::Set kernels::Best() {
    return Has(Set::Avx512) ? Set::Avx512 : Set::Plain;
}

#define ORN_CHOOSE(call)                                                                           \
    switch (set) {                                                                                 \
        ORN_AVX512_CASE(call)                                                                      \
    default:                                                                                       \
        return plain::call;                                                                        \
    }

void kernels::FillRows(uint8_t *first, ptrdiff_t stride, int64_t rows, ptrdiff_t bytes,
                       Pattern pattern, Set set) {
    ORN_CHOOSE(FillRows(first, stride, rows, bytes, pattern))
}

void kernels::PaintSpans(const Plane &plane, const OrnMinRenderScanline *spans, int32_t count,
                         Pattern pattern, Set set) {
    ORN_CHOOSE(PaintSpans(plane, spans, count, pattern))
}

void kernels::PaintMask(const Plane &plane, const Mask &mask, const Ink &ink, Set set) {
    ORN_CHOOSE(PaintMask(plane, mask, ink))
}

void kernels::PaintNarrowMask(uint8_t *first, ptrdiff_t stride, const uint32_t *words, int32_t rows,
                              uint32_t columns, Pattern pattern, Set set) {
    ORN_CHOOSE(PaintNarrowMask(first, stride, words, rows, columns, pattern))
}

void kernels::PlanBits(BitPlan *plan, const BitScaling &scaling, Set set) {
    ORN_CHOOSE(PlanBits(plan, scaling))
}

void kernels::ExpandBits(uint32_t *to, int32_t pitch, const uint32_t *const *rows, int32_t rowCount,
                         const BitPlan &plan, Set set) {
    ORN_CHOOSE(ExpandBits(to, pitch, rows, rowCount, plan))
}
