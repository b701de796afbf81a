// SPDX-License-Identifier: MIT
// Which set of innermost loops a processor has, and the one switch over the sets. A set is a value
// that is passed along, and what the processor has is a constant from the library's start on:
// nothing can change while threads draw.
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
#include <cpuid.h>

struct Features {
    bool avx2; // and both sets of bit manipulation
    bool avx512;
};

// __builtin_cpu_supports would bring 4.5 KiB along that tell all processors apart.
static Features FindFeatures() {
    uint32_t a, b, c, d;
    constexpr uint32_t kStateAndPopcnt = bit_OSXSAVE | bit_POPCNT;
    if (!__get_cpuid(1, &a, &b, &c, &d) || (c & kStateAndPopcnt) != kStateAndPopcnt)
        return {false, false};
    // Which registers the system keeps for a program: XMM and YMM, then the masks and ZMM, too.
    uint32_t kept, unused;
    __asm__("xgetbv" : "=a"(kept), "=d"(unused) : "c"(0));
    constexpr uint32_t kYmm = 0x06, kZmm = 0xE6;
    constexpr uint32_t kAvx2 = bit_AVX2 | bit_BMI | bit_BMI2;
    constexpr uint32_t kAvx512 = kAvx2 | bit_AVX512F | bit_AVX512BW | bit_AVX512VL;
    if (!__get_cpuid_count(7, 0, &a, &b, &c, &d))
        return {false, false};
    return {(kept & kYmm) == kYmm && (b & kAvx2) == kAvx2,
            (kept & kZmm) == kZmm && (b & kAvx512) == kAvx512};
}

static const Features kFeatures = FindFeatures();

#define ORN_SETS(SET) SET(Avx2, avx2, kFeatures.avx2) SET(Avx512, avx512, kFeatures.avx512)
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

static kernels::Set FindBest() {
    auto set = static_cast<int32_t>(kernels::Set::ORN_BEST_SET);
    while (!ProcessorHas(static_cast<kernels::Set>(set)))
        --set;
    return static_cast<kernels::Set>(set);
}

// Until it is set, for whoever draws while a program's own constants are made: the plain one.
static const kernels::Set kBest = FindBest();

kernels::Set kernels::Best() {
    return kBest;
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
