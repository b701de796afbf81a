// SPDX-License-Identifier: MIT
// What is wrong with a font file. A file of a megabyte can have a million faults of one kind, so
// the first of each kind are listed and the rest are counted.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace cbf {

enum class Flaw {
    Section, // a header, table or index: never more than a few
    DeltaCode,
    UnendedRecord,
    RecordOutside,
    BitCount,
    RunsPastData,
    LongRun,
    MissingTable,
    RunCode,
    PastBitCount,
    Box,
    Count
};

struct Complaint {
    uint64_t offset; // in the file
    Flaw flaw;
    std::string text;
};

class Complaints {
  public:
    static constexpr size_t kListed = 20; // of each kind

    // The text is a call that makes it, only where it is listed.
    template <typename Text> void Add(uint64_t offset, Flaw flaw, Text text) {
        if (++counts[static_cast<size_t>(flaw)] <= kListed)
            list.push_back({offset, flaw, text()});
    }
    // The name makes what the others are about, "U+0041".
    template <typename Name> void AddAll(const Complaints &others, Name name) {
        for (const Complaint &other : others.list)
            Add(other.offset, other.flaw, [&] { return name() + ": " + other.text; });
        AddUnlisted(others);
    }

    bool Empty() const {
        return list.empty();
    }
    // In the order in which they were added, and then how many more there are of each kind.
    std::vector<std::string> Lines() const;
    const std::string &First() const { // there must be one
        return list.front().text;
    }

  private:
    void AddUnlisted(const Complaints &others);

    std::vector<Complaint> list;
    size_t counts[static_cast<size_t>(Flaw::Count)] = {};
};

} // namespace cbf
