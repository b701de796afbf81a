// SPDX-License-Identifier: MIT
// One font out of several: each character from the first input that has it.
#pragma once

#include "cbf/writer.h"
#include "cbfconv/options.h"
#include "common/progress.h"

#include <map>

namespace cbfconv {

struct MergedFont {
    cbf::Font font;
    std::map<uint32_t, size_t> origins; // of the glyphs: positions in the inputs
    size_t fallbackOrigin = 0;
    std::vector<uint32_t> missing;                        // asked for by number, and in no font
    std::map<std::string, std::vector<uint32_t>> leftOut; // by the reason, a clause about each
};

// Throws tool::Failure.
MergedFont ReadFonts(const Options &options, tool::Progress &progress);

// The font as a file. What keeps it from being written is left out where it may be; where no glyph
// remains there is no file. Throws tool::Failure.
cbf::File MakeFile(const Options &options, MergedFont &merged);

} // namespace cbfconv
