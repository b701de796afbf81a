// SPDX-License-Identifier: MIT
// The whole file is read, and glyphs are made when they are asked for.
#include "cbfconv/hex_font.h"

#include "cbfconv/glyph_box.h"
#include "common/input_file.h"
#include "common/utf8.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <unordered_map>

namespace cbfconv {

namespace {

constexpr int32_t kRows = 16;
constexpr int32_t kAscent = 14; // rows above the baseline
constexpr uint32_t kReplacementCharacter = 0xFFFD;

struct Line {
    uint32_t codePoint;
    std::string digits; // of the bitmap; empty: the line is bad
};

bool IsHexDigit(char c) {
    return std::isxdigit(static_cast<unsigned char>(c)) != 0;
}

Line ParseLine(const std::string &text) {
    Line line = {};
    const char *end = text.data() + text.size();
    const auto [colon, error] = std::from_chars(text.data(), end, line.codePoint, 16);
    if (error != std::errc() || colon == end || *colon != ':' ||
        line.codePoint > tool::kMaxCodePoint)
        return line;
    const std::string digits(colon + 1, end);
    const size_t columns = digits.size() * 4 / kRows;
    const bool isBitmap = std::all_of(digits.begin(), digits.end(), IsHexDigit);
    if (isBitmap && columns > 0 && columns <= 32 && columns % 8 == 0 &&
        columns * kRows == digits.size() * 4)
        line.digits = digits;
    return line;
}

cbf::Glyph GlyphOf(const std::string &digits) {
    cbf::Glyph glyph;
    glyph.width = static_cast<int32_t>(digits.size()) * 4 / kRows;
    glyph.height = kRows;
    glyph.bearingY = kAscent;
    glyph.advance = glyph.width;
    for (const char &digit : digits) {
        uint32_t bits = 0;
        std::from_chars(&digit, &digit + 1, bits, 16);
        for (uint32_t bit = 8; bit > 0; bit /= 2)
            glyph.pixels.push_back((bits & bit) != 0);
    }
    return Crop(glyph);
}

class HexFont : public FontSource {
  public:
    // No stream is read: one would take an error, or short memory, for the end of the font.
    explicit HexFont(const std::string &path) {
        const std::string text = tool::ReadText(path);
        size_t first = 0;
        for (int number = 1; first < text.size(); ++number) {
            const size_t end = std::min(text.find('\n', first), text.size());
            AddLine(text.substr(first, end - first), number);
            first = end + 1;
        }
    }

    int32_t LineHeight() const override {
        return kRows;
    }

    cbf::Glyph Fallback() override {
        return Read(kReplacementCharacter).value_or(HollowBox(kAscent));
    }

    std::optional<cbf::Glyph> Read(uint32_t codePoint) override {
        const auto bitmap = bitmaps.find(codePoint);
        if (bitmap == bitmaps.end())
            return {};
        return GlyphOf(bitmap->second);
    }

  private:
    void AddLine(std::string text, int number) {
        while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back())))
            text.pop_back();
        if (text.empty() || text.front() == '#')
            return;
        Line line = ParseLine(text);
        if (line.digits.empty())
            throw FontError("line " + std::to_string(number) +
                            ": is not a code point and a bitmap of 16 rows of 8, 16, 24 or 32 "
                            "pixels");
        bitmaps.emplace(line.codePoint, std::move(line.digits));
    }

    std::unordered_map<uint32_t, std::string> bitmaps;
};

} // namespace

bool IsHexFont(const std::string &path) {
    std::ifstream file(path);
    char start[7] = {};
    file.read(start, sizeof start);
    if (file.bad())
        throw FontError(std::strerror(errno));
    const char *colon = std::find_if_not(std::begin(start), std::end(start), IsHexDigit);
    return colon >= start + 4 && colon < std::end(start) && *colon == ':';
}

std::unique_ptr<FontSource> OpenHexFont(const std::string &path, const FontChoice &choice) {
    if (choice.pixelSize != kNativeSize && choice.pixelSize != kRows)
        throw FontChoiceError("has no bitmaps of " + std::to_string(choice.pixelSize) +
                              " pixels, only of: " + std::to_string(kRows));
    if (!choice.face.empty() && choice.face != "0")
        throw FontChoiceError("has no face '" + choice.face + "', only: 0");
    if (!choice.instance.empty() && choice.instance != kDefaultInstance)
        throw FontChoiceError("has no instance '" + choice.instance + "': it is no variable font");
    return std::make_unique<HexFont>(path);
}

} // namespace cbfconv
