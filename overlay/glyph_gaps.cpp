// SPDX-License-Identifier: MIT
// Whether a font has a character is not told by the library. But those that it lacks all look the
// same, like one that no font has.
#include "glyph_gaps.h"

#include "words.h"

#include <cstdio>
#include <utility>
#include <vector>

namespace overlay {

namespace {

constexpr size_t kMaxOthers = 20000; // more than any living script has
constexpr size_t kMaxShown = 8;

// Of one character, in the library's reading: up to six bytes, of which the first says how many.
uint32_t CodePointOf(std::string_view character) {
    const auto lead = static_cast<unsigned char>(character[0]);
    uint32_t codePoint = character.size() == 1 ? lead : lead & (0x7Fu >> character.size());
    for (const char c : character.substr(1))
        codePoint = codePoint << 6 | (static_cast<unsigned char>(c) & 0x3Fu);
    return codePoint;
}

// What measuring tells of one character.
struct Extent {
    OrnMinRenderRect box{};
    OrnMinRenderPoint pen{0, 0};
};

Extent ExtentOf(OrnMinRenderContext *context, const Font &font, const char *character) {
    Extent extent;
    OrnMinRenderGetTextRect(context, font.get(), character, &extent.pen, 0, &extent.box);
    return extent;
}

bool AreEqual(const Extent &a, const Extent &b) {
    return a.box.left == b.box.left && a.box.top == b.box.top && a.box.right == b.box.right &&
           a.box.bottom == b.box.bottom && a.pen.x == b.pen.x && a.pen.y == b.pen.y;
}

std::vector<uint8_t> PixelsOf(OrnMinRenderContext *context, const Font &font, const char *character,
                              const OrnMinRenderRect &box) {
    OrnMinRenderImage image{};
    image.width = box.right - box.left; // of one glyph, whose sides and bearings are bytes
    image.height = box.bottom - box.top;
    image.stride = image.width;
    std::vector<uint8_t> pixels(static_cast<size_t>(image.width) *
                                static_cast<size_t>(image.height));
    image.yPlane = pixels.data();
    OrnMinRenderPoint pen{-box.left, -box.top};
    OrnMinRenderDrawTextY8(context, &image, font.get(), character, &pen, pen.x, 1);
    return pixels;
}

// Characters that have no pixels anywhere.
bool IsBlank(uint32_t codePoint) {
    return codePoint == ' ' || codePoint == 0xA0 || codePoint == 0x3000 ||
           (codePoint >= 0x2000 && codePoint <= 0x200A);
}

bool IsGap(OrnMinRenderContext *context, const Font &font, const std::string &character) {
    constexpr char kInNoFont[] = "\xFD\xBF\xBF\xBF\xBF\xBF"; // the last that this form can say
    const Extent extent = ExtentOf(context, font, character.c_str());
    return AreEqual(extent, ExtentOf(context, font, kInNoFont)) &&
           PixelsOf(context, font, character.c_str(), extent.box) ==
               PixelsOf(context, font, kInNoFont, extent.box);
}

// A font may show a character of its own for those that it lacks: '?', for example. Of ASCII, that
// is the only one then that looks so.
bool MayStandForOthers(OrnMinRenderContext *context, const Font &font, uint32_t codePoint) {
    if (codePoint <= ' ' || codePoint >= 0x7F)
        return codePoint == 0xFFFD || codePoint == 0x25A1; // made for it; a hollow box
    for (char other = '!'; other <= '~'; ++other)
        if (static_cast<uint32_t>(other) != codePoint && IsGap(context, font, {other}))
            return false;
    return true;
}

// Whether it shows as itself: no control character, nor one that turns the direction of writing.
bool IsVisible(uint32_t codePoint) {
    return codePoint > 0x20 && !(codePoint >= 0x7F && codePoint <= 0xA0) &&
           !(codePoint >= 0x2000 && codePoint < 0x2070) && codePoint < 0xD800;
}

std::string Named(const std::string &character, uint32_t codePoint) {
    char code[16];
    std::snprintf(code, sizeof code, "U+%04X", static_cast<unsigned>(codePoint));
    return IsVisible(codePoint) ? character + " (" + code + ")" : code;
}

std::string Told(const std::vector<std::string> &names) {
    std::string told = names.size() == 1 ? "the font lacks a character of the text: "
                                         : "the font lacks " + std::to_string(names.size()) +
                                               " characters of the text: ";
    for (size_t i = 0; i < names.size() && i < kMaxShown; ++i)
        told += (i > 0 ? ", " : "") + names[i];
    return told + (names.size() > kMaxShown ? ", ..." : "");
}

} // namespace

bool GlyphGaps::Known::Add(uint32_t codePoint) {
    if (codePoint < low.size())
        return !std::exchange(low[codePoint], true);
    return others.size() < kMaxOthers && others.insert(codePoint).second;
}

std::string GlyphGaps::NewIn(OrnMinRenderContext *context, const Font &font, size_t line,
                             std::string_view text) {
    Known &ofLine = known[line];
    std::vector<std::string> names;
    while (!text.empty()) {
        const std::string_view next = TakeCharacter(text);
        const uint32_t codePoint = CodePointOf(next);
        if (codePoint == '\n' || IsBlank(codePoint) || !ofLine.Add(codePoint))
            continue;
        const std::string character(next);
        if (IsGap(context, font, character) && !MayStandForOthers(context, font, codePoint))
            names.push_back(Named(character, codePoint));
    }
    return names.empty() ? "" : Told(names);
}

} // namespace overlay
