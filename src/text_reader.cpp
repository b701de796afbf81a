// SPDX-License-Identifier: MIT
// Reading of font files, checked against their length.
#include "text_reader.h"

#include <limits.h>

using namespace orn;

bool orn::OpenReader(FontReader *reader, const char *path) {
    reader->file = fopen(path, "rb");
    if (!reader->file)
        return false;
    const bool atEnd = fseek(reader->file, 0, SEEK_END) == 0;
    const long length = atEnd ? ftell(reader->file) : -1;
    if (length < 0 || fseek(reader->file, 0, SEEK_SET) != 0) {
        fclose(reader->file);
        return false;
    }
    reader->length = static_cast<uint64_t>(length);
    reader->position = 0;
    return true;
}

bool orn::SeekTo(FontReader *reader, uint64_t offset) {
    // Where long has 32 bits an offset may exceed it, but no file that fseek can open does.
    if (offset > reader->length || offset > LONG_MAX ||
        fseek(reader->file, static_cast<long>(offset), SEEK_SET) != 0)
        return false;
    reader->position = offset;
    return true;
}

bool orn::HasBytes(const FontReader *reader, uint64_t bytes) {
    return bytes <= reader->length - reader->position;
}

bool orn::Read(FontReader *reader, void *bytes, size_t size) {
    if (!HasBytes(reader, size) || fread(bytes, 1, size, reader->file) != size)
        return false;
    reader->position += size;
    return true;
}

bool orn::ReadWord(FontReader *reader, uint32_t *word) {
    uint8_t bytes[4];
    if (!Read(reader, bytes, sizeof bytes))
        return false;
    *word = LittleEndian32(bytes);
    return true;
}
