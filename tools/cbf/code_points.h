// SPDX-License-Identifier: MIT
// Characters by number, as command lines and messages write them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace cbf {

// "U+0041"
std::string CodePointName(uint32_t codePoint);

// "0x41", "U+41" or "65", up to U+10FFFF.
std::optional<uint32_t> ParseCodePoint(const std::string &text);

// The same, or a single character.
std::optional<uint32_t> ParseCharacter(const std::string &text);

} // namespace cbf
