// SPDX-License-Identifier: MIT
// Huffman tables: reading a list of code lengths, assigning the canonical codes, building the tree
// of subtables, and the walk through it.
#include "text_huffman.h"

#include "cbf.h"

#include <stdlib.h>
#include <string.h>

using namespace orn;

// ---- Codes ----

struct HuffCode {
    uint32_t aligned; // the code's bits from bit 31 down
    uint16_t length;
    uint16_t symbol;
};

static HuffCode *ReadCodes(FontReader *reader, uint64_t offset, uint32_t *count) {
    if (!SeekTo(reader, offset) || !ReadWord(reader, count) ||
        !HasBytes(reader, uint64_t{*count} * cbf::kTableEntryBytes))
        return nullptr;
    const size_t bytes = size_t{*count} * cbf::kTableEntryBytes;
    auto *raw = static_cast<uint8_t *>(malloc(bytes + 1)); // never 0 bytes
    auto *codes = static_cast<HuffCode *>(malloc(*count * sizeof(HuffCode) + 1));
    if (!raw || !codes || !Read(reader, raw, bytes)) {
        free(raw);
        free(codes);
        return nullptr;
    }
    const uint8_t *entry = raw;
    for (uint32_t i = 0; i < *count; ++i, entry += cbf::kTableEntryBytes)
        codes[i] = {0, LittleEndian16(entry + 2), LittleEndian16(entry)};
    free(raw);
    return codes;
}

// Canonical codes in file order: the first is all zeros, each next one continues from the one
// before, with zeros appended where it is longer. They are prefix-free exactly when no length is
// smaller than the one before and the code space of 2^length is never exceeded: a shorter or
// wrapped code would be zeros again, a prefix of the first.
static bool AssignCodes(HuffCode *codes, uint32_t count) {
    uint64_t next = 0;
    uint32_t previousLength = 1;
    for (uint32_t i = 0; i < count; ++i) {
        const uint32_t length = codes[i].length;
        if (length < previousLength || length > cbf::kMaxCodeBits)
            return false;
        next <<= length - previousLength;
        if (next >> length)
            return false;
        codes[i].aligned = static_cast<uint32_t>(next << (32 - length));
        previousLength = length;
        ++next;
    }
    return true;
}

// ---- Subtables ----

struct HuffBuilder {
    const HuffCode *codes;
    HuffLut *table;
    size_t size; // subtables
};

static bool AppendSubtable(HuffBuilder *builder) {
    auto *grown = static_cast<HuffLut *>(
        realloc(builder->table, (builder->size + 1) * sizeof *builder->table));
    if (!grown)
        return false;
    memset(&grown[builder->size], 0, sizeof *grown);
    builder->table = grown;
    ++builder->size;
    return true;
}

// The codes first..end - 1 are sorted and share the bits above this depth's four. A key that only
// one of them can match is a leaf, even if the code has bits beyond the key; a key that several
// match leads to a child. Children follow in the order of their keys, each with all it needs. With
// prefix-free codes of up to 32 bits the depth is at most 7, and the limit on offsets bounds the
// table whatever the file claims.
static bool AddHuffLutSubtable(HuffBuilder *builder, uint32_t first, uint32_t end, uint32_t depth) {
    const size_t own = builder->size;
    if (!AppendSubtable(builder))
        return false;
    const uint32_t shift = 28 - 4 * depth;
    for (uint32_t key = 0; key < 16 && first < end; ++key) {
        uint32_t next = first;
        while (next < end && (builder->codes[next].aligned >> shift & 15) == key)
            ++next;
        if (next == first)
            continue;
        HuffLutEntry *entry = &builder->table[own].entries[key];
        const HuffCode &code = builder->codes[first];
        if (next == first + 1) {
            const uint32_t bits = code.length - 4 * depth;
            // A code that ends within the key leaves its other bits free.
            const uint32_t keys = bits < 4 ? 1u << (4 - bits) : 1;
            for (uint32_t i = 0; i < keys; ++i)
                entry[i] = {static_cast<uint16_t>(bits), code.symbol};
        } else {
            const size_t offset = (builder->size - own) * 16 - key;
            if (offset > cbf::kMaxChildOffset)
                return false;
            *entry = {kChildSubtable, static_cast<uint16_t>(offset)};
            if (!AddHuffLutSubtable(builder, first, next, depth + 1))
                return false;
        }
        first = next;
    }
    return true;
}

HuffLut *orn::LoadHuffTable(FontReader *reader, uint64_t offset) {
    uint32_t count = 0;
    HuffCode *codes = ReadCodes(reader, offset, &count);
    if (!codes)
        return nullptr;
    HuffBuilder builder = {codes, nullptr, 0};
    const bool built = AssignCodes(codes, count) && AddHuffLutSubtable(&builder, 0, count, 0);
    free(codes);
    if (built)
        return builder.table;
    free(builder.table);
    return nullptr;
}

// ---- The walk ----

static uint32_t ByteOrZero(const BitReader *reader, uint64_t index) {
    return index < reader->byteCount ? reader->bytes[index] : 0;
}

static uint32_t PeekNibble(const BitReader *reader) {
    const uint64_t index = reader->position / 8;
    const uint32_t pair = ByteOrZero(reader, index) << 8 | ByteOrZero(reader, index + 1);
    return pair >> (12 - reader->position % 8) & 15;
}

int32_t orn::WalkHuffLut(const HuffLut *lut, BitReader *reader) {
    const HuffLutEntry *entry = &lut->entries[PeekNibble(reader)];
    while (entry->bits == kChildSubtable) {
        reader->position += 4;
        entry += entry->value + PeekNibble(reader); // children lie after their parent
    }
    reader->position += entry->bits;
    return static_cast<int16_t>(entry->value);
}
