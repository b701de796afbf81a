// SPDX-License-Identifier: MIT
// What cbfdump --check says of a file against the library: a file without faults loads, and each of
// its characters is drawn as the checker reads it; and no file takes much more time or memory to
// check than the library takes to load and draw it.
#include "cbf/check.h"
#include "cbf/glyph_reader.h"
#include "counted_memory.h"
#include "fence.h"
#include "font_files.h"
#include "input.h"

#include <ctime>

namespace {

constexpr int32_t kSide = 264;
constexpr int32_t kPen = kSide / 2;

// As the library takes it: sequences of up to six bytes.
std::string TextOf(uint32_t c) {
    if (c < 0x80)
        return std::string(1, char(c));
    std::string text;
    uint32_t lead = 0x3F; // what of the lead byte is data
    for (; c > lead; c >>= 6, lead >>= 1)
        text.insert(text.begin(), char(0x80 | (c & 0x3F)));
    text.insert(text.begin(), char((~lead << 1 & 0xFF) | c));
    return text;
}

struct Cost {
    double seconds;
    size_t bytes;
};

template <typename Work> Cost CostOf(Work work) {
    const size_t before = ResetPeak();
    const clock_t start = clock();
    work();
    return {double(clock() - start) / CLOCKS_PER_SEC, PeakBytes() - before};
}

struct Canvas {
    std::vector<uint8_t> luma = std::vector<uint8_t>(kSide * kSide);
    OrnMinRenderImage image = {0, kSide, kSide, kSide, luma.data(), 0, nullptr};

    // Where the pen gets to.
    OrnMinRenderPoint Draw(OrnMinRenderFont *font, uint32_t codePoint, uint8_t ink) {
        OrnMinRenderPoint pen = {kPen, kPen};
        OrnMinRenderDrawTextY8(nullptr, &image, font, TextOf(codePoint).c_str(), &pen, 0, ink);
        return pen;
    }
};

void RequireDrawn(Canvas *canvas, OrnMinRenderFont *font, uint32_t codePoint,
                  const cbf::Glyph &glyph) {
    Require(canvas->Draw(font, codePoint, 1).x == kPen + glyph.advance, "the pen moves");
    size_t pixel = 0;
    for (int32_t y = kPen - glyph.bearingY; y < kPen - glyph.bearingY + glyph.height; ++y)
        for (int32_t x = kPen + glyph.bearingX; x < kPen + glyph.bearingX + glyph.width; ++x)
            Require(canvas->luma[size_t(y * kSide + x)] == (glyph.pixels[pixel++] != 0),
                    "a sound glyph is drawn as it was read");
    canvas->Draw(font, codePoint, 0);
}

// Short times can't be told from noise, nor small blocks from what a program always takes. Of a
// font that the library refuses at once the checker still reads all parts, at the worst an index
// that claims all of Unicode.
void RequireCheap(const Cost &check, const Cost &library, bool loads) {
    Require(check.seconds <= 10 * library.seconds + 0.1, "checked in ten times the library's time");
    Require(check.bytes <= 10 * library.bytes + (loads ? 100000 : 8000000), "and memory");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static Canvas canvas;
    const cbf::Bytes bytes(data, data + size);
    const TempFile file(bytes);
    bool sound = false;
    const Cost check = CostOf([&] { sound = cbf::CheckFont(bytes, cbf::ReadFont(bytes)).Empty(); });
    const cbf::FontFile read = cbf::ReadFont(bytes);
    FontPtr font;
    const Cost library = CostOf([&] {
        font.reset(OrnMinRenderLoadCbfFont(file.path.c_str()));
        for (size_t i = 0; font && i < read.index.entries.size(); ++i) {
            canvas.Draw(font.get(), read.index.entries[i].codePoint, 1);
            canvas.Draw(font.get(), read.index.entries[i].codePoint, 0);
        }
    });
    RequireCheap(check, library, font != nullptr);
    Require(font != nullptr || !sound, "a sound font loads");
    if (!sound)
        return 0;
    constexpr size_t kDrawn = 100;
    for (size_t i = 0; i < read.index.entries.size() && i < kDrawn; ++i) {
        const auto [codePoint, offset] = read.index.entries[i];
        RequireDrawn(&canvas, font.get(), codePoint, cbf::ReadGlyph(bytes, read, offset).glyph);
    }
    return 0;
}
