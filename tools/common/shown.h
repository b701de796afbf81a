// SPDX-License-Identifier: MIT
// Words and file names that came from outside, made fit to be shown: a terminal obeys control
// characters, so they are written as \x1B. So are bytes that are no UTF-8.
#pragma once

#include "common/utf8.h"

#include <string>
#include <string_view>

namespace tool {

// One piece of a shown text: a character that stands for itself, or the code of a byte.
struct ShownPiece {
    char text[5]; // with a null at its end
    size_t taken; // bytes of the text that it shows
};

// The piece that begins at a position before the text's end. Takes no memory, so that running out
// of it can be told.
ShownPiece ShownPieceAt(std::string_view text, size_t position);

std::string Shown(std::string_view text);

} // namespace tool
