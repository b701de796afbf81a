// SPDX-License-Identifier: MIT
// A file descriptor that is closed at the end of its block.
#pragma once

#include <unistd.h>

namespace tool {

struct Descriptor {
    explicit Descriptor(int open) : number(open) { // below 0: none
    }
    ~Descriptor() {
        if (number >= 0)
            close(number);
    }
    Descriptor(const Descriptor &) = delete;
    Descriptor &operator=(const Descriptor &) = delete;

    const int number;
};

} // namespace tool
