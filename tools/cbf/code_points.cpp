// SPDX-License-Identifier: MIT
// The one place where numbers may be hexadecimal: that is how Unicode names its characters.
#include "cbf/code_points.h"

#include "common/text.h"
#include "common/utf8.h"

#include <charconv>

namespace cbf {

std::string CodePointName(uint32_t codePoint) {
    return tool::Format("U+%04X", codePoint);
}

std::optional<uint32_t> ParseCodePoint(const std::string &text) {
    const std::string prefix = text.substr(0, 2);
    const bool hex = prefix == "0x" || prefix == "0X" || prefix == "U+" || prefix == "u+";
    const char *end = text.data() + text.size();
    uint32_t codePoint = 0;
    const auto [stop, error] =
        std::from_chars(text.data() + (hex ? 2 : 0), end, codePoint, hex ? 16 : 10);
    if (error != std::errc() || stop != end || codePoint > tool::kMaxCodePoint)
        return {};
    return codePoint;
}

std::optional<uint32_t> ParseCharacter(const std::string &text) {
    const std::optional<tool::Utf8Character> single = tool::CharacterAt(text, 0);
    if (single && single->bytes == text.size())
        return single->codePoint;
    return ParseCodePoint(text);
}

} // namespace cbf
