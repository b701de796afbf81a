// SPDX-License-Identifier: MIT
// What is no error, but may not be what was meant. Each thing is told once, and not without end.
#pragma once

#include "messages.h"

namespace overlay {

class Notes {
  public:
    // Without a file, it is the script.
    void Add(const std::string &file, size_t line, const std::string &text);

    // Those since the last call.
    Errors Take();

    // Everything may be told anew.
    void Forget();

  private:
    size_t count = 0; // since everything could be told
    Errors waiting;
};

} // namespace overlay
