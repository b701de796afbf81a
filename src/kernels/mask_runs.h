// SPDX-License-Identifier: MIT
// Painting through a mask run by run, for sets without masked stores. A run is one store, or two
// that overlap, of the largest size that fits into it; only long ones take more. No byte outside a
// run is touched.
//
// Included by the file of each such set, which has defined before it, in its unnamed namespace,
//   ORN_SET                  the attributes of its functions,
//   Block, Wide              what it stores at once: 16 bytes, and as much as it can,
//   kBlockBytes, kWideBytes  their sizes,
//   FirstBlock, FirstBytes   the first 16 and 8 bytes of a Wide,
//   Average(a, b)            of two Blocks or two Wides, each byte on its own, rounded down,
//   kSingleRowsApart         whether rows that don't repeat are worth code of their own.
// All is local to that file, so that every set has its own copy in its own instructions.
#pragma once

#include "kernels/kernels.h"

namespace {

// ---- Stores ----

template <class Unit> ORN_SET Unit LoadUnit(const uint8_t *from) {
    Unit unit;
    memcpy(&unit, from, sizeof unit);
    return unit;
}

template <class Unit> ORN_SET void StoreUnit(uint8_t *to, Unit unit) {
    memcpy(to, &unit, sizeof unit);
}

template <class Unit> ORN_SET Unit UnitOf(Pattern pattern) {
    const uint64_t bytes[] = {pattern.bytes, pattern.bytes, pattern.bytes, pattern.bytes};
    return LoadUnit<Unit>(reinterpret_cast<const uint8_t *>(bytes));
}

// a + b = 2 (a & b) + (a ^ b), halved in each byte on its own.
template <class Unit> ORN_SET Unit AverageBytes(Unit a, Unit b) {
    const Unit upperBits = UnitOf<Unit>({0xFEFEFEFEFEFEFEFE});
    return static_cast<Unit>((a & b) + static_cast<Unit>((a ^ b) & upperBits) / 2);
}

ORN_SET uint8_t Average(uint8_t a, uint8_t b) {
    return AverageBytes(a, b);
}

ORN_SET uint16_t Average(uint16_t a, uint16_t b) {
    return AverageBytes(a, b);
}

ORN_SET uint32_t Average(uint32_t a, uint32_t b) {
    return AverageBytes(a, b);
}

ORN_SET uint64_t Average(uint64_t a, uint64_t b) {
    return AverageBytes(a, b);
}

// What is to be stored at some bytes.
template <bool half, class Unit> ORN_SET Unit Inked(const uint8_t *bytes, Unit ink) {
    return half ? Average(LoadUnit<Unit>(bytes), ink) : ink;
}

// ---- Runs ----

// Some rows of a run, or one.
struct Rows {
    ptrdiff_t stride;
    int32_t count;
};

// A run of one to two units. The stores may overlap: both are made from what was there before.
template <bool half, bool repeated, class Unit>
ORN_SET void PaintEnds(uint8_t *first, ptrdiff_t bytes, Rows rows, Unit ink) {
    do {
        uint8_t *const second = first + bytes - sizeof(Unit);
        const Unit head = Inked<half>(first, ink);
        const Unit tail = Inked<half>(second, ink);
        StoreUnit(first, head);
        StoreUnit(second, tail);
        first += rows.stride;
    } while (repeated && --rows.count > 0);
}

// One to three bytes of luma, or a sample of chroma.
template <bool half, bool repeated>
ORN_SET void PaintFewBytes(uint8_t *first, ptrdiff_t bytes, Rows rows, uint16_t ink) {
    const auto one = static_cast<uint8_t>(ink);
    do {
        if (bytes > 1)
            StoreUnit(first, Inked<half>(first, ink));
        if (bytes != 2)
            first[bytes - 1] = Inked<half>(first + bytes - 1, one);
        first += rows.stride;
    } while (repeated && --rows.count > 0);
}

template <bool half, bool repeated>
ORN_SET void PaintLong(uint8_t *first, ptrdiff_t bytes, Rows rows, Wide ink) {
    do {
        uint8_t *const last = first + bytes - kWideBytes;
        const Wide tail = Inked<half>(last, ink);
        for (uint8_t *to = first; to < last; to += kWideBytes)
            StoreUnit(to, Inked<half>(to, ink));
        StoreUnit(last, tail);
        first += rows.stride;
    } while (repeated && --rows.count > 0);
}

template <bool half, bool repeated>
ORN_SET void PaintRun(uint8_t *first, ptrdiff_t bytes, Rows rows, Wide ink) {
    if (bytes >= 2 * kBlockBytes)
        PaintLong<half, repeated>(first, bytes, rows, ink);
    else if (bytes >= kBlockBytes)
        PaintEnds<half, repeated>(first, bytes, rows, FirstBlock(ink));
    else if (bytes >= 8)
        PaintEnds<half, repeated>(first, bytes, rows, FirstBytes(ink));
    else if (bytes >= 4)
        PaintEnds<half, repeated>(first, bytes, rows, static_cast<uint32_t>(FirstBytes(ink)));
    else
        PaintFewBytes<half, repeated>(first, bytes, rows, static_cast<uint16_t>(FirstBytes(ink)));
}

// Of bits that are not 0. Every set bit of changes begins or ends a run; the last run may end at
// bit 64, which isn't there. Not inline, so that all that a run needs stays in registers.
template <bool half, bool repeated>
__attribute__((noinline)) ORN_SET void PaintBits(uint64_t bits, uint8_t *first, int32_t sampleShift,
                                                 Rows rows, Wide ink) {
    uint64_t changes = bits ^ bits << 1;
    do {
        const ptrdiff_t start = __builtin_ctzll(changes);
        changes &= changes - 1;
        const ptrdiff_t end = changes ? __builtin_ctzll(changes) : 64;
        changes &= changes - 1;
        PaintRun<half, repeated>(first + (start << sampleShift), (end - start) << sampleShift, rows,
                                 ink);
    } while (changes);
}

// ---- Masks ----

// The bits that count of the two words from word i on; the second may lie beyond the row's end.
ORN_SET uint64_t TwoWordsThatCount(const Mask &mask, int32_t i) {
    const uint64_t second = i + 1 < mask.wordsPerRow ? EdgeBits(mask, i + 1) : 0;
    return second << kWordBits | EdgeBits(mask, i);
}

// Strips of two words, one after the other.
template <bool half, bool repeated>
ORN_SET void PaintRuns(const Plane &plane, const Mask &mask, Pattern pattern) {
    const int32_t sampleShift = plane.sampleBytes == kLumaBytes ? 0 : 1;
    const Wide ink = UnitOf<Wide>(pattern);
    for (int32_t i = 0; i < mask.wordsPerRow; i += 2) {
        const uint64_t counting = TwoWordsThatCount(mask, i);
        const int32_t second = i + 1 < mask.wordsPerRow ? 1 : 0;
        const uint32_t *words = mask.words + i;
        Rows rows = {static_cast<ptrdiff_t>(plane.stride), 1};
        uint8_t *first = plane.first + (ptrdiff_t{i} * kWordBits << sampleShift);
        for (int32_t row = 0; row < mask.rows; ++row, words += mask.pitch) {
            const uint64_t bits = (uint64_t{words[second]} << kWordBits | words[0]) & counting;
            if (repeated)
                rows.count = Repeats(mask, row);
            if (bits)
                PaintBits<half, repeated>(bits, first, sampleShift, rows, ink);
            first += rows.count * rows.stride;
        }
    }
}

template <bool half>
ORN_SET void PaintAnyRuns(const Plane &plane, const Mask &mask, Pattern pattern) {
    if (kSingleRowsApart && !mask.repeats)
        PaintRuns<half, false>(plane, mask, pattern);
    else
        PaintRuns<half, true>(plane, mask, pattern);
}

ORN_SET void PaintMaskRuns(const Plane &plane, const Mask &mask, const Ink &ink) {
    if (ink.half)
        PaintAnyRuns<true>(plane, mask, ink.pattern);
    else
        PaintAnyRuns<false>(plane, mask, ink.pattern);
}

} // namespace
