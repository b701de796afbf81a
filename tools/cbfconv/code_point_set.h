// SPDX-License-Identifier: MIT
// Sets of characters as command lines write them.
#pragma once

#include "common/utf8.h"

#include <vector>

namespace cbfconv {

// Of code points up to U+10FFFF.
class CodePointSet {
  public:
    bool Has(uint32_t codePoint) const {
        return members[codePoint];
    }
    // None lies at it or above.
    uint32_t End() const {
        return end;
    }
    void Set(uint32_t first, uint32_t last, bool member);

    // "0x20-0x7E,U+0400-U+04FF,176", or "all": adds or removes these. Throws std::invalid_argument,
    // whose text says what is wrong with which part.
    void Change(const std::string &list, bool member);

    // Whether "all" was added, which asks for whatever a font has.
    bool HoldsAll() const {
        return all;
    }

  private:
    std::vector<bool> members = std::vector<bool>(tool::kMaxCodePoint + 1);
    uint32_t end = 0;
    bool all = false;
};

} // namespace cbfconv
