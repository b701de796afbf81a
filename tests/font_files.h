// CBF files for tests: whole fonts through the converter's writer, odd ones put together by hand.
#pragma once

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
    const unsigned density = 2 + random() % 6; // short runs and long ones
    for (auto &pixel : glyph.pixels)
        pixel = random() % density == 0;
    return glyph;
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
        uint32_t offset = 28;
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
