// SPDX-License-Identifier: MIT
// The expected picture of a glyph is made here from its pixels, turned one by one: another way than
// the library's, which turns runs.
#include "cbfconv/verify.h"

#include "cbf/code_points.h"
#include "common/utf8.h"
#include "orn_min_render.h"

#include <algorithm>
#include <memory>

namespace cbfconv {

namespace {

struct DestroyFont {
    void operator()(OrnMinRenderFont *font) const {
        OrnMinRenderDestroyFont(font);
    }
};
using LoadedFont = std::unique_ptr<OrnMinRenderFont, DestroyFont>;

constexpr uint8_t kInk = 255;
constexpr int32_t kMargin = 2; // around the glyph's box, where nothing may be drawn
constexpr int32_t kPenX = 300; // away from 0, so that no difference cancels out
constexpr int32_t kPenY = 200;

// Where a glyph lies in one direction: relative to the pen, right and bottom exclusive.
struct Turned {
    OrnMinRenderRect box;
    OrnMinRenderPoint step; // of the pen
};

// Turns a cell, or the corner of one, about the pen: by quarters of a full turn, clockwise for
// Down.
OrnMinRenderPoint Turn(OrnMinRenderPoint point, int32_t direction) {
    switch (direction) {
    case OrnMinRenderTextDirection::Down:
        return {-point.y, point.x};
    case OrnMinRenderTextDirection::Up:
        return {point.y, -point.x};
    case OrnMinRenderTextDirection::Inverted:
        return {-point.x, -point.y};
    default:
        return point;
    }
}

OrnMinRenderRect TurnRect(const OrnMinRenderRect &rect, int32_t direction) {
    const OrnMinRenderPoint a = Turn({rect.left, rect.top}, direction);
    const OrnMinRenderPoint b = Turn({rect.right, rect.bottom}, direction);
    return {std::min(a.x, b.x), std::min(a.y, b.y), std::max(a.x, b.x), std::max(a.y, b.y)};
}

Turned TurnGlyph(const cbf::Glyph &glyph, int32_t direction) {
    const OrnMinRenderRect box = {glyph.bearingX, -glyph.bearingY, glyph.bearingX + glyph.width,
                                  glyph.height - glyph.bearingY};
    return {TurnRect(box, direction), Turn({glyph.advance, 0}, direction)};
}

// A frame of the box and its margin.
struct Frame {
    explicit Frame(const OrnMinRenderRect &box)
        : left(box.left - kMargin), top(box.top - kMargin),
          width(box.right - box.left + 2 * kMargin), height(box.bottom - box.top + 2 * kMargin),
          luma(static_cast<size_t>(width) * static_cast<size_t>(height)) {
    }

    int32_t left, top; // relative to the pen
    int32_t width, height;
    std::vector<uint8_t> luma;
};

void DrawExpected(const cbf::Glyph &glyph, int32_t direction, Frame &frame) {
    size_t pixel = 0;
    for (int32_t y = -glyph.bearingY; y < glyph.height - glyph.bearingY; ++y)
        for (int32_t x = glyph.bearingX; x < glyph.bearingX + glyph.width; ++x) {
            if (!glyph.pixels[pixel++])
                continue;
            const OrnMinRenderRect cell = TurnRect({x, y, x + 1, y + 1}, direction);
            frame.luma[static_cast<size_t>((cell.top - frame.top) * frame.width + cell.left -
                                           frame.left)] = kInk;
        }
}

bool DrawsAs(OrnMinRenderFont *font, int32_t direction, const std::string &text,
             const cbf::Glyph &glyph) {
    const Turned turned = TurnGlyph(glyph, direction);
    Frame expected(turned.box);
    DrawExpected(glyph, direction, expected);
    Frame drawn(turned.box);
    OrnMinRenderImage image = {};
    image.width = drawn.width;
    image.height = drawn.height;
    image.stride = drawn.width;
    image.yPlane = drawn.luma.data();
    OrnMinRenderPoint pen = {-drawn.left, -drawn.top};
    OrnMinRenderDrawTextY8(nullptr, &image, font, text.c_str(), &pen, 0, kInk);
    return pen.x == turned.step.x - drawn.left && pen.y == turned.step.y - drawn.top &&
           drawn.luma == expected.luma;
}

// The measured rectangle holds the pen besides the glyph's box.
bool MeasuresAs(const OrnMinRenderFont *font, int32_t direction, const std::string &text,
                const cbf::Glyph &glyph) {
    const Turned turned = TurnGlyph(glyph, direction);
    OrnMinRenderPoint pen = {kPenX, kPenY};
    OrnMinRenderRect rect = {};
    OrnMinRenderGetTextRect(nullptr, font, text.c_str(), &pen, 0, &rect);
    return pen.x == kPenX + turned.step.x && pen.y == kPenY + turned.step.y &&
           rect.left == kPenX + std::min(0, turned.box.left) &&
           rect.top == kPenY + std::min(0, turned.box.top) &&
           rect.right == kPenX + std::max(0, turned.box.right) &&
           rect.bottom == kPenY + std::max(0, turned.box.bottom);
}

bool BreaksLinesAs(const OrnMinRenderFont *font, int32_t lineHeight) {
    OrnMinRenderPoint pen = {kPenX, kPenY};
    OrnMinRenderRect rect = {};
    OrnMinRenderGetTextRect(nullptr, font, "\n", &pen, 0, &rect);
    return pen.x == 0 && pen.y == kPenY + lineHeight;
}

bool GlyphsAgree(OrnMinRenderFont *font, int32_t direction, uint32_t codePoint,
                 const cbf::Glyph &glyph) {
    const std::string text = tool::Utf8(codePoint);
    return MeasuresAs(font, direction, text, glyph) && DrawsAs(font, direction, text, glyph);
}

// Gaps are only measured: drawing would cache a copy of the fallback glyph for each.
std::string FirstDifferentGap(const OrnMinRenderFont *font, const cbf::Font &wanted) {
    uint32_t next = 1;
    for (const auto &[codePoint, glyph] : wanted.glyphs) {
        for (; next < codePoint; ++next)
            if (next != '\n' && !MeasuresAs(font, OrnMinRenderTextDirection::Normal,
                                            tool::Utf8(next), wanted.fallback))
                return cbf::CodePointName(next) + ": is not the fallback glyph";
        next = codePoint + 1;
    }
    return {};
}

} // namespace

std::string FirstDifference(const std::string &path, const cbf::Font &font,
                            tool::Progress &progress) {
    const LoadedFont loaded(OrnMinRenderLoadCbfFont(path.c_str()));
    if (!loaded)
        return "the converted font does not load";
    if (!BreaksLinesAs(loaded.get(), font.lineHeight))
        return "the converted font has a wrong line height";
    std::string difference = FirstDifferentGap(loaded.get(), font);
    uint32_t end = font.glyphs.rbegin()->first + 1;
    end += end == '\n';
    size_t done = 0;
    for (int32_t direction = 0; direction < 4 && difference.empty(); ++direction) {
        OrnMinRenderSetFontDirection(loaded.get(), direction);
        if (!GlyphsAgree(loaded.get(), direction, end, font.fallback))
            difference = "the fallback glyph is not drawn as it was read";
        for (const auto &[codePoint, glyph] : font.glyphs) {
            progress.Tell("checking", ++done, 4 * font.glyphs.size());
            if (!GlyphsAgree(loaded.get(), direction, codePoint, glyph))
                return cbf::CodePointName(codePoint) + ": is not drawn as it was read";
        }
    }
    return difference;
}

} // namespace cbfconv
