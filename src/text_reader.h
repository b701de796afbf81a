// SPDX-License-Identifier: MIT
// The one reader for everything that comes from a font file: it never believes a claim beyond the
// file's length, and asks for no memory before the bytes are known to be there.
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <stdio.h>

namespace orn {

struct FontReader {
    FILE *file;
    uint64_t length;
    uint64_t position; // of the next byte read
};

// Opens a file at its start; false when it can't be opened or its length can't be found. The caller
// closes reader->file.
bool OpenReader(FontReader *reader, const char *path);

// False when the offset lies beyond the end.
bool SeekTo(FontReader *reader, uint64_t offset);

// Whether so many bytes follow: to be asked before memory is taken for them.
bool HasBytes(const FontReader *reader, uint64_t bytes);

// Both false when not all of the bytes can be read.
bool Read(FontReader *reader, void *bytes, size_t size);
bool ReadWord(FontReader *reader, uint32_t *word);

inline uint16_t LittleEndian16(const uint8_t *bytes) {
    return static_cast<uint16_t>(bytes[0] | bytes[1] << 8);
}

inline uint32_t LittleEndian32(const uint8_t *bytes) {
    return LittleEndian16(bytes) | static_cast<uint32_t>(LittleEndian16(bytes + 2)) << 16;
}

} // namespace orn
