// SPDX-License-Identifier: MIT
// UTF-8, for everything that goes through a text.
#pragma once

#include <stdint.h>

namespace orn {

constexpr uint32_t kLineFeed = 10; // never has a glyph

// Decodes a sequence of several bytes as NextCodePoint does, which see.
uint32_t DecodeSequence(const char **text);

// Decodes the code point at *text and moves past it; 0, without moving, at the end of the text,
// which is also where a sequence is malformed or cut short by the terminator.
inline uint32_t NextCodePoint(const char **text) {
    const char *at = *text;
    const auto first = static_cast<uint8_t>(*at);
    if (first == 0)
        return 0;
    if (first < 0x80) {
        *text = at + 1; // not to be reckoned from the byte: the next one can be read meanwhile
        return first;
    }
    const uint32_t codePoint = DecodeSequence(&at);
    *text = at;
    return codePoint;
}

} // namespace orn
