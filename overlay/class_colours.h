// SPDX-License-Identifier: MIT
// Which colour of the palette a class has: the first class that was told of has the first one, and
// so on. So they differ as long as there are colours.
#pragma once

#include <cstddef>
#include <map>
#include <string>

namespace overlay {

class ClassColours {
  public:
    void Add(const std::string &className);

    // Its place in the order of classes; 0 for one that was not told of.
    size_t Of(const std::string &className) const;

  private:
    std::map<std::string, size_t> places;
};

} // namespace overlay
