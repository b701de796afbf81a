// SPDX-License-Identifier: MIT
// Memory between pages without access, and promises that stop the program as those pages do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>

// A broken promise stops the program as a broken memory access would.
inline void Require(bool holds, const char *promise) {
    if (!holds) {
        fprintf(stderr, "broken promise: %s\n", promise);
        abort();
    }
}

// Noise between two stretches without access.
class Fenced {
  public:
    explicit Fenced(size_t size) {
        constexpr size_t kFence = 65536; // a multiple of the page size of every machine
        void *all = mmap(nullptr, size + 2 * kFence, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        first = static_cast<uint8_t *>(all) + kFence;
        end = first + size;
        Require(all != MAP_FAILED && mprotect(first, size, PROT_READ | PROT_WRITE) == 0, "memory");
        for (uint8_t *byte = first; byte < end; ++byte)
            *byte = uint8_t(uint32_t(byte - first) * 2654435761u >> 21);
    }
    uint8_t *first;
    uint8_t *end;
};
