// SPDX-License-Identifier: MIT
// The blocks of Unicode 15.0 by name, as Blocks.txt of the Unicode Character Database lists them.
#pragma once

#include <cstdint>

namespace cbfdump {

struct UnicodeBlock {
    uint32_t first;
    uint32_t last;
    const char *name;
};

// Null between the blocks.
const UnicodeBlock *FindUnicodeBlock(uint32_t codePoint);

} // namespace cbfdump
