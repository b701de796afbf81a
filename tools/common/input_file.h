// SPDX-License-Identifier: MIT
// Whole files, read into memory.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tool {

constexpr uint64_t kMaxTextBytes = uint64_t{1} << 28;
constexpr uint64_t kMaxDataBytes = uint64_t{1} << 32;

// Of pipes, devices and the like, whose size shows only while they are read: /dev/zero has no end.
constexpr uint64_t kMaxStreamBytes = uint64_t{1} << 28;

// Throw Failure, which names the file, also where it has more bytes than that.
std::string ReadText(const std::string &path, uint64_t maxBytes = kMaxTextBytes);
std::vector<uint8_t> ReadData(const std::string &path, uint64_t maxBytes = kMaxDataBytes);

} // namespace tool
