// Writes CBF fonts: from plain glyph bitmaps to the bytes of a file, for the font converter and for
// tests. WriteFont makes a whole font; the pieces that it is built of are public too, so that a
// test can put together files that no converter would write.
//
// Glyph bitmaps are stored as alternating runs of background and ink. The run lengths of each
// colour, and the distances between glyph records in the code-point index, have a Huffman code of
// their own, made from the font's own statistics. Files are made small: rare run lengths are split
// in two, identical glyphs share a record, and a record may begin in the last byte of another.
// Output depends on the input alone.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

namespace cbf {

using Bytes = std::vector<uint8_t>;

// ---- Fonts ----

// Fields are wider than in the file, so that a glyph which doesn't fit can be told.
struct Glyph {
    int32_t width = 0;
    int32_t height = 0;
    int32_t bearingX = 0; // left column relative to the pen
    int32_t bearingY = 0; // rows from the top row down to the pen
    int32_t advance = 0;
    std::vector<uint8_t> pixels; // rows from the top, a byte for each pixel: 0 background, else ink
};

struct Font {
    int32_t lineHeight = 0;
    Glyph fallback; // shown for every code point without a glyph of its own
    std::map<uint32_t, Glyph> glyphs;
};

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

// The first reason, if any, why a glyph doesn't fit a record. Its runs are not looked at.
Problem CheckGlyph(const Glyph &glyph);

// ---- Pieces ----

void PutHalf(Bytes *bytes, uint32_t value); // the low 16 bits, little-endian
void PutWord(Bytes *bytes, uint32_t value); // 32 bits, little-endian

// Appends bits, most significant first; the last byte is padded with zeros.
struct BitWriter {
    Bytes bytes;
    size_t bitCount = 0;
};
void PutBits(BitWriter *writer, uint32_t bits, uint32_t count); // the low count bits, 0..32

struct Code {
    uint16_t symbol = 0;
    uint16_t length = 0;
    uint32_t bits = 0; // the low length bits, the first of them the most significant
};
using Counts = std::map<uint16_t, uint64_t>; // occurrences by symbol

// The lengths of an optimal prefix code none of whose codes exceeds maxLength bits, sorted by
// length and symbol; bits are not set. A lone symbol gets length 1. Empty where 2^maxLength codes
// are too few.
std::vector<Code> CodeLengths(const Counts &counts, uint32_t maxLength);

// Sets the bits: codes of one length count up, a longer one continues from the value of the one
// before. Order and lengths are taken as they stand.
void AssignCanonicalCodes(std::vector<Code> *codes);

// Both together, with codes of up to 32 bits.
std::vector<Code> MakeCodes(const Counts &counts);

// A table's form in the file.
Bytes TableBytes(const std::vector<Code> &codes);

// A glyph's runs, background and ink in turn, background first, without the last one: the reader
// gives what remains the colour whose turn it is.
std::vector<uint16_t> CodedRuns(const Glyph &glyph);

// Codes to write with, by symbol.
using CodeBook = std::map<uint16_t, Code>;
CodeBook MakeCodeBook(const std::vector<Code> &codes);
void PutSymbol(BitWriter *writer, const CodeBook &book, uint16_t symbol); // must be in the book

// A glyph record. The bit count is written as it comes, modulo 2^16.
Bytes RecordBytes(const Glyph &glyph, const BitWriter &codedRuns);

// A glyph's place in the index: how far its record lies after that of the glyph before; negative
// modulo 2^16 where it lies before it.
struct IndexSlot {
    uint32_t codePoint;
    uint16_t delta;
};

// The index section for slots in code-point order. Gaps are bridged by zeros where that is shorter,
// and start a new record elsewhere. The last slot ends the section; an empty list gives one slot
// without glyph, so that a reader finds the fallback glyph.
Bytes IndexBytes(const std::vector<IndexSlot> &slots);

} // namespace cbf
