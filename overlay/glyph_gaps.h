// SPDX-License-Identifier: MIT
// Characters that a font lacks: the library draws the same glyph for all of them, mostly a box.
#pragma once

#include "resources.h"

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <unordered_set>

namespace overlay {

class GlyphGaps {
  public:
    // Which characters of a text the font lacks, in words; empty if there are none. A character is
    // told once for each line of the script.
    std::string NewIn(OrnMinRenderContext *context, const Font &font, size_t line,
                      std::string_view text);

  private:
    // Of one line.
    struct Known {
        std::array<bool, 256> low{}; // most texts have no others
        std::unordered_set<uint32_t> others;
        bool Add(uint32_t codePoint); // false if it was known, or there is no room for more
    };

    std::map<size_t, Known> known;
};

} // namespace overlay
