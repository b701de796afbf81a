// SPDX-License-Identifier: MIT
// Writes fonts: from plain glyph bitmaps to the bytes of a file, for the font converter and for
// tests. Output depends on the input alone.
//
// The run lengths of each colour, and the distances between glyph records in the index, have a
// Huffman code of their own, made from the font's own statistics. The pieces have headers of their
// own, so that a test can put together files that no converter would write.
#pragma once

#include "cbf/glyph_record.h"

namespace cbf {

struct Fault {
    Problem problem = Problem::None;
    bool inFallback = false;
    uint32_t codePoint = 0; // unless in the fallback glyph
};

// Bytes of the file's sections.
struct Sizes {
    size_t header = 0;
    size_t runTables = 0;
    size_t index = 0; // with its table
    size_t glyphData = 0;
};

struct File {
    Fault fault; // anything but None: nothing was written
    Bytes bytes;
    Sizes sizes;
    size_t records = 0; // stored for glyphs: identical ones share one where the index can say so
};

File WriteFont(const Font &font);

} // namespace cbf
