// SPDX-License-Identifier: MIT
// CBF files for tests: whole fonts through the converter's writer, odd ones put together by hand.
#pragma once

#include "cbf.h"
#include "cbf/index_writer.h"
#include "cbf/writer.h"
#include "orn_min_render.h"

#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <unistd.h>

struct FontDeleter {
    void operator()(OrnMinRenderFont *font) const {
        OrnMinRenderDestroyFont(font);
    }
};
using FontPtr = std::unique_ptr<OrnMinRenderFont, FontDeleter>;

// A file that exists as long as the object.
struct TempFile {
    std::string path = "/tmp/orn_test_XXXXXX";
    explicit TempFile(const cbf::Bytes &bytes) {
        const int descriptor = mkstemp(path.data());
        if (write(descriptor, bytes.data(), bytes.size()) != ssize_t(bytes.size()))
            abort();
        close(descriptor);
    }
    TempFile(const TempFile &) = delete;
    ~TempFile() {
        unlink(path.c_str());
    }
};

inline FontPtr Load(const cbf::Bytes &bytes) {
    const TempFile file(bytes);
    return FontPtr(OrnMinRenderLoadCbfFont(file.path.c_str()));
}

inline cbf::Glyph RandomGlyph(std::mt19937 &random, int maxSide, int maxBearing) {
    const auto pick = [&](int from, int to) {
        return from + static_cast<int>(random() % unsigned(to - from + 1));
    };
    cbf::Glyph glyph;
    glyph.width = pick(0, maxSide);
    glyph.height = pick(0, maxSide);
    glyph.bearingX = pick(-maxBearing, maxBearing - glyph.width);
    glyph.bearingY = pick(-maxBearing + glyph.height, maxBearing);
    glyph.advance = pick(-4, maxSide + 4);
    glyph.pixels.resize(size_t(glyph.width * glyph.height));
    const auto density = unsigned(2 + random() % 6); // short runs and long ones
    for (auto &pixel : glyph.pixels)
        pixel = random() % density == 0;
    return glyph;
}

// A file of random glyphs, two of them beyond Unicode.
inline cbf::Bytes SampleFont() {
    std::mt19937 random(5);
    cbf::Font source;
    source.lineHeight = 12;
    source.fallback = RandomGlyph(random, 9, 12);
    for (uint32_t c = 32; c < 70; ++c)
        source.glyphs[c] = RandomGlyph(random, 12, 14);
    source.glyphs[0x110004] = source.glyphs[0x110009] = source.glyphs[40];
    return cbf::WriteFont(source).bytes;
}

// The sections of a file, placed one after the other.
struct FontFile {
    uint32_t headerWord = 0x12345678;
    int32_t lineHeight = 16;
    cbf::Bytes tables[2] = {{0, 0, 0, 0}, {0, 0, 0, 0}}; // background, ink: empty tables
    cbf::Bytes index;
    cbf::Bytes glyphData;
    uint32_t dataSize = 0; // 0: as it is

    cbf::Bytes Bytes() const {
        cbf::Bytes out;
        const uint32_t size = dataSize ? dataSize : uint32_t(glyphData.size());
        uint32_t offset = cbf::kHeaderBytes;
        for (const uint32_t word : {headerWord, uint32_t(lineHeight), size})
            cbf::PutWord(out, word);
        for (const auto *section : {&tables[0], &tables[1], &index, &glyphData}) {
            cbf::PutWord(out, offset);
            offset += uint32_t(section->size());
        }
        for (const auto *section : {&tables[0], &tables[1], &index, &glyphData})
            out.insert(out.end(), section->begin(), section->end());
        return out;
    }
};

// A table of code lengths in file order, the symbols given or counting from 0.
inline cbf::Bytes Table(const std::vector<int> &lengths, std::vector<int> symbols = {}) {
    cbf::Bytes bytes;
    cbf::PutWord(bytes, uint32_t(lengths.size()));
    for (size_t i = 0; i < lengths.size(); ++i) {
        cbf::PutHalf(bytes, uint32_t(symbols.empty() ? int(i) : symbols[i]));
        cbf::PutHalf(bytes, uint32_t(lengths[i]));
    }
    return bytes;
}

struct IndexRecord {
    uint32_t first;
    std::string bits;
};

// The section of an index: its table, and its records in file order.
inline cbf::Bytes Index(uint32_t count, const cbf::Bytes &table,
                        const std::vector<IndexRecord> &records) {
    cbf::Bytes bytes;
    cbf::PutWord(bytes, count);
    bytes.insert(bytes.end(), table.begin(), table.end());
    for (const auto &record : records) {
        cbf::BitWriter writer;
        for (const char bit : record.bits)
            if (bit != ' ')
                cbf::PutBits(writer, bit == '1', 1);
        cbf::PutWord(bytes, record.first);
        cbf::PutWord(bytes, uint32_t(writer.bytes.size()));
        bytes.insert(bytes.end(), writer.bytes.begin(), writer.bytes.end());
    }
    return bytes;
}

// A glyph 3 x 2 with the given runs, in tables of one-digit run lengths of four bits each.
inline FontFile SmallFont(const std::string &runs, int bitCount, int width = 3, int height = 2) {
    FontFile file;
    const cbf::Bytes digits = Table(std::vector<int>(10, 4));
    file.tables[0] = file.tables[1] = digits;
    file.index = Index(1, Table({1}, {0}), {{0, "0"}});
    cbf::BitWriter writer;
    for (const char run : runs)
        cbf::PutBits(writer, uint32_t(run - '0'), 4);
    const cbf::Glyph glyph = {width, height, 1, 2, 4, {}};
    file.glyphData = cbf::RecordBytes(glyph, writer);
    file.glyphData[cbf::kGlyphBitCountAt] = uint8_t(bitCount);
    file.glyphData[cbf::kGlyphBitCountAt + 1] = uint8_t(bitCount >> 8);
    return file;
}

// One glyph {5 x 7, bearings 1 and 7, advance 6} of solid ink.
inline cbf::Font BlockFont() {
    cbf::Font font;
    font.lineHeight = 16;
    font.fallback = {2, 2, 0, 2, 3, {1, 1, 1, 1}};
    font.glyphs['A'] = {5, 7, 1, 7, 6, std::vector<uint8_t>(35, 1)};
    return font;
}
