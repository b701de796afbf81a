// Reads CBF fonts independently of the library, which reports nothing: what the file holds, where,
// and everything about it that the library refuses, skips or reads otherwise than it was meant.
#pragma once

#include "cbf_writer.h"

#include <map>
#include <string>
#include <vector>

namespace cbf {

struct Complaint {
    uint64_t offset; // in the file
    std::string text;
};

struct Table {
    uint64_t offset = 0;
    bool usable = false; // as the library sees it
    std::vector<Code> codes;
};

enum TableName { kBackground, kInk, kDelta };

struct FontFile {
    bool loads = false; // whether the library takes the file
    uint32_t headerWord = 0;
    int32_t lineHeight = 0;
    uint64_t indexOffset = 0;
    uint64_t indexEnd = 0;
    uint64_t dataOffset = 0;
    uint64_t dataSize = 0;
    Table tables[3];
    uint32_t slots = 0; // of the index
    size_t indexRecords = 0;
    std::map<uint32_t, uint32_t> records; // code point to offset in the glyph data
    std::vector<Complaint> complaints;    // in the order of the file's parts
};

FontFile ReadFont(const Bytes &file);

// A glyph as its record says.
struct StoredGlyph {
    bool whole = false; // false: the record's head lies outside the glyph data
    Glyph glyph;
    size_t codedBytes = 0; // after the head
    size_t paddingBits = 0;
    size_t runs = 0;
    std::vector<Complaint> complaints;
};

StoredGlyph ReadGlyph(const Bytes &file, const FontFile &font, uint32_t recordOffset);

} // namespace cbf
