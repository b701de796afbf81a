// SPDX-License-Identifier: MIT
// Lines by which another program changes overlays while frames flow.
#pragma once

#include "messages.h"

#include <optional>

namespace overlay {

// "set NAME LINE" or "clear NAME".
struct ControlLine {
    std::string_view name;
    std::optional<std::string_view> line; // of a script; none: clear
};

// Takes a line apart. Throws Failure.
ControlLine ParseControlLine(std::string_view line);

} // namespace overlay
