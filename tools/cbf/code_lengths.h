// SPDX-License-Identifier: MIT
// How long each code of an optimal prefix code is, when none may exceed a length.
#pragma once

#include "cbf/codes.h"

namespace cbf {

// Sorted by length and symbol; bits are not set. A lone symbol gets length 1. Empty where
// 2^maxLength codes are too few.
std::vector<Code> CodeLengths(const Counts &counts, uint32_t maxLength);

} // namespace cbf
