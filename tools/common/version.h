// SPDX-License-Identifier: MIT
// What --version says.
#pragma once

#include <string>

namespace tool {

// "cbfconv 1.0.0": the version of the library that the program was built with.
std::string VersionText(const std::string &program);

} // namespace tool
