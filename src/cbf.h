// SPDX-License-Identifier: MIT
// Sizes, offsets, marks and limits of the font format, for everything that reads or writes it: the
// library, the tools, the tests and the fuzzers. How the bytes are decoded is each reader's own
// affair. All numbers in a file are little-endian.
#pragma once

#include <stdint.h>

namespace cbf {

// ---- The header: where its words lie ----

constexpr uint32_t kHeaderBytes = 28;
constexpr uint32_t kHeaderWordAt = 0; // which no reader interprets
constexpr uint32_t kLineHeightAt = 4;
constexpr uint32_t kDataSizeAt = 8;
constexpr uint32_t kBackgroundTableAt = 12; // this word and the next three are offsets in the file
constexpr uint32_t kInkTableAt = 16;
constexpr uint32_t kIndexAt = 20;
constexpr uint32_t kDataAt = 24;

// ---- Tables: a count, then the entries ----

constexpr uint32_t kTableHeadBytes = 4;
constexpr uint32_t kTableEntryBytes = 4; // a symbol and a length, 16 bits each
constexpr uint32_t kMaxCodeBits = 32;

// The library decodes with subtables of 16 entries, which are reached over at most so many entries.
constexpr uint32_t kMaxChildOffset = 32767;

// ---- The index: a count of slots, the table of deltas, then records ----

constexpr uint32_t kIndexHeadBytes = 4;
constexpr uint32_t kIndexRecordHeadBytes = 8; // first slot, length in bytes
constexpr uint16_t kEndMark = 0xFFFF;         // the delta that ends a record

// Code points that text can hold: a UTF-8 sequence of six bytes has 31 bits.
constexpr uint32_t kMaxTextCodePoint = 0x7FFFFFFF;

// ---- Glyph records: a head, then coded runs ----

constexpr uint32_t kGlyphHeadBytes = 8;
constexpr uint32_t kGlyphAdvanceAt = 4;  // after width, height and the two bearings, a byte each
constexpr uint32_t kGlyphBitCountAt = 6; // of the coded runs, signed
constexpr int32_t kMaxGlyphSide = 127;   // pixels
constexpr int32_t kMaxGlyphReach = 127;  // pixels from the pen to any edge of the box
constexpr uint32_t kMaxCodedBits = 32767;

// ---- Outlines: the glyph grown by two pixels each way, less itself, in a box of its own ----

constexpr int32_t kOutlineLeft = 3;   // columns that its box begins left of the glyph's
constexpr int32_t kOutlineAbove = 2;  // rows that it begins above
constexpr int32_t kOutlineGrowth = 5; // columns and rows that it has more than the glyph

// The largest side of a glyph that still gets an outline: both have sides of signed bytes.
constexpr int32_t kMaxOutlinedSide = kMaxGlyphSide - kOutlineGrowth;

} // namespace cbf
