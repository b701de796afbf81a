// SPDX-License-Identifier: MIT
// Whole text files, read into memory.
#pragma once

#include <cstdint>
#include <string>

namespace tool {

// Larger ones are refused, and so is what has no end, such as /dev/zero.
constexpr uint64_t kMaxTextBytes = uint64_t{1} << 28;

// Throws Failure, which names the file.
std::string ReadText(const std::string &path, uint64_t maxBytes = kMaxTextBytes);

} // namespace tool
