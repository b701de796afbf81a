// SPDX-License-Identifier: MIT
// The index of a font file: which code point has which glyph record.
#pragma once

#include "cbf/table_reader.h"

#include <optional>

namespace cbf {

struct IndexEntry {
    uint32_t codePoint;
    uint32_t offset; // of the record in the glyph data, which need not hold it
};

struct Index {
    uint64_t offset = 0;
    uint64_t end = 0;
    Table deltas;
    uint32_t slots = 0;
    size_t recordCount = 0;
    std::vector<IndexEntry> entries; // in code-point order; the others have the fallback glyph
};

Index ReadIndex(const View &file, uint64_t offset, Complaints &complaints);

// None: the fallback glyph.
std::optional<uint32_t> FindOffset(const Index &index, uint32_t codePoint);

} // namespace cbf
