// SPDX-License-Identifier: MIT
// Reads fonts independently of the library, which reports nothing: what the file holds, where, and
// everything about its header, tables and index that the library refuses, skips or reads otherwise
// than it was meant. Glyphs are read one at a time (glyph_reader.h), or all are checked (check.h).
#pragma once

#include "cbf/index_reader.h"

namespace cbf {

struct FontFile {
    bool loads = false; // whether the library takes the file
    uint32_t headerWord = 0;
    int32_t lineHeight = 0;
    uint64_t dataOffset = 0;
    uint64_t dataSize = 0;
    Table runTables[2]; // background, ink
    Index index;
    Complaints complaints; // in the order of the file's parts
};

FontFile ReadFont(const View &file);

constexpr const char *kRunTableTitles[] = {"background table", "ink table"};

} // namespace cbf
