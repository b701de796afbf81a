// SPDX-License-Identifier: MIT
// The codes of a usable table ascend when their bits are aligned, so a code is found by bisection:
// another way than the library's, with which it is held together in the tests.
#include "cbf/table_reader.h"

#include "cbf.h"

#include <algorithm>

namespace cbf {

// The library looks codes up in subtables of 16 entries, one for each prefix of four more bits that
// several codes share. They lie in this order, and an entry's child must be near enough.
static bool FitsLookup(const std::vector<uint32_t> &starts, size_t first, size_t end,
                       uint32_t depth, size_t &subtables) {
    const size_t own = subtables++;
    const auto keyOf = [&](size_t i) { return starts[i] >> (28 - 4 * depth) & 15; };
    while (first < end) {
        const uint32_t key = keyOf(first);
        size_t next = first;
        while (next < end && keyOf(next) == key)
            ++next;
        if (next - first > 1 && ((subtables - own) * 16 - key > kMaxChildOffset ||
                                 !FitsLookup(starts, first, next, depth + 1, subtables)))
            return false;
        first = next;
    }
    return true;
}

// What keeps the codes from being usable, or an empty text.
static std::string CodesFault(const std::vector<Code> &codes) {
    uint64_t next = 0; // code
    uint32_t previous = 1;
    for (size_t i = 0; i < codes.size(); ++i) {
        const uint32_t length = codes[i].length;
        const std::string entry = "entry " + std::to_string(i);
        if (length < 1 || length > kMaxCodeBits)
            return entry + " has a code of " + std::to_string(static_cast<int16_t>(length)) +
                   " bits";
        if (length < previous)
            return entry + " has a shorter code than the one before";
        next <<= length - previous;
        if (next >> length)
            return entry + " has no code left: the lengths are too short";
        previous = length;
        ++next;
    }
    return {};
}

static std::string ReadCodes(const View &file, uint64_t offset, std::vector<Code> &codes) {
    if (!file.Holds(offset, kTableHeadBytes))
        return "lies outside the file";
    const uint64_t count = WordAt(file, offset);
    const uint64_t entries = offset + kTableHeadBytes;
    if (!file.Holds(entries, kTableEntryBytes * count))
        return "its " + std::to_string(count) + " entries reach past the end of the file";
    codes.reserve(static_cast<size_t>(count));
    for (uint64_t at = entries; at < entries + kTableEntryBytes * count; at += kTableEntryBytes)
        codes.push_back({HalfAt(file, at), HalfAt(file, at + 2), 0});
    return CodesFault(codes);
}

Table ReadTable(const View &file, uint64_t offset, const std::string &title,
                Complaints &complaints) {
    Table table;
    table.offset = offset;
    std::string fault = ReadCodes(file, offset, table.codes);
    if (fault.empty()) {
        AssignCanonicalCodes(table.codes);
        for (const Code &code : table.codes)
            table.starts.push_back(code.bits << (kMaxCodeBits - code.length));
        size_t subtables = 0;
        if (!FitsLookup(table.starts, 0, table.starts.size(), 0, subtables))
            fault = "needs more lookup tables than the library holds";
    }
    table.usable = fault.empty();
    if (!table.usable)
        complaints.Add(offset, Flaw::Section, [&] { return title + ": " + fault; });
    return table;
}

// ---- Decoding ----

// Whole groups of four bits that two words share at their front.
static uint32_t SharedNibbles(uint32_t a, uint32_t b) {
    uint32_t nibbles = 0;
    while (nibbles < 8 && (a ^ b) >> (28 - 4 * nibbles) == 0)
        ++nibbles;
    return nibbles;
}

// The library's walk where no code fits. It passes a group of four bits while several codes begin
// with it, and with all before. If a single code begins with the next group as well, it takes that
// one, without a look at the rest of its bits; else it takes 0, and only the groups passed. Codes
// that share most stand next to the place where the bits would be sorted in, nextCode.
static Walk WalkWithoutFit(const Table &table, uint32_t bits, size_t nextCode) {
    const size_t first = nextCode < 2 ? 0 : nextCode - 2;
    const size_t end = std::min(nextCode + 2, table.codes.size());
    uint32_t most = 0, second = 0; // groups shared
    size_t closest = first;
    for (size_t i = first; i < end; ++i) {
        const uint32_t shared = SharedNibbles(bits, table.starts[i]);
        second = std::max(second, std::min(shared, most));
        if (shared > most) {
            most = shared;
            closest = i;
        }
    }
    if (most > second)
        return {table.codes[closest].symbol, table.codes[closest].length, false};
    return {0, 4 * second, false};
}

Walk TakeCode(const Table &table, BitReader &reader) {
    const uint32_t bits = PeekWord(reader);
    const auto next = std::upper_bound(table.starts.begin(), table.starts.end(), bits);
    const auto nextCode = static_cast<size_t>(next - table.starts.begin());
    const Code *code = nextCode > 0 ? &table.codes[nextCode - 1] : nullptr;
    const bool fits = code && bits >> (kMaxCodeBits - code->length) == code->bits;
    const Walk walk =
        fits ? Walk{code->symbol, code->length, true} : WalkWithoutFit(table, bits, nextCode);
    reader.position += walk.bits;
    return walk;
}

} // namespace cbf
