// SPDX-License-Identifier: MIT
// A font is loaded, measured, fitted, and drawn, plain and outlined, in four directions.
#include "font_exercise.h"
#include "fence.h"
#include "font_files.h"

#include <cstring>

namespace {

constexpr int32_t kSide = 64;
constexpr uint8_t kPaper = 0x55;

// Letters, blanks, a line break; then U+80, U+3FF, the last code point of Unicode, the first one
// beyond it, another one there, and the last one that a sequence of six bytes expresses.
constexpr char kText[] = "\x01 !AB\nC\t~\xC2\x80\xCF\xBF\xF4\x8F\xBF\xBF\xF4\x90\x80\x80"
                         "\xF4\x90\x80\x84 \xFD\xBF\xBF\xBF\xBF\xBF";

// Whether the box of each glyph's outline fits into signed bytes: one that doesn't wraps to
// anywhere.
bool OutlinesFit(OrnMinRenderFont *font) {
    for (const char *c = kText; *c;) {
        std::string one(1, *c++);
        while ((*c & 0xC0) == 0x80) // the rest of a sequence
            one += *c++;
        OrnMinRenderPoint pen = {0, 0};
        OrnMinRenderRect rect;
        OrnMinRenderGetTextRect(nullptr, font, one.c_str(), &pen, 0, &rect);
        if (rect.left < INT8_MIN + cbf::kOutlineLeft || rect.top < cbf::kOutlineAbove - INT8_MAX ||
            rect.right - rect.left > cbf::kMaxOutlinedSide ||
            rect.bottom - rect.top > cbf::kMaxOutlinedSide)
            return false;
    }
    return true;
}

void RequireInkWithin(const OrnMinRenderImage &image, const OrnMinRenderRect &rect, int64_t reach,
                      const char *promise) {
    for (int64_t y = 0; y < kSide; ++y)
        for (int64_t x = 0; x < kSide; ++x)
            Require(image.yPlane[y * kSide + x] == kPaper ||
                        (x >= rect.left - reach && x < rect.right + reach &&
                         y >= rect.top - reach && y < rect.bottom + reach),
                    promise);
}

// Draws into a fenced frame and measures; ink may only lie where measuring says, or two pixels
// from there.
void DrawAndMeasure(OrnMinRenderFont *font, OrnMinRenderPoint start) {
    static const Fenced memory(kSide * kSide);
    const OrnMinRenderImage image = {0, kSide, kSide, kSide, memory.first, 0, nullptr};
    memset(memory.first, kPaper, kSide * kSide);
    OrnMinRenderPoint measured = start, plain = start, outlined = start;
    OrnMinRenderRect rect;
    OrnMinRenderGetTextRect(nullptr, font, kText, &measured, start.x, &rect);
    OrnMinRenderDrawTextY8(nullptr, &image, font, kText, &plain, start.x, 200);
    RequireInkWithin(image, rect, 0, "ink lies in the measured rectangle");
    OrnMinRenderDrawOutlineTextY8(nullptr, &image, font, kText, &outlined, start.x, 9, 100);
    if (OutlinesFit(font))
        RequireInkWithin(image, rect, 2, "outlines reach two pixels further");
    for (const OrnMinRenderPoint pen : {plain, outlined})
        Require(pen.x == measured.x && pen.y == measured.y, "measuring moves the pen as drawing");
}

} // namespace

void ExerciseFont(const cbf::Bytes &file) {
    const FontPtr font = Load(file);
    if (!font)
        return;
    for (int32_t direction = 0; direction < 4; ++direction) {
        OrnMinRenderSetFontDirection(font.get(), direction);
        DrawAndMeasure(font.get(), {kSide / 2, kSide / 2});
        DrawAndMeasure(font.get(), {INT32_MAX - 40, INT32_MIN + 40});
    }
    for (const int32_t width : {INT32_MIN, 0, 30, INT32_MAX}) {
        char *fitted = OrnMinRenderFixTextWidth(nullptr, font.get(), kText, width);
        Require(fitted && strlen(fitted) <= 4 * sizeof kText, "a fitted text is whole");
        free(fitted);
    }
}
