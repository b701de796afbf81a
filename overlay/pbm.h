// SPDX-License-Identifier: MIT
// Reads PBM pictures (plain P1 and raw P4) as the 1-bit bitmaps that the library draws: rows of
// 32-bit words, the most significant bit leftmost, a black pixel a set bit.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace overlay {

struct Bitmap {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint32_t> words;
};

// Takes the whole content of a file. Throws Failure; sides are 1..32767, what can be drawn.
Bitmap ParsePbm(std::string_view content);

} // namespace overlay
