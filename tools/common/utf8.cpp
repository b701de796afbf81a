// SPDX-License-Identifier: MIT
// A character has one form only, the shortest, which is what decoding compares with.
#include "common/utf8.h"

namespace tool {

// Bytes of the shortest form, which is the only one allowed.
static size_t Utf8Bytes(uint32_t codePoint) {
    return codePoint < 0x80 ? 1 : codePoint < 0x800 ? 2 : codePoint < 0x10000 ? 3 : 4;
}

static char Tail(uint32_t bits) {
    return static_cast<char>(0x80 | (bits & 0x3F));
}

std::string Utf8(uint32_t c) {
    switch (Utf8Bytes(c)) {
    case 1:
        return {static_cast<char>(c)};
    case 2:
        return {static_cast<char>(0xC0 | c >> 6), Tail(c)};
    case 3:
        return {static_cast<char>(0xE0 | c >> 12), Tail(c >> 6), Tail(c)};
    default:
        return {static_cast<char>(0xF0 | c >> 18), Tail(c >> 12), Tail(c >> 6), Tail(c)};
    }
}

std::optional<Utf8Character> CharacterAt(std::string_view text, size_t position) {
    if (position >= text.size())
        return {};
    const auto byteAt = [&](size_t i) { return static_cast<uint8_t>(text[i]); };
    const uint8_t lead = byteAt(position);
    const size_t tails = lead < 0x80 ? 0 : lead < 0xE0 ? 1 : lead < 0xF0 ? 2 : 3;
    if ((lead >= 0x80 && lead < 0xC0) || lead >= 0xF8 || position + tails >= text.size())
        return {};
    uint32_t c = tails ? lead & (0x3Fu >> tails) : lead;
    for (size_t i = 1; i <= tails; ++i) {
        if ((byteAt(position + i) & 0xC0) != 0x80)
            return {};
        c = c << 6 | (byteAt(position + i) & 0x3F);
    }
    const bool isSurrogate = c >= 0xD800 && c < 0xE000;
    if (c > kMaxCodePoint || isSurrogate || Utf8Bytes(c) != tails + 1)
        return {};
    return Utf8Character{c, tails + 1};
}

} // namespace tool
