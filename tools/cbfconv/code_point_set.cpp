// SPDX-License-Identifier: MIT
// A bit for each code point: lists are long and overlap.
#include "cbfconv/code_point_set.h"

#include "cbf/code_points.h"

#include <algorithm>
#include <stdexcept>

namespace cbfconv {

void CodePointSet::Set(uint32_t first, uint32_t last, bool member) {
    std::fill(members.begin() + first, members.begin() + last + 1, member);
    if (member)
        end = std::max(end, last + 1);
    else if (last + 1 >= end)
        end = std::min(end, first);
}

static void ChangeRange(CodePointSet &set, const std::string &text, bool member) {
    const size_t dash = text.find('-');
    const auto first = cbf::ParseCodePoint(text.substr(0, dash));
    const auto last =
        dash == std::string::npos ? first : cbf::ParseCodePoint(text.substr(dash + 1));
    if (!first || !last)
        throw std::invalid_argument("'" + text +
                                    "' is no range of characters such as 0x20-0x7E, "
                                    "U+0400-U+04FF or 176, up to U+10FFFF");
    if (*first > *last)
        throw std::invalid_argument("'" + text + "' runs backwards");
    set.Set(*first, *last, member);
}

void CodePointSet::Change(const std::string &list, bool member) {
    for (size_t first = 0; first <= list.size();) {
        const size_t comma = std::min(list.find(',', first), list.size());
        const std::string part = list.substr(first, comma - first);
        if (part == "all") {
            Set(0, tool::kMaxCodePoint, member);
            all = member;
        } else {
            ChangeRange(*this, part, member);
        }
        first = comma + 1;
    }
}

} // namespace cbfconv
