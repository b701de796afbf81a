// SPDX-License-Identifier: MIT
// A font names its instances in several languages and encodings, and each of the names will do.
#include "cbfconv/freetype_instance.h"

#include "cbfconv/font_source.h"
#include "common/numbers.h"
#include "common/text.h"
#include "common/utf8.h"

#include FT_MULTIPLE_MASTERS_H
#include FT_SFNT_NAMES_H
#include FT_TRUETYPE_IDS_H

#include <algorithm>
#include <memory>

#include <strings.h>

namespace cbfconv {

namespace {

struct FreeVariations {
    void operator()(FT_MM_Var *variations) const {
        FT_Done_MM_Var(library, variations);
    }
    FT_Library library;
};
using Variations = std::unique_ptr<FT_MM_Var, FreeVariations>;

constexpr FT_UInt kListed = 20; // names in a message

// ---- Names ----

// Characters of two bytes, the higher one first; those of four don't occur in names of styles.
std::string FromUtf16(const FT_SfntName &name) {
    std::string text;
    for (FT_UInt i = 0; i + 1 < name.string_len; i += 2)
        text += tool::Utf8(static_cast<uint32_t>(name.string[i] << 8 | name.string[i + 1]));
    return text;
}

std::string TextOf(const FT_SfntName &name) {
    if (name.platform_id == TT_PLATFORM_MACINTOSH)
        return std::string(reinterpret_cast<const char *>(name.string), name.string_len);
    return FromUtf16(name);
}

// All that the font has for a number of its table of names.
std::vector<std::string> NamesOf(FT_Face face, FT_UInt id) {
    std::vector<std::string> names;
    FT_SfntName name;
    for (FT_UInt i = 0; i < FT_Get_Sfnt_Name_Count(face); ++i)
        if (FT_Get_Sfnt_Name(face, i, &name) == 0 && name.name_id == id)
            names.push_back(TextOf(name));
    return names;
}

std::string ListInstances(FT_Face face, const FT_MM_Var &variations) {
    std::string list;
    for (FT_UInt i = 0; i < std::min(variations.num_namedstyles, kListed); ++i)
        if (const auto names = NamesOf(face, variations.namedstyle[i].strid); !names.empty())
            list += (list.empty() ? "'" : ", '") + names.front() + "'";
    return list.empty() ? "none with a name" : list;
}

void SetNamed(FT_Face face, const FT_MM_Var &variations, const std::string &wanted) {
    const auto isWanted = [&](const std::string &name) {
        return strcasecmp(name.c_str(), wanted.c_str()) == 0;
    };
    for (FT_UInt i = 0; i < variations.num_namedstyles; ++i) {
        const auto names = NamesOf(face, variations.namedstyle[i].strid);
        if (std::none_of(names.begin(), names.end(), isWanted))
            continue;
        if (FT_Set_Named_Instance(face, i + 1)) // 0 is the font as it comes
            throw FontError("instance '" + wanted + "' can't be set");
        return;
    }
    throw FontChoiceError("has no instance '" + wanted +
                          "', only: " + ListInstances(face, variations));
}

// ---- Axes ----

double Number(FT_Fixed value) {
    return static_cast<double>(value) / 65536;
}

std::string TagOf(const FT_Var_Axis &axis) {
    return {static_cast<char>(axis.tag >> 24), static_cast<char>(axis.tag >> 16),
            static_cast<char>(axis.tag >> 8), static_cast<char>(axis.tag)};
}

// "wght from 100 to 900, wdth from 75 to 100"
std::string ListAxes(const FT_MM_Var &variations) {
    std::string list;
    for (FT_UInt i = 0; i < std::min(variations.num_axis, kListed); ++i) {
        const FT_Var_Axis &axis = variations.axis[i];
        list += (i ? ", " : "") + TagOf(axis) +
                tool::Format(" from %g to %g", Number(axis.minimum), Number(axis.maximum));
    }
    return list;
}

// One "wght=700" of the list.
bool SetAxis(const FT_MM_Var &variations, const std::string &part, std::vector<FT_Fixed> &values) {
    const size_t equals = part.find('=');
    if (equals == std::string::npos)
        return false;
    const std::optional<double> value = tool::ParseReal(part.substr(equals + 1));
    for (FT_UInt i = 0; value && i < variations.num_axis; ++i) {
        const FT_Var_Axis &axis = variations.axis[i];
        if (TagOf(axis) != part.substr(0, equals) || *value < Number(axis.minimum) ||
            *value > Number(axis.maximum))
            continue;
        values[i] = static_cast<FT_Fixed>(*value * 65536);
        return true;
    }
    return false;
}

void SetAxes(FT_Face face, const FT_MM_Var &variations, const std::string &wanted) {
    std::vector<FT_Fixed> values;
    for (FT_UInt i = 0; i < variations.num_axis; ++i)
        values.push_back(variations.axis[i].def);
    for (size_t first = 0; first <= wanted.size();) {
        const size_t comma = std::min(wanted.find(',', first), wanted.size());
        const std::string part = wanted.substr(first, comma - first);
        if (!SetAxis(variations, part, values))
            throw FontChoiceError("has no instance with '" + part +
                                  "', only axes: " + ListAxes(variations));
        first = comma + 1;
    }
    if (FT_Set_Var_Design_Coordinates(face, variations.num_axis, values.data()))
        throw FontError("instance '" + wanted + "' can't be set");
}

} // namespace

void SetInstance(FT_Face face, const std::string &wanted) {
    if (wanted.empty() || wanted == kDefaultInstance)
        return;
    FT_MM_Var *found = nullptr;
    if (!FT_HAS_MULTIPLE_MASTERS(face) || FT_Get_MM_Var(face, &found))
        throw FontChoiceError("has no instance '" + wanted + "': it is no variable font");
    const Variations variations(found, FreeVariations{face->glyph->library});
    if (wanted.find('=') == std::string::npos)
        SetNamed(face, *variations, wanted);
    else
        SetAxes(face, *variations, wanted);
}

} // namespace cbfconv
