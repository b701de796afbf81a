// SPDX-License-Identifier: MIT
// The command line of cbfconv: which characters to take from which fonts.
#pragma once

#include "cbfconv/code_point_set.h"
#include "cbfconv/font_source.h"

#include <optional>

namespace cbfconv {

// One input font. What it is asked for may be more than it has.
struct Input {
    std::string path;
    FontChoice choice;
    CodePointSet wanted;
};

constexpr char kStandardOutput[] = "/dev/stdout";

struct Options {
    std::vector<Input> inputs;
    std::vector<std::string> files; // all that are read: fonts and texts
    std::string output;             // kStandardOutput for "-"
    std::string fallback;           // empty: the first font's own
    int letterSpacing = 0;
    int lineSpacing = 0;
    bool strict = false;
    bool verbose = false;
};

// None when there is nothing left to do, after --help and --version. Throws tool::Failure.
std::optional<Options> ParseOptions(int argc, char **argv);

} // namespace cbfconv
