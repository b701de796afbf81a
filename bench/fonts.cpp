// SPDX-License-Identifier: MIT
#include "fonts.h"

#include "cbf/writer.h"
#include "cbfconv/font_source.h"
#include "orn_min_render.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <memory>
#include <unistd.h>

namespace bench {

const char kFontFile[] = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

namespace {

std::string WriteTemporary(const cbf::Bytes &bytes) {
    std::string path = "/tmp/orn_bench_XXXXXX";
    const int descriptor = mkstemp(path.data());
    if (descriptor < 0 || write(descriptor, bytes.data(), bytes.size()) != ssize_t(bytes.size()))
        throw cbfconv::FontError("can't write " + path);
    close(descriptor);
    return path;
}

// A small Y8 frame with one outlined glyph in it, its pen in the middle.
struct GlyphCanvas {
    static constexpr int kSide = 192;
    static constexpr int kPen = kSide / 2;
    std::vector<uint8_t> pixels = std::vector<uint8_t>(kSide * kSide);
    int advance = 0;

    GlyphCanvas(OrnMinRenderFont *font, char character) {
        OrnMinRenderImage image = {};
        image.width = image.height = kSide;
        image.stride = kSide;
        image.yPlane = pixels.data();
        OrnMinRenderPoint pen = {kPen, kPen};
        const char text[2] = {character, 0};
        OrnMinRenderDrawOutlineTextY8(nullptr, &image, font, text, &pen, kPen, kBand, kInk);
        advance = pen.x - kPen;
    }
    uint8_t At(int x, int y) const {
        return pixels[size_t(y * kSide + x)];
    }
};

struct Bounds {
    int left = GlyphCanvas::kSide;
    int top = GlyphCanvas::kSide;
    int right = 0;
    int bottom = 0;
};

Bounds FindBounds(const GlyphCanvas &canvas, uint8_t least) {
    Bounds bounds;
    for (int y = 0; y < GlyphCanvas::kSide; ++y)
        for (int x = 0; x < GlyphCanvas::kSide; ++x)
            if (canvas.At(x, y) >= least) {
                bounds.left = std::min(bounds.left, x);
                bounds.top = std::min(bounds.top, y);
                bounds.right = std::max(bounds.right, x + 1);
                bounds.bottom = std::max(bounds.bottom, y + 1);
            }
    return bounds;
}

// The library's own picture of a glyph, so that stamping it by hand is the same work.
StampGlyph ReadGlyph(OrnMinRenderFont *font, char character) {
    constexpr int kPen = GlyphCanvas::kPen;
    const GlyphCanvas canvas(font, character);
    StampGlyph glyph;
    glyph.advance = canvas.advance;
    const Bounds all = FindBounds(canvas, kBand);
    if (all.left >= all.right)
        return glyph;
    const Bounds ink = FindBounds(canvas, kInk);
    glyph.left = all.left - kPen;
    glyph.top = all.top - kPen;
    glyph.width = all.right - all.left;
    glyph.height = all.bottom - all.top;
    glyph.inkLeft = ink.left - kPen;
    glyph.inkTop = ink.top - kPen;
    glyph.inkRight = ink.right - kPen;
    glyph.inkBottom = ink.bottom - kPen;
    for (int y = all.top; y < all.bottom; ++y)
        for (int x = all.left; x < all.right; ++x)
            glyph.pixels.push_back(canvas.At(x, y));
    return glyph;
}

cbf::Font ReadAscii(int pixelSize) {
    const std::unique_ptr<cbfconv::FontSource> source =
        cbfconv::OpenFont(kFontFile, {pixelSize, {}, {}});
    cbf::Font font;
    font.lineHeight = source->LineHeight();
    font.fallback = source->Fallback();
    for (uint32_t c = ' '; c <= '~'; ++c)
        font.glyphs[c] = source->Read(c).value();
    return font;
}

std::unique_ptr<FontSet> MakeFontSet(int pixelSize) {
    auto set = std::make_unique<FontSet>();
    set->cbfPath = WriteTemporary(cbf::WriteFont(ReadAscii(pixelSize)).bytes);
    OrnMinRenderFont *font = OrnMinRenderLoadCbfFont(set->cbfPath.c_str());
    for (char c = ' '; c <= '~'; ++c)
        set->glyphs[size_t(c)] = ReadGlyph(font, c);
    OrnMinRenderDestroyFont(font);
    return set;
}

} // namespace

FontSet::~FontSet() {
    unlink(cbfPath.c_str());
}

const FontSet &FontOfSize(int pixelSize) {
    static std::map<int, std::unique_ptr<FontSet>> sets;
    std::unique_ptr<FontSet> &set = sets[pixelSize];
    if (!set)
        set = MakeFontSet(pixelSize);
    return *set;
}

Extent TextExtent(int pixelSize, const std::string &text) {
    int width = 0;
    for (const char c : text)
        width += FontOfSize(pixelSize).glyphs[size_t(c)].advance;
    return {width, pixelSize * 3 / 2};
}

} // namespace bench
