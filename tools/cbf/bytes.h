// SPDX-License-Identifier: MIT
// Numbers in the bytes of a file: little-endian, 16 and 32 bits.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace cbf {

using Bytes = std::vector<uint8_t>;

// ---- Writing ----

void PutHalf(Bytes &bytes, uint32_t value); // the low 16 bits
void PutWord(Bytes &bytes, uint32_t value);
void Append(Bytes &bytes, const Bytes &more);

// ---- Reading ----

// The bytes of a whole file, wherever they lie: a Bytes, or memory that the file is mapped to.
struct View {
    View(const Bytes &bytes) : data(bytes.data()), size(bytes.size()) {
    }
    View(const uint8_t *first, size_t count) : data(first), size(count) {
    }

    bool Holds(uint64_t offset, uint64_t count) const {
        return offset <= size && count <= size - offset;
    }

    const uint8_t *data;
    size_t size;
};

// The callers have checked that the bytes are there.
uint8_t ByteAt(const View &file, uint64_t offset);
uint16_t HalfAt(const View &file, uint64_t offset);
uint32_t WordAt(const View &file, uint64_t offset);

} // namespace cbf
