// What the fuzz harnesses share: the bytes of an input as numbers that matter to a drawing library,
// and memory that ends where a page without access begins.
#pragma once

#include "orn_min_render.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/mman.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

// A broken promise stops the program as a broken memory access would.
inline void Require(bool holds, const char *promise) {
    if (!holds) {
        fprintf(stderr, "broken promise: %s\n", promise);
        abort();
    }
}

// Reads an input; beyond its end everything is 0.
struct Input {
    const uint8_t *at;
    const uint8_t *end;

    int32_t Byte() {
        return at < end ? *at++ : 0;
    }
    int32_t Word() {
        uint32_t word = 0;
        for (int i = 0; i < 4; ++i)
            word |= uint32_t(Byte()) << 8 * i;
        return int32_t(word);
    }
    // Anywhere, at an edge of the frame or a limit of the arithmetic, or on the frame or near it.
    int32_t Coordinate(int32_t side) {
        const int64_t places[] = {0,       side / 2, side,    side & ~1,  1 << 15,   -(1 << 15),
                                  1 << 16, -65536,   1 << 30, -(1 << 30), INT32_MAX, INT32_MIN};
        const int32_t kind = Byte() % 8;
        if (kind == 0)
            return Word();
        const int32_t first = Byte();
        if (kind > 3)
            return first - 20 + (kind == 4 ? Byte() : 0);
        const int64_t near = places[first % (kind == 1 ? 12 : 4)] + first / 12 % 5 - 2;
        return int32_t(near > INT32_MAX ? INT32_MAX : near < INT32_MIN ? INT32_MIN : near);
    }
};

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
