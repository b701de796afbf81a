// SPDX-License-Identifier: MIT
// Control characters are those of ASCII and Latin-1: a terminal may obey either.
#include "common/shown.h"

#include <cstdio>
#include <cstring>

namespace tool {

static bool IsControl(uint32_t codePoint) {
    return codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0);
}

ShownPiece ShownPieceAt(std::string_view text, size_t position) {
    ShownPiece piece = {};
    const std::optional<Utf8Character> character = CharacterAt(text, position);
    if (character && !IsControl(character->codePoint)) {
        piece.taken = character->bytes;
        std::memcpy(piece.text, text.data() + position, character->bytes);
    } else {
        piece.taken = 1;
        const auto byte = static_cast<uint8_t>(text[position]);
        std::snprintf(piece.text, sizeof piece.text, "\\x%02X", byte);
    }
    return piece;
}

std::string Shown(std::string_view text) {
    std::string shown;
    for (size_t position = 0; position < text.size();) {
        const ShownPiece piece = ShownPieceAt(text, position);
        shown += piece.text;
        position += piece.taken;
    }
    return shown;
}

} // namespace tool
