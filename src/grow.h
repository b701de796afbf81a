// SPDX-License-Identifier: MIT
// Arrays that double whenever they are full, which they are at every power of two.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>

namespace orn {

// Makes room for one entry more than count; false, with the array as it was, when memory is short.
template <class Entry> inline bool MakeRoom(Entry **entries, uint32_t count) {
    if ((count & (count - 1)) != 0)
        return true;
    const size_t capacity = count ? size_t{count} * 2 : 1;
    auto *grown = static_cast<Entry *>(realloc(*entries, capacity * sizeof(Entry)));
    if (!grown)
        return false;
    *entries = grown;
    return true;
}

} // namespace orn
