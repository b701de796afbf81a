// SPDX-License-Identifier: MIT
// The format is told by how the file begins, not by its name.
#include "cbfconv/font_source.h"

#include "cbfconv/freetype_font.h"
#include "cbfconv/hex_font.h"

#include <cerrno>
#include <cstring>
#include <fstream>

namespace cbfconv {

// FreeType doesn't say why a file can't be opened.
static void CheckReadable(const std::string &path) {
    errno = 0;
    std::ifstream file(path, std::ios::binary);
    if (!file || file.peek() == std::ifstream::traits_type::eof())
        throw FontError(errno ? std::strerror(errno) : "is empty");
}

std::unique_ptr<FontSource> OpenFont(const std::string &path, const FontChoice &choice) {
    CheckReadable(path);
    if (IsHexFont(path))
        return OpenHexFont(path, choice);
    return OpenFreeTypeFont(path, choice);
}

} // namespace cbfconv
