// SPDX-License-Identifier: MIT
// Changes a CBF file where it matters, so that inputs get past the header: section offsets, tables,
// index records and glyph heads. Half of all changes are the fuzzer's own.
#include "cbf.h"
#include "input.h"

#include <algorithm>
#include <random>

extern "C" size_t LLVMFuzzerMutate(uint8_t *data, size_t size, size_t maxSize);

namespace {

struct Mutation {
    uint8_t *data;
    size_t size;
    std::mt19937 random;

    uint32_t Below(uint64_t limit) {
        return uint32_t(random() % limit);
    }
    uint64_t Word(uint64_t at) const {
        Input input = {data + std::min<uint64_t>(at, size), data + size};
        return uint32_t(input.Word());
    }
    void Put(uint64_t at, uint64_t value, uint64_t bytes) {
        for (uint64_t i = 0; i < bytes && at + i < size; ++i)
            data[at + i] = uint8_t(value >> 8 * i);
    }
    // Mostly near the truth, else far beyond the file or at a limit of the format.
    void ChangeAmount(uint64_t at, uint64_t bytes) {
        const uint64_t limits[] = {0,        1,       0x7FFF,     0x8000,     0xFFFF,
                                   0x110000, 1 << 24, 0x7FFFFFFF, 0xFFFFFFFF, size};
        Put(at, random() % 4 ? Word(at) + Below(9) - 4 : limits[Below(std::size(limits))], bytes);
    }
};

void ChangeTable(Mutation *m) {
    const uint32_t section = m->Below(3); // of runs, of runs, of the index
    const uint64_t table =
        m->Word(cbf::kBackgroundTableAt + 4 * section) + (section == 2 ? cbf::kIndexHeadBytes : 0);
    const uint64_t entries = std::min<uint64_t>(m->Word(table), m->size / 4) + 1;
    const uint32_t kind = m->Below(4);
    const auto symbolAt = [=](uint64_t entry) {
        return table + cbf::kTableHeadBytes + cbf::kTableEntryBytes * entry;
    };
    const auto lengthAt = [=](uint64_t entry) { return symbolAt(entry) + 2; };
    if (kind == 0)
        m->ChangeAmount(table, 4);
    else if (kind == 1)
        m->ChangeAmount(symbolAt(m->Below(entries)), 2);
    else if (kind == 2)
        m->Put(lengthAt(m->Below(entries)), m->Below(cbf::kMaxCodeBits + 2), 2);
    else // legal lengths: 1, 2, 3, ... with a few of the same
        for (uint64_t i = 0, length = 1; i + 1 < entries;
             ++i, length += length < cbf::kMaxCodeBits ? m->Below(3) : 0)
            m->Put(lengthAt(i), length, 2);
}

void ChangeIndex(Mutation *m) {
    const uint64_t index = m->Word(cbf::kIndexAt), table = index + cbf::kIndexHeadBytes;
    uint64_t record = table + cbf::kTableHeadBytes + cbf::kTableEntryBytes * m->Word(table);
    for (uint32_t skip = m->Below(4); skip > 0 && record + cbf::kIndexRecordHeadBytes < m->size;
         --skip)
        record += cbf::kIndexRecordHeadBytes + m->Word(record + 4);
    const uint64_t fields[] = {index, record, record + 4};
    m->ChangeAmount(fields[m->Below(3)], 4);
}

// Heads are found by their place in the data, which the index need not agree with.
void ChangeGlyphHead(Mutation *m) {
    const uint8_t sides[] = {0, 1, 31, 32, 33, 122, 123, 127, 128, 255};
    const uint64_t head = m->Word(cbf::kDataAt) + m->Below(m->random() % 2 ? 1 : m->size);
    if (m->random() % 3)
        m->Put(head + m->Below(4), sides[m->Below(std::size(sides))], 1);
    else
        m->ChangeAmount(head + (m->random() % 2 ? cbf::kGlyphAdvanceAt : cbf::kGlyphBitCountAt), 2);
}

void ChangeHeader(Mutation *m) {
    const auto offsetAt = [=] { return cbf::kBackgroundTableAt + 4 * m->Below(4); };
    m->ChangeAmount(4 * m->Below(cbf::kHeaderBytes / 4), 4);
    if (m->random() % 2)
        m->Put(offsetAt(), m->Word(offsetAt()), 4); // two sections in one place
}

} // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t maxSize,
                                          unsigned seed) {
    void (*const changes[])(Mutation *) = {ChangeHeader, ChangeTable, ChangeIndex, ChangeGlyphHead};
    Mutation mutation = {data, size, std::mt19937(seed)};
    if (size < cbf::kHeaderBytes || mutation.random() % 2)
        return LLVMFuzzerMutate(data, size, maxSize);
    for (uint32_t n = 1 + mutation.Below(3); n > 0; --n)
        changes[mutation.Below(std::size(changes))](&mutation);
    return size;
}
