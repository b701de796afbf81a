// SPDX-License-Identifier: MIT
// Names and equations of colours.
#include "colour.h"

#include "messages.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace overlay {

namespace {

struct NamedColour {
    std::string_view name;
    uint32_t rgb;
};

// As CSS has them, but for brown.
constexpr NamedColour kColours[] = {
    {"black", 0x000000},   {"white", 0xffffff}, {"grey", 0x808080},   {"gray", 0x808080},
    {"red", 0xff0000},     {"green", 0x008000}, {"lime", 0x00ff00},   {"blue", 0x0000ff},
    {"yellow", 0xffff00},  {"cyan", 0x00ffff},  {"pink", 0xffc0cb},   {"orange", 0xffa500},
    {"magenta", 0xff00ff}, {"brown", 0x804000}, {"purple", 0x800080},
};

// Lightness from 64 to 92 of 100 in CIELAB: each shows on dark and bright pictures. Black text on
// them stays dark, with their chroma: its lightness is at most 20. After the first eight, each is
// the colour of a grid that lies furthest from those before it; the nearest two are 26 apart.
constexpr uint32_t kPalette[] = {0xffb000, 0x35c4ff, 0x7ddc1f, 0xff6f91, 0xc58cff, 0xffe14d,
                                 0x2fe0c0, 0xff8c42, 0xee66ff, 0x66ee88, 0x7799ee, 0xffccff,
                                 0x77aa55, 0xbb9944, 0xff66cc, 0xaaeeee, 0xdd8877, 0x99aa00,
                                 0x9999bb, 0xdddd99, 0x77aa88, 0xccee77, 0xbbaa99, 0xccee00};

uint32_t ParseHexColour(std::string_view word) {
    if (!IsHexColour(word))
        throw Failure("bad colour " + Quoted(word) + ": expected #rrggbb");
    uint32_t rgb = 0;
    std::from_chars(word.data() + 1, word.data() + word.size(), rgb, 16);
    return rgb;
}

uint8_t Rounded(double value) {
    return static_cast<uint8_t>(std::clamp(std::lround(value), 0L, 255L));
}

} // namespace

bool IsHexColour(std::string_view word) {
    constexpr std::string_view kDigits = "0123456789abcdefABCDEF";
    return word.size() == 7 && word[0] == '#' &&
           word.find_first_not_of(kDigits, 1) == std::string_view::npos;
}

uint32_t ParseColour(std::string_view word) {
    if (word.empty() || word[0] == '"')
        throw Failure("expected a colour, found " + Found(word));
    if (word[0] == '#')
        return ParseHexColour(word);
    for (const NamedColour &colour : kColours)
        if (colour.name == word)
            return colour.rgb;
    throw Failure("bad colour " + Quoted(word) + ": expected #rrggbb or a name such as red");
}

// ITU-R BT.601 and BT.709. Limited range: luma 16..235, chroma 16..240.
OrnMinRenderColour ColourOf(uint32_t rgb, const ColourSpace &space) {
    const uint8_t bytes[] = {static_cast<uint8_t>(rgb >> 16), static_cast<uint8_t>(rgb >> 8),
                             static_cast<uint8_t>(rgb)};
    if (space.range == Range::Full && space.matrix == Matrix::Bt601) {
        OrnMinRenderColour colour;
        OrnMinRenderRGB2YUV(&colour.y, bytes);
        return colour;
    }
    const double redShare = space.matrix == Matrix::Bt709 ? 0.2126 : 0.299;
    const double blueShare = space.matrix == Matrix::Bt709 ? 0.0722 : 0.114;
    const double red = bytes[0] / 255.0;
    const double blue = bytes[2] / 255.0;
    const double luma =
        redShare * red + (1 - redShare - blueShare) * bytes[1] / 255.0 + blueShare * blue;
    const bool limited = space.range == Range::Limited;
    const double lumaSpan = limited ? 219 : 255;
    const double chromaSpan = limited ? 224 : 255;
    return {Rounded((limited ? 16 : 0) + lumaSpan * luma),
            Rounded(128 + chromaSpan * (blue - luma) / (2 - 2 * blueShare)),
            Rounded(128 + chromaSpan * (red - luma) / (2 - 2 * redShare))};
}

Palette MakePalette(const ColourSpace &space) {
    Palette palette;
    for (size_t i = 0; i < palette.size(); ++i)
        palette[i] = ColourOf(kPalette[i], space);
    return palette;
}

std::string ColourNames() {
    std::string names;
    for (const NamedColour &colour : kColours)
        names.append(" ").append(colour.name);
    return names;
}

} // namespace overlay
