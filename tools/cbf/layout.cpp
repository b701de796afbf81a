// SPDX-License-Identifier: MIT
// Where sharing a record pays can't be said beforehand: a few limits are tried, and the smallest
// wins.
#include "cbf/layout.h"

#include "cbf.h"
#include "cbf/index_writer.h"

#include <map>

namespace cbf {

constexpr size_t kMaxDelta = 32767;

// Records begin at least seven bytes apart, so that no delta is the end mark.
static_assert(kGlyphHeadBytes + (kMaxCodedBits + 7) / 8 <= kMaxDelta, "a delta fits 16 bits");

// Puts records one after the other. The delta from one glyph to the next is one of 16 bits, and 0
// means the fallback glyph. So a record is shared only while it is near the end, which the next new
// record must be reached from, and never by two neighbours.
class Placer {
  public:
    Placer(const Record &fallback, size_t minSharedSize)
        : fallbackBytes(fallback.bytes), minSharedBytes(minSharedSize) {
        Append(fallback);
    }

    void Add(const Record &record) {
        if (record.bytes == fallbackBytes)
            return;
        const size_t offset = FindOrAppend(record);
        slots.push_back({record.codePoint, static_cast<uint16_t>(offset - previous)});
        previous = offset;
    }

    // With the index of what was added.
    Layout Finish() {
        layout.index = IndexBytes(slots);
        return std::move(layout);
    }

  private:
    size_t FindOrAppend(const Record &record) {
        if (record.bytes.size() < minSharedBytes)
            return Append(record);
        std::vector<size_t> &copies = offsets[record.bytes];
        const size_t end = layout.glyphData.size();
        for (auto copy = copies.rbegin(); copy != copies.rend() && end - *copy <= kMaxDelta; ++copy)
            if (*copy != previous)
                return *copy;
        copies.push_back(Append(record));
        return copies.back();
    }

    // A record begins in the last byte of the one before where the bits that say something there
    // are the same.
    size_t Append(const Record &record) {
        Bytes &data = layout.glyphData;
        const uint8_t first = record.bytes.front();
        const bool overlaps = !data.empty() && ((data.back() ^ first) & ~padding & 0xFF) == 0;
        if (overlaps)
            data.back() = first;
        const size_t offset = data.size() - overlaps;
        data.insert(data.end(), record.bytes.begin() + overlaps, record.bytes.end());
        padding = record.padding;
        ++layout.records;
        return offset;
    }

    const Bytes &fallbackBytes;
    const size_t minSharedBytes;
    Layout layout;
    std::vector<IndexSlot> slots;
    std::map<Bytes, std::vector<size_t>> offsets;
    size_t previous = 0;
    uint8_t padding = 0; // of the last record
};

// Sharing a record saves its bytes and adds two deltas to the index, rare ones as a rule. From what
// size on it pays depends on the index's codes, so it is tried.
Layout SmallestLayout(const std::vector<Record> &records) {
    Layout best;
    for (const size_t minSharedBytes : {size_t{0}, size_t{16}, size_t{24}, size_t{32}, SIZE_MAX}) {
        Placer placer(records.front(), minSharedBytes);
        for (size_t i = 1; i < records.size(); ++i)
            placer.Add(records[i]);
        Layout layout = placer.Finish();
        if (best.glyphData.empty() || layout.glyphData.size() + layout.index.size() <
                                          best.glyphData.size() + best.index.size())
            best = std::move(layout);
    }
    return best;
}

} // namespace cbf
