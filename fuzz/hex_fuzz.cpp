// SPDX-License-Identifier: MIT
// Fonts as lines of hexadecimal digits: what is taken has the pixels that its digits say, found
// here by another way, and boxes as small as the ink.
#include "cbfconv/font_source.h"
#include "fence.h"
#include "font_files.h"
#include "input.h"

#include <sstream>

namespace {

// The digits of the first line of a code point.
std::string DigitsOf(const std::string &text, uint32_t codePoint) {
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        const size_t colon = line.find(':');
        if (colon != std::string::npos && line[0] != '#' &&
            strtoul(line.substr(0, colon).c_str(), nullptr, 16) == codePoint)
            return line.substr(colon + 1, line.find_last_not_of(" \t\r\v\f") - colon);
    }
    return "";
}

bool HasInk(const std::string &digits, int32_t width, int32_t x, int32_t y) {
    const char digit = digits[size_t(y * width + x) / 4];
    return strtoul(std::string(1, digit).c_str(), nullptr, 16) >> (3 - x % 4) & 1;
}

void RequirePixels(const cbf::Glyph &glyph, const std::string &digits) {
    constexpr int32_t kAbove = 14; // rows over the baseline
    const auto width = int32_t(digits.size() / 4);
    Require(glyph.advance == width, "as wide as its digits");
    const int32_t right = glyph.bearingX + glyph.width, top = kAbove - glyph.bearingY;
    bool touches[4] = {};
    for (int32_t y = 0; y < 16; ++y)
        for (int32_t x = 0; x < width; ++x) {
            const bool inside = glyph.width > 0 && x >= glyph.bearingX && x < right && y >= top &&
                                y < top + glyph.height;
            const bool ink =
                inside && glyph.pixels[size_t((y - top) * glyph.width + x - glyph.bearingX)];
            Require(ink == HasInk(digits, width, x, y), "the pixels of its digits");
            const bool edges[] = {x == glyph.bearingX, x == right - 1, y == top,
                                  y == top + glyph.height - 1};
            for (int i = 0; i < 4; ++i)
                touches[i] |= ink && edges[i];
        }
    for (const bool touched : touches)
        Require(touched || glyph.width == 0, "a box as small as the ink");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    const cbf::Bytes bytes(data, data + size);
    const std::string text(bytes.begin(), bytes.end());
    const bool isHex = text.find(':') < 7; // else FreeType would be asked
    if (!isHex || text.find('\0') != std::string::npos)
        return 0;
    const TempFile file(bytes);
    try {
        const auto font = cbfconv::OpenFont(file.path, {});
        for (uint32_t c = 0; c < 0x200; ++c)
            if (const auto glyph = font->Read(c))
                RequirePixels(*glyph, DigitsOf(text, c));
        Require(font->Fallback().width > 0 || font->Read(0xFFFD), "there is a fallback");
    } catch (const cbfconv::FontError &) {
    }
    return 0;
}
