// SPDX-License-Identifier: MIT
// The bits of bitmaps put in the order of a mask by BMI2's pdep, which spreads bits, and pext,
// which collects them: for AVX2 and AVX-512, whose processors have both.
#include "kernels/x86_bmi2.h"

#if defined(__x86_64__) && defined(__GNUC__)
#include <cpuid.h>
#include <immintrin.h>

#define ORN_BMI2 __attribute__((target("avx2,bmi2"))) static

using namespace orn;

// Before family 25, AMD's processors take a pdep or pext apart: bit by bit. (Of those that have
// both and AVX2: families 21 and 23.)
static bool FindSlowSpreading() {
    uint32_t a, b, c, d;
    if (!__get_cpuid(0, &a, &b, &c, &d) || b != signature_AMD_ebx ||
        !__get_cpuid(1, &a, &b, &c, &d))
        return false;
    const uint32_t family = (a >> 8 & 15) + (a >> 20 & 255);
    return family == 21 || family == 23;
}

static const bool kSpreadsSlowly = FindSlowSpreading();

// ---- Plans ----

// Of as many samples of a reduced bitmap as a word holds: a bit for each column that is shown.
static uint64_t FindShownColumns(uint32_t start, uint32_t step) {
    uint64_t places = 0;
    for (int32_t k = 0; k < kWordBits; ++k, start += step)
        places |= uint64_t{1} << (start >> kFractionBits);
    return places;
}

