// SPDX-License-Identifier: MIT
// Limits are those of the fields: signed bytes for the box, in each direction of writing, and 16
// bits for advance and bit count.
#include "cbf/glyph_record.h"

#include "cbf.h"

#include <algorithm>

namespace cbf {

const char *Reason(Problem problem) {
    switch (problem) {
    case Problem::None:
        return "is fine";
    case Problem::CodePoint:
        return "lies beyond U+7FFFFFFF";
    case Problem::Size:
        return "is wider or higher than 127 pixels";
    case Problem::PixelCount:
        return "has more or fewer pixels than its width and height say";
    case Problem::Bearing:
        return "reaches further than 127 pixels from the pen";
    case Problem::Advance:
        return "has an advance outside -32768..32767 pixels";
    case Problem::CodedRuns:
        return "takes more than 32767 bits";
    case Problem::FileSize:
        return "does not fit a font file of 4 GiB";
    }
    return "is bad";
}

// Every edge of the box, and its negative, is a bearing in one of the writing directions.
static bool EdgesWithin(const Glyph &glyph, int64_t reach) {
    for (const int64_t edge : {int64_t{glyph.bearingX}, int64_t{glyph.bearingX} + glyph.width,
                               int64_t{glyph.bearingY}, int64_t{glyph.bearingY} - glyph.height})
        if (edge < -reach || edge > reach)
            return false;
    return true;
}

Problem CheckGlyph(const Glyph &glyph) {
    const auto isSide = [](int32_t side) { return side >= 0 && side <= kMaxGlyphSide; };
    if (!isSide(glyph.width) || !isSide(glyph.height))
        return Problem::Size;
    if (glyph.pixels.size() != static_cast<size_t>(glyph.width * glyph.height))
        return Problem::PixelCount;
    if (!EdgesWithin(glyph, kMaxGlyphReach))
        return Problem::Bearing;
    if (glyph.advance < INT16_MIN || glyph.advance > INT16_MAX)
        return Problem::Advance;
    return Problem::None;
}

bool OutlineWraps(const Glyph &glyph) {
    const bool hasInk = std::count(glyph.pixels.begin(), glyph.pixels.end(), 0) <
                        static_cast<ptrdiff_t>(glyph.pixels.size());
    const bool hasOutline = hasInk && std::max(glyph.width, glyph.height) <= kMaxOutlinedSide;
    return hasOutline && !EdgesWithin(glyph, kMaxOutlinedReach);
}

std::vector<uint16_t> CodedRuns(const Glyph &glyph) {
    std::vector<uint16_t> runs;
    bool ink = false;
    uint16_t length = 0;
    for (const uint8_t pixel : glyph.pixels) {
        if ((pixel != 0) != ink) {
            runs.push_back(length);
            ink = !ink;
            length = 0;
        }
        ++length;
    }
    return runs;
}

Bytes RecordBytes(const Glyph &glyph, const BitWriter &codedRuns) {
    Bytes bytes;
    for (const int32_t field : {glyph.width, glyph.height, glyph.bearingX, glyph.bearingY})
        bytes.push_back(static_cast<uint8_t>(field));
    PutHalf(bytes, static_cast<uint32_t>(glyph.advance));
    PutHalf(bytes, static_cast<uint32_t>(codedRuns.bitCount));
    Append(bytes, codedRuns.bytes);
    return bytes;
}

} // namespace cbf
