// SPDX-License-Identifier: MIT
#include "class_colours.h"

namespace overlay {

constexpr size_t kMaxClasses = 10000; // what detectors know, with room; what lies has no end

void ClassColours::Add(const std::string &className) {
    if (places.size() < kMaxClasses)
        places.emplace(className, places.size());
}

size_t ClassColours::Of(const std::string &className) const {
    const auto found = places.find(className);
    return found == places.end() ? 0 : found->second;
}

} // namespace overlay
