// SPDX-License-Identifier: MIT
// Byte by byte, so that the order of the machine's own bytes doesn't matter.
#include "cbf/bytes.h"

namespace cbf {

void PutHalf(Bytes &bytes, uint32_t value) {
    bytes.push_back(static_cast<uint8_t>(value));
    bytes.push_back(static_cast<uint8_t>(value >> 8));
}

void PutWord(Bytes &bytes, uint32_t value) {
    PutHalf(bytes, value);
    PutHalf(bytes, value >> 16);
}

void Append(Bytes &bytes, const Bytes &more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

uint8_t ByteAt(const View &file, uint64_t offset) {
    return file.data[static_cast<size_t>(offset)];
}

uint16_t HalfAt(const View &file, uint64_t offset) {
    return static_cast<uint16_t>(ByteAt(file, offset) | ByteAt(file, offset + 1) << 8);
}

uint32_t WordAt(const View &file, uint64_t offset) {
    return HalfAt(file, offset) | uint32_t{HalfAt(file, offset + 2)} << 16;
}

} // namespace cbf
