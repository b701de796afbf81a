// SPDX-License-Identifier: MIT
// Characters as UTF-8 (RFC 3629), strictly: nothing overlong, no surrogates, nothing past U+10FFFF.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tool {

constexpr uint32_t kMaxCodePoint = 0x10FFFF;

// For code points up to kMaxCodePoint.
std::string Utf8(uint32_t codePoint);

struct Utf8Character {
    uint32_t codePoint;
    size_t bytes;
};

// The character that begins at a position; none at the end and where the bytes are no UTF-8.
std::optional<Utf8Character> CharacterAt(std::string_view text, size_t position);

} // namespace tool
