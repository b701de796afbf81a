#include "overlay_fonts.h"

#include "overlay_words.h"

Font FontStore::Get(const std::string &path, int32_t direction) {
    Font &font = fonts[{path, direction}];
    if (font)
        return font;
    ReadFile(path); // for its reason: the library gives none
    font.reset(OrnMinRenderLoadCbfFont(path.c_str()), OrnMinRenderDestroyFont);
    if (!font)
        throw Failure(path + ": not a CBF font, or cut short (cbfdump --check tells more)");
    OrnMinRenderSetFontDirection(font.get(), direction);
    return font;
}
