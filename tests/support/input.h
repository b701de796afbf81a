// SPDX-License-Identifier: MIT
// An input of a fuzzer: where it enters, and its bytes as numbers that matter to a drawing library.
#pragma once

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size);

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
