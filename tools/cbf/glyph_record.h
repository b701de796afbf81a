// SPDX-License-Identifier: MIT
// Glyph records: what one can hold, and how a writer makes it.
//
// Bitmaps are stored as alternating runs of background and ink, background first.
#pragma once

#include "cbf/bits.h"
#include "cbf/font.h"

namespace cbf {

enum class Problem {
    None,
    CodePoint,  // beyond what UTF-8 sequences of six bytes can express
    Size,       // width or height outside 0..127
    PixelCount, // not width * height pixels
    Bearing,    // an edge of the box is more than 127 pixels from the pen
    Advance,    // outside -32768..32767
    CodedRuns,  // more than 32767 bits
    FileSize    // a file beyond what 32-bit offsets reach
};

// The reason as a clause about the glyph: "is wider or higher than 127 pixels".
const char *Reason(Problem problem);

// The first reason, if any, why a glyph doesn't fit a record. Its runs are not looked at.
Problem CheckGlyph(const Glyph &glyph);

// A glyph's runs, without the last one: the reader gives what remains the colour whose turn it is.
std::vector<uint16_t> CodedRuns(const Glyph &glyph);

// A glyph record. The bit count is written as it comes, modulo 2^16.
Bytes RecordBytes(const Glyph &glyph, const BitWriter &codedRuns);

} // namespace cbf
