// SPDX-License-Identifier: MIT
// Loading of the code-point index. The file holds Huffman-coded deltas from glyph record to glyph
// record, in records that begin at any slot; they are stored as they come, and summed up at the
// end.
//
// Slots up to the last code point of Unicode are an array, those beyond it (reachable by long UTF-8
// sequences) a list of what the file really fills: a count of 2^32 costs 4.25 MiB, not 16 GiB.
#include "text_index.h"

#include "arithmetic.h"
#include "cbf.h"
#include "grow.h"
#include "text_huffman.h"

#include <string.h>

using namespace orn;

constexpr uint32_t kDenseSlots = 0x110000;

// ---- Records ----

static bool StoreSlot(CodePointIndex *index, uint32_t codePoint, int32_t delta) {
    const auto word = static_cast<uint32_t>(delta);
    if (codePoint < index->denseSlots) {
        index->words[1 + codePoint] = word;
        return true;
    }
    const uint32_t count = index->farCount;
    if (!MakeRoom(&index->farSlots, count))
        return false;
    index->farSlots[index->farCount++] = {codePoint, count, word};
    return true;
}

// All slots from slot on become 0, also those that are filled.
static void ClearSlots(CodePointIndex *index, uint32_t slot) {
    if (slot < index->denseSlots)
        memset(index->words + 1 + slot, 0, size_t{index->denseSlots - slot} * sizeof *index->words);
    for (uint32_t i = 0; i < index->farCount; ++i)
        if (index->farSlots[i].codePoint >= slot)
            index->farSlots[i].offset = 0;
}

// Fills slots from slot on with a record's deltas. False: the section ends with it, since the last
// slot is filled or memory is short. A symbol that needs bits past the record fills nothing and
// ends the record. A walk that takes no bits would store 0 for ever, and so has stored it
// everywhere.
static bool DecodeRecord(CodePointIndex *index, const HuffLut *deltas, const uint8_t *bytes,
                         uint32_t length, uint32_t slot) {
    const uint64_t endBit = uint64_t{length} * 8;
    BitReader reader = {bytes, length, 0};
    for (; slot < index->words[0]; ++slot) {
        const uint64_t before = reader.position;
        const int32_t delta = WalkHuffLut(deltas, &reader);
        if (reader.position == before) {
            ClearSlots(index, slot);
            return false;
        }
        if (reader.position > endBit || static_cast<uint16_t>(delta) == cbf::kEndMark)
            return true;
        if (!StoreSlot(index, slot, delta))
            return false;
    }
    return false;
}

// Reads one record. False: the section ends here.
static bool ReadRecord(CodePointIndex *index, FontReader *reader, const HuffLut *deltas) {
    uint32_t slot = 0;
    uint32_t length = 0;
    if (!ReadWord(reader, &slot) || !ReadWord(reader, &length) || length == 0 ||
        !HasBytes(reader, length))
        return false;
    auto *bytes = static_cast<uint8_t *>(malloc(length));
    const bool more =
        bytes && Read(reader, bytes, length) && DecodeRecord(index, deltas, bytes, length, slot);
    free(bytes);
    return more;
}

// ---- Offsets ----

static int CompareFarSlots(const void *first, const void *second) {
    const auto *a = static_cast<const FarSlot *>(first);
    const auto *b = static_cast<const FarSlot *>(second);
    if (a->codePoint != b->codePoint)
        return a->codePoint < b->codePoint ? -1 : 1;
    return a->order < b->order ? -1 : 1;
}

// Sorts by code point and keeps the last slot of each.
static void SortFarSlots(CodePointIndex *index) {
    FarSlot *slots = index->farSlots;
    if (index->farCount == 0)
        return;
    qsort(slots, index->farCount, sizeof(FarSlot), CompareFarSlots);
    uint32_t kept = 0;
    for (uint32_t i = 0; i < index->farCount; ++i) {
        if (kept > 0 && slots[kept - 1].codePoint == slots[i].codePoint)
            --kept;
        slots[kept++] = slots[i];
    }
    index->farCount = kept;
}

// Deltas become offsets: the sum of all that are not 0, in code-point order, modulo 2^32.
static void SumDeltas(CodePointIndex *index) {
    uint32_t sum = 0;
    for (uint32_t c = 0; c < index->denseSlots; ++c)
        if (index->words[1 + c])
            index->words[1 + c] = sum += index->words[1 + c];
    for (uint32_t i = 0; i < index->farCount; ++i)
        if (index->farSlots[i].offset)
            index->farSlots[i].offset = sum += index->farSlots[i].offset;
}

// ---- Loading ----

void orn::LoadIndex(CodePointIndex *index, FontReader *reader, uint32_t offset) {
    uint32_t count = 0;
    if (!SeekTo(reader, offset) || !ReadWord(reader, &count))
        return;
    HuffLut *deltas = LoadHuffTable(reader, reader->position);
    if (!deltas)
        return;
    const auto denseSlots = static_cast<uint32_t>(Min(count, kDenseSlots));
    index->words = static_cast<uint32_t *>(calloc(size_t{denseSlots} + 2, sizeof(uint32_t)));
    if (index->words) {
        index->words[0] = count;
        index->denseSlots = denseSlots;
        while (ReadRecord(index, reader, deltas)) {
        }
        SortFarSlots(index);
        SumDeltas(index);
    }
    free(deltas);
}

void orn::FreeIndex(CodePointIndex *index) {
    free(index->words);
    free(index->farSlots);
}

// ---- Far slots ----

uint32_t orn::ResolveFarCodePoint(const CodePointIndex &index, uint32_t codePoint) {
    return index.words && codePoint < index.words[0] ? codePoint : 0;
}

uint32_t orn::FindFarOffset(const CodePointIndex &index, uint32_t codePoint) {
    uint32_t first = 0;
    uint32_t end = index.farCount;
    while (first < end) {
        const uint32_t middle = first + (end - first) / 2;
        if (index.farSlots[middle].codePoint < codePoint)
            first = middle + 1;
        else
            end = middle;
    }
    const bool found = first < index.farCount && index.farSlots[first].codePoint == codePoint;
    return found ? index.farSlots[first].offset : 0;
}
