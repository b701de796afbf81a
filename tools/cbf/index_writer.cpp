// SPDX-License-Identifier: MIT
// How records are split decides how large the index is, so a few ways are tried.
#include "cbf/index_writer.h"

#include "cbf.h"
#include "cbf/codes.h"

namespace cbf {

// The symbols of one index record: deltas, zeros for the gaps between, an end mark except at last.
struct IndexRecord {
    uint32_t firstSlot;
    std::vector<uint16_t> symbols;
};

static std::vector<IndexRecord> SplitIndex(const std::vector<IndexSlot> &slots, uint32_t maxGap) {
    std::vector<IndexRecord> records;
    uint32_t next = 0;
    for (const IndexSlot &slot : slots) {
        const uint32_t gap = slot.codePoint - next;
        if (records.empty() || gap > maxGap) {
            if (!records.empty())
                records.back().symbols.push_back(kEndMark);
            records.push_back({slot.codePoint, {}});
        } else {
            records.back().symbols.insert(records.back().symbols.end(), gap, 0);
        }
        records.back().symbols.push_back(slot.delta);
        next = slot.codePoint + 1;
    }
    return records;
}

static Bytes SectionBytes(uint32_t count, const std::vector<IndexRecord> &records) {
    Counts counts;
    for (const IndexRecord &record : records)
        for (const uint16_t symbol : record.symbols)
            ++counts[symbol];
    const std::vector<Code> codes = MakeCodes(counts);
    const CodeBook book = MakeCodeBook(codes);
    Bytes bytes;
    PutWord(bytes, count);
    Append(bytes, TableBytes(codes));
    for (const IndexRecord &record : records) {
        BitWriter deltas;
        for (const uint16_t symbol : record.symbols)
            PutSymbol(deltas, book, symbol);
        PutWord(bytes, record.firstSlot);
        PutWord(bytes, static_cast<uint32_t>(deltas.bytes.size()));
        Append(bytes, deltas.bytes);
    }
    return bytes;
}

// The longest gaps that are bridged, one for each way to split. A record costs its head, an end
// mark of at most 32 bits and padding, 103 bits at most, and a zero at least one bit, so that
// longer gaps never pay.
constexpr uint32_t kBridgedGaps[] = {0, 1, 2, 3, 4, 6, 8, 11, 16, 23, 32, 45, 64, 90, 128};

// The codes depend on where the index is split and the best split on the codes, so several are
// tried.
Bytes IndexBytes(const std::vector<IndexSlot> &slots) {
    if (slots.empty())
        return SectionBytes(1, {{0, {0}}});
    const uint32_t count = slots.back().codePoint + 1;
    Bytes best;
    for (const uint32_t maxGap : kBridgedGaps) {
        Bytes section = SectionBytes(count, SplitIndex(slots, maxGap));
        if (best.empty() || section.size() < best.size())
            best = std::move(section);
    }
    return best;
}

} // namespace cbf
