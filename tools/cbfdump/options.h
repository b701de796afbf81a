// SPDX-License-Identifier: MIT
// The command line of cbfdump: what to show of which font.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace cbfdump {

struct Options {
    std::string path;
    std::string character; // of the modes, empty or false ones are not asked for
    std::string text;
    std::string sheet;
    int32_t direction = 0; // an OrnMinRenderTextDirection
    bool outline = false;
    bool tables = false;
    bool check = false;
};

// None when there is nothing left to do, after --help and --version. Throws tool::Failure.
std::optional<Options> ParseOptions(int argc, char **argv);

} // namespace cbfdump
