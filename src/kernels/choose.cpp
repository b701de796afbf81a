// SPDX-License-Identifier: MIT
// Which set of innermost loops a processor has, and the one switch over the sets. A set is a value
// that is passed along: nothing is kept, so nothing can change while threads draw.
#include "kernels/kernels.h"

using namespace orn;

// The best set that a build may use: an enumerator of kernels::Set, defined by CMakeLists.txt where
// it is not the last.
#ifndef ORN_BEST_SET
#define ORN_BEST_SET Sve
#endif

// The sets of this kind of processor beside the plain one, a line each: enumerator, namespace,
// whether it is there.
#if defined(__x86_64__) && defined(__GNUC__)
#define ORN_HAS(feature) __builtin_cpu_supports(feature)
#define ORN_SETS(SET)                                                                              \
    SET(Avx2, avx2, ORN_HAS("avx2") && ORN_HAS("bmi") && ORN_HAS("bmi2") && ORN_HAS("popcnt"))     \
    SET(Avx512, avx512, ORN_HAS("avx512bw") && ORN_HAS("avx512vl") && ORN_HAS("bmi2"))
#elif defined(__aarch64__) && defined(__GNUC__) && defined(__clang__) &&                           \
    !defined(__ARM_FEATURE_SVE) // clang's arm_sve.h wants SVE everywhere
#define ORN_SETS(SET) SET(Neon, neon, true)
#elif defined(__aarch64__) && defined(__GNUC__)
#include <sys/auxv.h>
#define ORN_SETS(SET)                                                                              \
    SET(Neon, neon, true)                                                                          \
    SET(Sve, sve, (getauxval(AT_HWCAP) & HWCAP_SVE) != 0)
#else
#define ORN_SETS(SET)
#endif

#define ORN_DECLARE(Name, name, has)                                                               \
    namespace name {                                                                               \
    ORN_KERNEL_LOOPS()                                                                             \
    }

namespace orn {
namespace kernels {
ORN_SETS(ORN_DECLARE)
} // namespace kernels
} // namespace orn

#define ORN_PROCESSOR_HAS(Name, name, has)                                                         \
    case kernels::Set::Name:                                                                       \
        return has;

static inline bool ProcessorHas(kernels::Set set) {
    switch (set) {
        ORN_SETS(ORN_PROCESSOR_HAS)
    default:
        return set == kernels::Set::Plain;
    }
}

bool kernels::Has(Set set) {
    return set <= Set::ORN_BEST_SET && ProcessorHas(set);
}

kernels::Set kernels::Best() {
    auto set = static_cast<int32_t>(Set::ORN_BEST_SET);
    while (!ProcessorHas(static_cast<Set>(set)))
        --set;
    return static_cast<Set>(set);
}

// The one switch. A set's case names the loop by ORN_LOOP, which each of the functions below
// defines as its own call.
#define ORN_CASE(Name, name, has)                                                                  \
    case Set::Name:                                                                                \
        return name::ORN_LOOP;

#define ORN_CHOOSE                                                                                 \
    switch (set) {                                                                                 \
        ORN_SETS(ORN_CASE)                                                                         \
    default:                                                                                       \
        return plain::ORN_LOOP;                                                                    \
    }

#define ORN_LOOP FillRows(first, stride, rows, bytes, pattern)
void kernels::FillRows(uint8_t *first, ptrdiff_t stride, int64_t rows, ptrdiff_t bytes,
                       Pattern pattern, Set set) {
    ORN_CHOOSE;
}
#undef ORN_LOOP

#define ORN_LOOP PaintSpans(plane, spans, count, pattern)
void kernels::PaintSpans(const Plane &plane, const OrnMinRenderScanline *spans, int32_t count,
                         Pattern pattern, Set set) {
    ORN_CHOOSE;
}
#undef ORN_LOOP

#define ORN_LOOP PaintMask(plane, mask, ink)
void kernels::PaintMask(const Plane &plane, const Mask &mask, const Ink &ink, Set set) {
    ORN_CHOOSE;
}
#undef ORN_LOOP

#define ORN_LOOP PrepareNarrowMask(words, rows)
int32_t kernels::PrepareNarrowMask(uint32_t *words, int32_t rows, Set set) {
    ORN_CHOOSE;
}
#undef ORN_LOOP

#define ORN_LOOP PaintNarrowMask(first, stride, words, rows, columns, pattern)
void kernels::PaintNarrowMask(uint8_t *first, ptrdiff_t stride, const uint32_t *words, int32_t rows,
                              uint32_t columns, Pattern pattern, Set set) {
    ORN_CHOOSE;
}
#undef ORN_LOOP

#define ORN_LOOP PlanBits(plan, scaling)
void kernels::PlanBits(BitPlan *plan, const BitScaling &scaling, Set set) {
    ORN_CHOOSE;
}
#undef ORN_LOOP

#define ORN_LOOP ExpandBits(to, pitch, rows, rowCount, plan)
void kernels::ExpandBits(uint32_t *to, int32_t pitch, const uint32_t *const *rows, int32_t rowCount,
                         const BitPlan &plan, Set set) {
    ORN_CHOOSE;
}
#undef ORN_LOOP
