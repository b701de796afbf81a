// SPDX-License-Identifier: MIT
// A text in lines that fit a width. Unlike the library's own call for that, this one counts the
// marker of a line as a part of it, and cuts a word that is wider than a line.
#pragma once

#include <orn_min_render.h>
#include <string>
#include <string_view>

namespace overlay {

struct LineShape {
    OrnMinRenderContext *context;
    const OrnMinRenderFont *font; // that writes from left to right
    int32_t width;                // pixels, 1 or more
    std::string_view marker;      // begins each line that goes on from the one before
};

// The text's own lines stay apart. A line has one character at least, however wide that is. Blanks
// around a break are left out.
std::string FitLines(std::string_view text, const LineShape &shape);

} // namespace overlay
