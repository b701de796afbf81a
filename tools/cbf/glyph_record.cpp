// SPDX-License-Identifier: MIT
#include "cbf/glyph_record.h"

#include "cbf.h"

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

Problem CheckGlyph(const Glyph &glyph) {
    const auto isSide = [](int32_t side) { return side >= 0 && side <= kMaxGlyphSide; };
    if (!isSide(glyph.width) || !isSide(glyph.height))
        return Problem::Size;
    if (glyph.pixels.size() != static_cast<size_t>(glyph.width * glyph.height))
        return Problem::PixelCount;
    // Every edge of the box, and its negative, is a bearing in one of the writing directions.
    const auto isEdge = [](int64_t edge) {
        return edge >= -kMaxGlyphReach && edge <= kMaxGlyphReach;
    };
    if (!isEdge(glyph.bearingX) || !isEdge(int64_t{glyph.bearingX} + glyph.width) ||
        !isEdge(glyph.bearingY) || !isEdge(int64_t{glyph.bearingY} - glyph.height))
        return Problem::Bearing;
    if (glyph.advance < INT16_MIN || glyph.advance > INT16_MAX)
        return Problem::Advance;
    return Problem::None;
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
