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
#define ORN_X86_SETS(SET)                                                                          \
    SET(Avx2, avx2,                                                                                \
        __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&                         \
            __builtin_cpu_supports("bmi2"))                                                        \
    SET(Avx512, avx512,                                                                            \
        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&                \
            __builtin_cpu_supports("bmi2"))
#else
#define ORN_X86_SETS(SET)
#endif

// The sets of this kind of processor beside the plain one: enumerator, namespace, whether it is
// there.
#define ORN_SETS(SET) ORN_X86_SETS(SET)

#define ORN_DECLARE(Name, name, has)                                                               \
    namespace name {                                                                               \
    ORN_KERNEL_LOOPS()                                                                             \
    }
namespace orn {
namespace kernels {
ORN_SETS(ORN_DECLARE)
} // namespace kernels
} // namespace orn

#define ORN_HAS(Name, name, has)                                                                   \
    case kernels::Set::Name:                                                                       \
        return has;

static inline bool ProcessorHas(kernels::Set set) {
    switch (set) {
        ORN_SETS(ORN_HAS)
    default:
        return set == kernels::Set::Plain;
    }
}

bool kernels::Has(Set set) {
    return set <= Set::ORN_BEST_SET && ProcessorHas(set);
}

kernels::Set kernels::Best() {
    for (int set = static_cast<int>(Set::ORN_BEST_SET); set > 0; --set)
        if (ProcessorHas(static_cast<Set>(set)))
            return static_cast<Set>(set);
    return Set::Plain;
}

#if defined(__x86_64__) && defined(__GNUC__)
#define ORN_CASES(call)                                                                            \
    case Set::Avx2:                                                                                \
        return avx2::call;                                                                         \
    case Set::Avx512:                                                                              \
        return avx512::call;
#else
#define ORN_CASES(call)
#endif

// The one switch.
#define ORN_CHOOSE(call)                                                                           \
    switch (set) {                                                                                 \
        ORN_CASES(call)                                                                            \
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

void kernels::PaintMask(const Plane &plane, const Mask &mask, const Ink &ink,
                        Set set){ORN_CHOOSE(PaintMask(plane, mask, ink))}

int32_t kernels::PrepareNarrowMask(uint32_t *words, int32_t rows, Set set) {
    ORN_CHOOSE(PrepareNarrowMask(words, rows))
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
