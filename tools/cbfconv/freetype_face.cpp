// SPDX-License-Identifier: MIT
// Faces are numbered from 0, as other programs do; a name is compared with what the font calls
// them.
#include "cbfconv/freetype_face.h"

#include "cbfconv/freetype_instance.h"
#include "common/numbers.h"
#include "common/program.h"

#include <algorithm>
#include <cstdlib>

#include <strings.h>

namespace cbfconv {

// ---- The library ----

// Short memory ends the program right here: not all of FreeType bears with it.
static void *Allocate(FT_Memory, long size) {
    if (void *block = std::malloc(static_cast<size_t>(size)))
        return block;
    tool::StopForMemory();
}

static void Free(FT_Memory, void *block) {
    std::free(block);
}

static void *Reallocate(FT_Memory, long, long size, void *block) {
    if (void *moved = std::realloc(block, static_cast<size_t>(size)))
        return moved;
    tool::StopForMemory();
}

Library OpenLibrary() {
    static FT_MemoryRec_ memory = {nullptr, Allocate, Free, Reallocate}; // outlives every library
    FT_Library library = nullptr;
    if (FT_New_Library(&memory, &library))
        throw FontError("FreeType could not be started");
    Library owner(library);
    FT_Add_Default_Modules(library);
    FT_Set_Default_Properties(library);
    return owner;
}

// ---- Faces ----

// Null where there is none of that number, or it is broken.
static Face FaceAt(FT_Library library, const std::string &path, FT_Long number) {
    FT_Face face = nullptr;
    if (FT_New_Face(library, path.c_str(), number, &face))
        return nullptr;
    return Face(face);
}

static std::string NameOf(FT_Face face) {
    const std::string family = face->family_name ? face->family_name : "";
    return face->style_name ? family + " " + face->style_name : family;
}

static bool HasName(FT_Face face, const std::string &wanted) {
    const auto isWanted = [&](const char *name) {
        return name && strcasecmp(name, wanted.c_str()) == 0;
    };
    return isWanted(NameOf(face).c_str()) || isWanted(face->family_name) ||
           isWanted(FT_Get_Postscript_Name(face));
}

// "0 'DejaVu Sans Book', 1 'DejaVu Sans Bold'"
static std::string ListFaces(FT_Library library, const std::string &path, FT_Long count) {
    constexpr FT_Long kListed = 20;
    std::string list;
    for (FT_Long i = 0; i < std::min(count, kListed); ++i) {
        const Face face = FaceAt(library, path, i);
        list += (i ? ", " : "") + std::to_string(i);
        list += face ? " '" + NameOf(face.get()) + "'" : " (broken)";
    }
    return list + (count > kListed ? ", ... of " + std::to_string(count) : "");
}

// The first of the faces that has the name, or the one of that number.
static Face FindFace(FT_Library library, const std::string &path, const std::string &wanted,
                     FT_Long count) {
    if (const auto number = tool::ParseInteger(wanted))
        return *number >= 0 && *number < count ? FaceAt(library, path, *number) : nullptr;
    for (FT_Long i = 0; i < count; ++i)
        if (Face face = FaceAt(library, path, i); face && HasName(face.get(), wanted))
            return face;
    return nullptr;
}

Face OpenFace(FT_Library library, const std::string &path, const FontChoice &choice) {
    Face face = FaceAt(library, path, 0);
    if (!face)
        throw FontError("is not a font that FreeType can read");
    if (!choice.face.empty()) {
        const FT_Long count = face->num_faces;
        face = FindFace(library, path, choice.face, count);
        if (!face)
            throw FontChoiceError("has no face '" + choice.face +
                                  "', only: " + ListFaces(library, path, count));
    }
    if (FT_Select_Charmap(face.get(), FT_ENCODING_UNICODE))
        throw FontError("does not map its glyphs to Unicode");
    SetInstance(face.get(), choice.instance);
    return face;
}

} // namespace cbfconv
