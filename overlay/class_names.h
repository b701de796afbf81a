// SPDX-License-Identifier: MIT
// Names for the numbers of classes, as detectors keep them in a file.
#pragma once

#include "messages.h"

#include <cstdint>
#include <map>

namespace overlay {

using ClassNames = std::map<int64_t, std::string>;

// Reads a file with a name a line: the first is that of class 0, and so on. A line "N: NAME" gives
// the number itself.
ClassNames ParseClassNames(std::string_view content, const std::string &file, Errors &errors);

// The name of a class; of one that has none, its number.
std::string NameOfClass(const ClassNames &names, int64_t number);

} // namespace overlay
