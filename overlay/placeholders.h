// SPDX-License-Identifier: MIT
// Texts with values that change from frame to frame: "{frame}" and its like.
#pragma once

#include "canvas.h"

#include <filesystem>

namespace overlay {

// Where something is wrong within a text.
struct TextFailure : Failure {
    TextFailure(const std::string &reason, size_t where) : Failure(reason), position(where) {
    }
    size_t position; // in bytes
};

// Takes a text apart; what is left out of the pieces is a brace of "{{". perBox: values of tracked
// boxes have a meaning. Names of files count from the folder. Throws TextFailure.
std::vector<TextPiece> ParseText(std::string_view text, bool perBox,
                                 const std::filesystem::path &folder);

// Whether the overlay's text may change from frame to frame.
bool Changes(const Overlay &overlay);

// The overlay's text without what changes.
std::string FixedPartsOf(const Overlay &overlay);

// The overlay's text as this frame and box show it.
std::string TextOf(const Canvas &canvas, const Overlay &overlay);

} // namespace overlay