// Of 64 samples of an enlarged bitmap, which show at most 64 columns: a bit for each at which a
// column begins. There the fraction of the position, which wraps, is below the step.
ORN_BMI2 uint64_t FindBeginnings(uint32_t start, uint32_t step) {
    const __m256i steps = _mm256_set1_epi16(static_cast<int16_t>(step));
    const __m256i last = _mm256_sub_epi16(steps, _mm256_set1_epi16(1));
    const __m256i lanes = _mm256_set_epi16(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
    __m256i places = _mm256_add_epi16(_mm256_set1_epi16(static_cast<int16_t>(start)),
                                      _mm256_mullo_epi16(lanes, steps));
    uint64_t beginnings = 0;
    for (int32_t k = 0; k < 64; k += 16) {
        const __m256i below = _mm256_cmpeq_epi16(_mm256_min_epu16(places, last), places);
        const __m128i bytes =
            _mm_packs_epi16(_mm256_castsi256_si128(below), _mm256_extracti128_si256(below, 1));
        beginnings |= static_cast<uint64_t>(static_cast<uint32_t>(_mm_movemask_epi8(bytes))) << k;
        places = _mm256_add_epi16(places, _mm256_slli_epi16(steps, 4));
    }
    return step == 0 ? 1 : beginnings | 1;
}

static uint64_t FindPlaces(uint32_t start, uint32_t step) {
    if (step == kSameSize)
        return ~uint64_t{0};
    return step > kSameSize ? FindShownColumns(start, step) : FindBeginnings(start, step);
}

// Columns that the row has no more may come from anywhere.
static BitGroup MakeGroup(const BitScaling &scaling, int64_t sample) {
    const int64_t position = sample * scaling.step;
    const int64_t word = position >> kFractionBits >> 5;
    BitGroup group;
    group.places = FindPlaces(static_cast<uint32_t>(position % kSameSize),
                              static_cast<uint32_t>(scaling.step));
    group.shift = static_cast<int32_t>(position >> kFractionBits) % kWordBits;
    for (int32_t i = 0; i < 3; ++i)
        group.words[i] = static_cast<int32_t>(Min(word + i, scaling.rowWords - 1));
    return group;
}

static int32_t SamplesOfGroup(const BitScaling &scaling) {
    return scaling.step > kSameSize ? kWordBits : 2 * kWordBits;
}

void kernels::bmi2::PlanBits(BitPlan *plan, const BitScaling &scaling) {
    if (scaling.step > kMaxGatherStep || kSpreadsSlowly) {
        plain::PlanBits(plan, scaling);
        return;
    }
    plan->way = BitPlan::Deposit;
    plan->scaling = scaling;
    const int32_t samples = SamplesOfGroup(scaling);
    for (int32_t i = 0; i * samples < scaling.samples; ++i)
        plan->groups[i] = MakeGroup(scaling, scaling.first + i * samples);
}

// ---- Rows: the columns of a group are found in several rows, then turned round, then placed ----

constexpr int32_t kColumnsOfVector = 4; // times 64

static void FindColumns(uint64_t *columns, const uint32_t *const *rows, int32_t count,
                        const BitGroup &group) {
    const int32_t a = group.words[0];
    const int32_t b = group.words[1];
    const int32_t c = group.words[2];
    const int32_t shift = group.shift;
    for (int32_t i = 0; i < count; ++i) {
        const uint64_t two = uint64_t{rows[i][a]} << kWordBits | rows[i][b];
        columns[i] = two << shift | uint64_t{rows[i][c]} >> (kWordBits - shift);
    }
}

// The most significant bit becomes the least significant one.
ORN_BMI2 void ReverseColumns(uint64_t *columns, int32_t count) {
    const __m256i bytes = _mm256_broadcastsi128_si256(
        _mm_set_epi8(8, 9, 10, 11, 12, 13, 14, 15, 0, 1, 2, 3, 4, 5, 6, 7));
    const __m256i reversed = _mm256_broadcastsi128_si256(
        _mm_set_epi8(15, 7, 11, 3, 13, 5, 9, 1, 14, 6, 10, 2, 12, 4, 8, 0));
    const __m256i low = _mm256_set1_epi8(15);
    for (int32_t i = 0; i < count; i += kColumnsOfVector) {
        auto *at = reinterpret_cast<__m256i *>(columns + i);
        const __m256i turned = _mm256_shuffle_epi8(_mm256_loadu_si256(at), bytes);
        const __m256i left = _mm256_shuffle_epi8(reversed, _mm256_and_si256(turned, low));
        const __m256i right =
            _mm256_shuffle_epi8(reversed, _mm256_and_si256(_mm256_srli_epi16(turned, 4), low));
        _mm256_storeu_si256(at, _mm256_or_si256(_mm256_slli_epi16(left, 4), right));
    }
}

// From where a column begins to where the next one does: the difference of two powers of two, for
// all that are set at once. The last one ends at bit 64, which is left out. As many samples as the
// unit has bits.
template <class Unit>
ORN_BMI2 void SpreadColumns(uint32_t *to, int32_t pitch, const uint64_t *columns, int32_t count,
                            uint64_t places) {
    if (places == ~uint64_t{0}) {
        for (int32_t i = 0; i < count; ++i, to += pitch)
            memcpy(to, columns + i, sizeof(Unit));
        return;
    }
    const uint64_t ends = places & (places - 1);
    for (int32_t i = 0; i < count; ++i, to += pitch) {
        const auto bits =
            static_cast<Unit>(_pdep_u64(columns[i], ends) - _pdep_u64(columns[i], places));
        memcpy(to, &bits, sizeof bits);
    }
}

ORN_BMI2 void SelectColumns(uint32_t *to, int32_t pitch, const uint64_t *columns, int32_t count,
                            uint64_t places) {
    for (int32_t i = 0; i < count; ++i, to += pitch)
        *to = static_cast<uint32_t>(_pext_u64(columns[i], places));
}

void kernels::bmi2::ExpandBits(uint32_t *to, int32_t pitch, const uint32_t *const *rows,
                               int32_t rowCount, const BitPlan &plan) {
    if (plan.way != BitPlan::Deposit) {
        plain::ExpandBits(to, pitch, rows, rowCount, plan);
        return;
    }
    const int32_t words = WordsPerRow(plan.scaling.samples);
    const int32_t wordsOfGroup = SamplesOfGroup(plan.scaling) / kWordBits;
    uint64_t columns[kMaxExpandedRows];
    for (int32_t i = 0; i * wordsOfGroup < words; ++i) {
        const BitGroup &group = plan.groups[i];
        FindColumns(columns, rows, rowCount, group);
        ReverseColumns(columns, rowCount);
        if (wordsOfGroup == 1)
            SelectColumns(to + i, pitch, columns, rowCount, group.places);
        else if (2 * i + 1 < words)
            SpreadColumns<uint64_t>(to + 2 * i, pitch, columns, rowCount, group.places);
        else
            SpreadColumns<uint32_t>(to + 2 * i, pitch, columns, rowCount, group.places);
    }
}

#endif
