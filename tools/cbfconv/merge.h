// SPDX-License-Identifier: MIT
// One font out of several: each character from the first input that has it.
#pragma once

#include "cbf/font.h"
#include "cbfconv/options.h"
#include "common/progress.h"

#include <map>

namespace cbfconv {

struct MergedFont {
    cbf::Font font;
    std::map<uint32_t, size_t> origins; // of the glyphs: positions in the inputs
    std::vector<uint32_t> missing;      // asked for by number, and in no font
};

// Throws tool::Failure.
MergedFont ReadFonts(const Options &options, tool::Progress &progress);

} // namespace cbfconv
