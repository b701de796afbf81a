// SPDX-License-Identifier: MIT
// Records are read into deltas, and these summed up at the end: a later record may fill slots
// before an earlier one's.
#include "cbf/index_reader.h"

#include "cbf.h"
#include "cbf/code_points.h"

#include <algorithm>

namespace cbf {

namespace {

// Deltas by slot while records are read, a later one for the same slot instead of an earlier. Slots
// up to the last code point of Unicode are an array, since records may fill them over and over;
// those beyond it are a list of what the file fills, since it may claim 2^32 of them.
class Deltas {
  public:
    explicit Deltas(uint32_t slots) : dense(std::min(slots, kDenseSlots)) {
    }

    void Set(uint32_t slot, uint16_t delta) {
        if (slot < dense.size())
            dense[slot] = delta;
        else
            far.push_back({slot, delta});
    }

    // Gives all slots from this one on the delta 0.
    void ClearFrom(uint32_t slot) {
        std::fill(dense.begin() + std::min<ptrdiff_t>(slot, End(dense)), dense.end(), uint16_t{0});
        far.erase(std::remove_if(far.begin(), far.end(),
                                 [=](const FarSlot &entry) { return entry.slot >= slot; }),
                  far.end());
    }

    // Deltas become offsets: the sum of those that are not 0, modulo 2^32.
    std::vector<IndexEntry> Sum() {
        std::vector<IndexEntry> entries;
        uint32_t sum = 0;
        const auto add = [&](uint32_t slot, uint16_t delta) {
            sum += static_cast<uint32_t>(static_cast<int16_t>(delta));
            if (delta != 0)
                entries.push_back({slot, sum});
        };
        for (uint32_t slot = 0; slot < dense.size(); ++slot)
            add(slot, dense[slot]);
        std::stable_sort(far.begin(), far.end(),
                         [](const FarSlot &a, const FarSlot &b) { return a.slot < b.slot; });
        for (size_t i = 0; i < far.size(); ++i)
            if (i + 1 == far.size() || far[i + 1].slot != far[i].slot)
                add(far[i].slot, far[i].delta);
        return entries;
    }

  private:
    static constexpr uint32_t kDenseSlots = 0x110000;
    struct FarSlot {
        uint32_t slot;
        uint16_t delta;
    };
    static ptrdiff_t End(const std::vector<uint16_t> &slots) {
        return static_cast<ptrdiff_t>(slots.size());
    }

    std::vector<uint16_t> dense;
    std::vector<FarSlot> far;
};

struct Record {
    uint64_t start; // in the file
    uint32_t slot;
    uint32_t length;

    uint64_t End() const {
        return start + kIndexRecordHeadBytes + length;
    }
};

// Reads records until the section ends, which it does the moment something is wrong with one.
class RecordsReader {
  public:
    RecordsReader(const View &fileBytes, Index &fontIndex, Complaints &fontComplaints)
        : file(fileBytes), index(fontIndex), complaints(fontComplaints), deltas(index.slots) {
    }

    void Read() {
        while (const std::optional<Record> record = NextRecord()) {
            ++index.recordCount;
            if (!ReadDeltas(*record))
                break;
        }
        index.entries = deltas.Sum();
    }

  private:
    std::nullopt_t Complain(uint64_t offset, const std::string &text) {
        complaints.Add(offset, Flaw::Section, [&] { return "index: " + text; });
        return std::nullopt;
    }

    // None where the section ends. Moves its end past the record.
    std::optional<Record> NextRecord() {
        const uint64_t start = index.end;
        if (start == file.size)
            return {};
        if (!file.Holds(start, kIndexRecordHeadBytes))
            return Complain(start, "a record's head is cut short by the end of the file");
        const Record record = {start, WordAt(file, start), WordAt(file, start + 4)};
        if (record.length != 0 && !file.Holds(start + kIndexRecordHeadBytes, record.length))
            return Complain(start, "a record of " + std::to_string(record.length) +
                                       " bytes reaches past the end of the file");
        index.end = record.End();
        if (record.length == 0)
            return {};
        if (record.slot >= index.slots)
            return Complain(start, "a record begins at slot " + std::to_string(record.slot) +
                                       " of " + std::to_string(index.slots) +
                                       ", which ends the index");
        return record;
    }

    // False where the section ends.
    bool ReadDeltas(const Record &record) {
        BitReader reader = {file, record.start + kIndexRecordHeadBytes, record.End(), 0};
        const uint64_t endBit = uint64_t{8} * record.length;
        for (uint32_t slot = record.slot; slot < index.slots; ++slot) {
            const uint64_t offset = reader.ByteOffset();
            const Walk walk = TakeCode(index.deltas, reader);
            if (walk.bits == 0) {
                Complain(offset, "no code fits the delta of " + CodePointName(slot) +
                                     ", which ends the index");
                deltas.ClearFrom(slot);
                return false;
            }
            if (reader.position > endBit) {
                AddUnended(record.start, slot);
                return true;
            }
            if (!walk.fits)
                AddUnfit(offset, slot, walk);
            if (walk.symbol == kEndMark)
                return true;
            deltas.Set(slot, walk.symbol);
        }
        return false;
    }

    void AddUnended(uint64_t offset, uint32_t slot) {
        complaints.Add(offset, Flaw::UnendedRecord, [=] {
            return "index: a record ends at " + CodePointName(slot) + " without an end mark";
        });
    }

    void AddUnfit(uint64_t offset, uint32_t slot, const Walk &walk) {
        complaints.Add(offset, Flaw::DeltaCode, [&] {
            return "index: no code fits the delta of " + CodePointName(slot) + ": " +
                   std::to_string(walk.bits) + " bits are read as " +
                   std::to_string(static_cast<int16_t>(walk.symbol));
        });
    }

    const View &file;
    Index &index;
    Complaints &complaints;
    Deltas deltas;
};

} // namespace

Index ReadIndex(const View &file, uint64_t offset, Complaints &complaints) {
    const auto complain = [&](const char *text) {
        complaints.Add(offset, Flaw::Section, [=] { return std::string("index: ") + text; });
    };
    Index index;
    index.offset = offset;
    index.end = offset;
    if (!file.Holds(offset, kIndexHeadBytes)) {
        complain("lies outside the file: the font has no glyphs");
        return index;
    }
    index.slots = WordAt(file, offset);
    index.deltas = ReadTable(file, offset + kIndexHeadBytes, "delta table", complaints);
    if (!index.deltas.usable) {
        complain("can't be read without its table: the font has no glyphs");
    } else if (index.slots == 0) {
        complain("has no slots: the font has no glyphs");
    } else {
        index.end = index.deltas.offset + kTableHeadBytes +
                    kTableEntryBytes * uint64_t{index.deltas.codes.size()};
        RecordsReader(file, index, complaints).Read();
    }
    return index;
}

std::optional<uint32_t> FindOffset(const Index &index, uint32_t codePoint) {
    const auto entry = std::lower_bound(
        index.entries.begin(), index.entries.end(), codePoint,
        [](const IndexEntry &candidate, uint32_t c) { return candidate.codePoint < c; });
    if (entry == index.entries.end() || entry->codePoint != codePoint)
        return {};
    return entry->offset;
}

} // namespace cbf
