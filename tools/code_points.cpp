#include "code_points.h"

#include <algorithm>
#include <charconv>
#include <cstdio>
#include <stdexcept>

std::string CodePointName(uint32_t codePoint) {
    char name[16];
    std::snprintf(name, sizeof name, "U+%04X", codePoint);
    return name;
}

std::optional<uint32_t> ParseCodePoint(const std::string &text) {
    const std::string prefix = text.substr(0, 2);
    const bool hex = prefix == "0x" || prefix == "0X" || prefix == "U+" || prefix == "u+";
    const char *end = text.data() + text.size();
    uint32_t codePoint = 0;
    const auto [stop, error] =
        std::from_chars(text.data() + (hex ? 2 : 0), end, codePoint, hex ? 16 : 10);
    if (error != std::errc() || stop != end || codePoint > kMaxCodePoint)
        return {};
    return codePoint;
}

std::optional<uint32_t> ParseCharacter(const std::string &text) {
    size_t position = 0;
    const std::optional<uint32_t> single = NextCharacter(text, &position);
    return single && position == text.size() ? single : ParseCodePoint(text);
}

// ---- UTF-8 ----

std::string Utf8(uint32_t c) {
    const auto tail = [](uint32_t bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
    if (c < 0x80)
        return {static_cast<char>(c)};
    if (c < 0x800)
        return {static_cast<char>(0xC0 | c >> 6), tail(c)};
    if (c < 0x10000)
        return {static_cast<char>(0xE0 | c >> 12), tail(c >> 6), tail(c)};
    return {static_cast<char>(0xF0 | c >> 18), tail(c >> 12), tail(c >> 6), tail(c)};
}

std::optional<uint32_t> NextCharacter(const std::string &text, size_t *position) {
    if (*position >= text.size())
        return {};
    const auto byteAt = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t lead = byteAt(*position);
    const size_t tails = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    if ((lead >= 0x80 && lead < 0xC0) || lead >= 0xF8 || *position + tails >= text.size())
        return {};
    uint32_t c = tails ? lead & (0x3Fu >> tails) : lead;
    for (size_t i = 1; i <= tails; ++i) {
        if ((byteAt(*position + i) & 0xC0) != 0x80)
            return {};
        c = c << 6 | (byteAt(*position + i) & 0x3F);
    }
    const bool surrogate = c >= 0xD800 && c < 0xE000;
    if (c > kMaxCodePoint || surrogate || Utf8(c).size() != tails + 1) // the last: overlong
        return {};
    *position += tails + 1;
    return c;
}

// ---- Sets ----

void CodePointSet::Set(uint32_t first, uint32_t last, bool member) {
    std::fill(members.begin() + first, members.begin() + last + 1, member);
}

static void ChangeRange(CodePointSet *set, const std::string &text, bool member) {
    const size_t dash = text.find('-');
    const auto first = ParseCodePoint(text.substr(0, dash));
    const auto last = dash == std::string::npos ? first : ParseCodePoint(text.substr(dash + 1));
    if (!first || !last)
        throw std::invalid_argument("'" + text +
                                    "' is no range of characters such as 0x20-0x7E, "
                                    "U+0400-U+04FF or 176, up to U+10FFFF");
    if (*first > *last)
        throw std::invalid_argument("'" + text + "' runs backwards");
    set->Set(*first, *last, member);
}

void CodePointSet::Change(const std::string &list, bool member) {
    for (size_t first = 0; first <= list.size();) {
        const size_t comma = std::min(list.find(',', first), list.size());
        const std::string part = list.substr(first, comma - first);
        if (part == "all") {
            Set(0, kMaxCodePoint, member);
            all = member;
        } else {
            ChangeRange(this, part, member);
        }
        first = comma + 1;
    }
}
