// SPDX-License-Identifier: MIT
// Memory between pages without access, and promises that stop the program as those pages do.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

// A broken promise stops the program as a broken memory access would.
inline void Require(bool holds, const char *promise) {
    if (!holds) {
        fprintf(stderr, "broken promise: %s\n", promise);
        abort();
    }
}

// Noise that ends where a stretch without access begins; where it takes whole pages, it also begins
// where one ends.
class Fenced {
  public:
    explicit Fenced(size_t size) {
        constexpr size_t kFence = 65536; // a multiple of the page size of every machine
        const auto page = size_t(sysconf(_SC_PAGESIZE));
        const size_t whole = (size + page - 1) / page * page;
        void *all =
            mmap(nullptr, whole + 2 * kFence, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        uint8_t *const pages = static_cast<uint8_t *>(all) + kFence;
        Require(all != MAP_FAILED && mprotect(pages, whole, PROT_READ | PROT_WRITE) == 0, "memory");
        end = pages + whole;
        first = end - size;
        for (uint8_t *byte = first; byte < end; ++byte)
            *byte = uint8_t(uint32_t(byte - first) * 2654435761u >> 21);
    }
    uint8_t *first;
    uint8_t *end;
};
