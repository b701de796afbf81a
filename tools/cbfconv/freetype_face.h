// SPDX-License-Identifier: MIT
// Faces of font files, as FreeType opens them: the one that was asked for out of a collection, and
// of a variable font the instance.
#pragma once

#include "cbfconv/font_source.h"

#include <ft2build.h>

#include FT_FREETYPE_H
#include FT_MODULE_H

namespace cbfconv {

struct CloseLibrary {
    void operator()(FT_Library library) const {
        FT_Done_Library(library);
    }
};
struct CloseFace {
    void operator()(FT_Face face) const {
        FT_Done_Face(face);
    }
};
using Library = std::unique_ptr<FT_LibraryRec_, CloseLibrary>;
using Face = std::unique_ptr<FT_FaceRec_, CloseFace>;

// Throws FontError, as all calls here.
Library OpenLibrary();

// The face, which the library must outlive. Its characters are found by their code points.
Face OpenFace(FT_Library library, const std::string &path, const FontChoice &choice);

} // namespace cbfconv
