// Changes a CBF file where it matters, so that inputs get past the header: section offsets, the
// entries of its tables, index records and glyph heads. Half of all changes are the fuzzer's own.
#include "input.h"

#include <algorithm>
#include <random>

extern "C" size_t LLVMFuzzerMutate(uint8_t *data, size_t size, size_t maxSize);

namespace {

constexpr size_t kHeaderBytes = 28;

struct Mutation {
    uint8_t *data;
    size_t size;
    std::mt19937 random;

    uint32_t Below(size_t limit) {
        return uint32_t(random() % limit);
    }
    uint64_t Word(uint64_t at) const {
        Input input = {data + std::min<uint64_t>(at, size), data + size};
        return uint32_t(input.Word());
    }
    void Put(uint64_t at, uint32_t value, int bytes) {
        for (int i = 0; i < bytes && at + uint64_t(i) < size; ++i)
            data[at + uint64_t(i)] = uint8_t(value >> 8 * i);
    }
    // A size or a count: mostly near the truth, else far beyond the file or at a limit of the
    // format.
    uint32_t Amount(uint64_t old) {
        const uint32_t limits[] = {0,        1,       0x7FFF,     0x8000,     0xFFFF,
                                   0x110000, 1 << 24, 0x7FFFFFFF, 0xFFFFFFFF, uint32_t(size)};
        return random() % 4 ? uint32_t(old) + Below(9) - 4 : limits[Below(std::size(limits))];
    }
    uint64_t Section(int i) const { // 0, 1: run tables; 2: index; 3: glyph data
        return Word(12 + 4 * uint64_t(i));
    }
};

void ChangeHeader(Mutation *m) {
    const uint64_t field = 4 * m->Below(7);
    const bool borrows = field >= 12 && m->random() % 2;
    m->Put(field, borrows ? uint32_t(m->Section(int(m->Below(4)))) : m->Amount(m->Word(field)), 4);
}

uint64_t SomeTable(Mutation *m) {
    const int section = int(m->Below(3));
    return m->Section(section) + (section == 2 ? 4 : 0);
}

void ChangeTable(Mutation *m) {
    const uint64_t table = SomeTable(m);
    const uint64_t entries = std::min<uint64_t>(m->Word(table), m->size / 4) + 1;
    const uint64_t entry = table + 4 * (1 + m->Below(entries));
    switch (m->Below(4)) {
    case 0:
        return m->Put(table, m->Amount(m->Word(table)), 4);
    case 1:
        return m->Put(entry, m->Amount(m->Word(entry)), 2); // symbol
    case 2:
        return m->Put(entry + 2, m->Below(34), 2); // length
    default: // legal lengths: 1, 2, 3, ... with a few of the same
        uint32_t length = 1;
        for (uint64_t i = 1; i < entries; ++i, length += length < 32 ? m->Below(3) : 0)
            m->Put(table + 4 * i + 2, length, 2);
    }
}

void ChangeIndexRecord(Mutation *m) {
    const uint64_t index = m->Section(2);
    if (m->Below(4) == 0)
        return m->Put(index, m->Amount(m->Word(index)), 4);
    uint64_t record = index + 8 + 4 * m->Word(index + 4);
    for (uint32_t skip = m->Below(4); skip > 0 && record + 8 < m->size; --skip)
        record += 8 + m->Word(record + 4);
    const uint64_t field = record + (m->random() % 2 ? 4 : 0);
    m->Put(field, m->Amount(m->Word(field)), 4);
}

// Heads are found by their place in the data, which the index need not agree with.
void ChangeGlyphHead(Mutation *m) {
    const uint64_t glyphs = m->Section(3);
    const uint64_t length = glyphs < m->size ? m->size - glyphs : 1;
    const uint64_t head = glyphs + m->Below(m->random() % 2 ? 1 : length);
    const uint8_t sides[] = {0, 1, 31, 32, 33, 122, 123, 127, 128, 255};
    if (m->random() % 3)
        m->Put(head + m->Below(4), sides[m->Below(std::size(sides))], 1);
    else
        m->Put(head + 4 + 2 * m->Below(2), m->Amount(m->Word(head + 6) & 0xFFFF), 2);
}

} // namespace

extern "C" size_t LLVMFuzzerCustomMutator(uint8_t *data, size_t size, size_t maxSize,
                                          unsigned seed) {
    Mutation mutation = {data, size, std::mt19937(seed)};
    void (*const changes[])(Mutation *) = {ChangeHeader, ChangeTable, ChangeIndexRecord,
                                           ChangeGlyphHead};
    if (size < kHeaderBytes || mutation.random() % 2)
        return LLVMFuzzerMutate(data, size, maxSize);
    for (uint32_t n = 1 + mutation.Below(3); n > 0; --n)
        changes[mutation.Below(std::size(changes))](&mutation);
    return size;
}
