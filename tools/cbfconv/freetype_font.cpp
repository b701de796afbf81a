// SPDX-License-Identifier: MIT
#include "cbfconv/freetype_font.h"

#include "cbf/code_points.h"
#include "cbfconv/glyph_box.h"

#include <ft2build.h>

#include FT_FREETYPE_H
#include FT_BDF_H
#include FT_BITMAP_H
#include FT_FONT_FORMATS_H

#include <cstring>

namespace cbfconv {

namespace {

struct CloseLibrary {
    void operator()(FT_Library library) const {
        FT_Done_FreeType(library);
    }
};
struct CloseFace {
    void operator()(FT_Face face) const {
        FT_Done_Face(face);
    }
};
using Library = std::unique_ptr<FT_LibraryRec_, CloseLibrary>;
using Face = std::unique_ptr<FT_FaceRec_, CloseFace>;

// FreeType's metrics are in 64ths of a pixel.
int32_t RoundToPixels(FT_Pos sixtyFourths) {
    return static_cast<int32_t>((sixtyFourths + 32) >> 6);
}

// ---- Opening ----

Library OpenLibrary() {
    FT_Library library = nullptr;
    if (FT_Init_FreeType(&library))
        throw FontError("FreeType could not be started");
    return Library(library);
}

Face OpenFace(FT_Library library, const std::string &path) {
    FT_Face face = nullptr;
    if (FT_New_Face(library, path.c_str(), 0, &face))
        throw FontError("is not a font that FreeType can read");
    Face owner(face);
    if (FT_Select_Charmap(face, FT_ENCODING_UNICODE))
        throw FontError("does not map its glyphs to Unicode");
    return owner;
}

// ---- Sizes ----

int StrikeSize(const FT_Bitmap_Size &strike) {
    return RoundToPixels(strike.y_ppem);
}

std::string ListStrikes(FT_Face face) {
    std::string list;
    for (int i = 0; i < face->num_fixed_sizes; ++i)
        list += (i ? ", " : "") + std::to_string(StrikeSize(face->available_sizes[i]));
    return list;
}

int FindStrike(FT_Face face, int pixelSize) {
    if (pixelSize == kNativeSize && face->num_fixed_sizes == 1)
        return 0;
    for (int i = 0; i < face->num_fixed_sizes; ++i)
        if (StrikeSize(face->available_sizes[i]) == pixelSize)
            return i;
    if (pixelSize == kNativeSize)
        throw FontSizeError("has bitmaps of several sizes, choose one with -s: " +
                            ListStrikes(face));
    throw FontSizeError("has no bitmaps of " + std::to_string(pixelSize) +
                        " pixels, only of: " + ListStrikes(face));
}

void SetSize(FT_Face face, int pixelSize) {
    FT_Error error = 0;
    if (!FT_IS_SCALABLE(face))
        error = FT_Select_Size(face, FindStrike(face, pixelSize));
    else if (pixelSize == kNativeSize)
        throw FontSizeError("is an outline font and needs a size in pixels (-s)");
    else
        error = FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(pixelSize));
    if (error)
        throw FontError("can't be had at this size");
}

// ---- Glyphs ----

// A bitmap with a byte for each pixel, whatever form it came in.
struct GrayBitmap {
    explicit GrayBitmap(FT_Library owner) : library(owner) {
        FT_Bitmap_Init(&bitmap);
    }
    ~GrayBitmap() {
        FT_Bitmap_Done(library, &bitmap);
    }
    GrayBitmap(const GrayBitmap &) = delete;
    GrayBitmap &operator=(const GrayBitmap &) = delete;

    FT_Library library;
    FT_Bitmap bitmap;
};

std::vector<uint8_t> InkOf(FT_Library library, const FT_Bitmap &source) {
    if (!source.buffer) // of a BDF glyph without bitmap, whatever its box
        return std::vector<uint8_t>(size_t{source.width} * source.rows);
    GrayBitmap gray(library);
    if (FT_Bitmap_Convert(library, &source, &gray.bitmap, 1))
        throw FontError("has a bitmap of unknown form");
    std::vector<uint8_t> pixels;
    for (unsigned y = 0; y < gray.bitmap.rows; ++y) {
        const uint8_t *row = gray.bitmap.buffer + static_cast<ptrdiff_t>(y) * gray.bitmap.pitch;
        for (unsigned x = 0; x < gray.bitmap.width; ++x)
            pixels.push_back(row[x] * 2 >= gray.bitmap.num_grays);
    }
    return pixels;
}

cbf::Glyph RenderGlyph(FT_Face face, FT_UInt index) {
    if (const FT_Error error = FT_Load_Glyph(face, index, FT_LOAD_TARGET_MONO | FT_LOAD_RENDER))
        throw FontError("can't be rendered (FreeType error " + std::to_string(error) + ")");
    const FT_GlyphSlot slot = face->glyph;
    cbf::Glyph glyph;
    glyph.width = static_cast<int32_t>(slot->bitmap.width);
    glyph.height = static_cast<int32_t>(slot->bitmap.rows);
    glyph.bearingX = slot->bitmap_left;
    glyph.bearingY = slot->bitmap_top;
    glyph.advance = RoundToPixels(slot->advance.x);
    glyph.pixels = InkOf(slot->library, slot->bitmap);
    return Crop(glyph);
}

cbf::Glyph RenderNamed(FT_Face face, FT_UInt index, const std::string &name) {
    try {
        return RenderGlyph(face, index);
    } catch (const FontError &error) {
        throw FontError(name + ": " + error.what());
    }
}

// ---- The fallback glyph ----

// Glyph 0 stands for missing characters, but in a BDF font that names no default character it is
// just any glyph.
bool HasOwnFallback(FT_Face face) {
    BDF_PropertyRec property;
    return std::strcmp(FT_Get_Font_Format(face), "BDF") != 0 ||
           FT_Get_BDF_Property(face, "DEFAULT_CHAR", &property) == 0;
}

cbf::Glyph FallbackGlyph(FT_Face face) {
    if (HasOwnFallback(face)) {
        cbf::Glyph own = RenderNamed(face, 0, "fallback glyph");
        if (own.width > 0)
            return own;
    }
    return HollowBox(RoundToPixels(face->size->metrics.ascender));
}

class FreeTypeFont : public FontSource {
  public:
    FreeTypeFont(const std::string &path, int pixelSize)
        : library(OpenLibrary()), face(OpenFace(library.get(), path)) {
        SetSize(face.get(), pixelSize);
    }

    int32_t LineHeight() const override {
        const FT_Size_Metrics &metrics = face->size->metrics;
        return RoundToPixels(metrics.height > 0 ? metrics.height
                                                : metrics.ascender - metrics.descender);
    }

    cbf::Glyph Fallback() override {
        return FallbackGlyph(face.get());
    }

    std::optional<cbf::Glyph> Read(uint32_t codePoint) override {
        const FT_UInt index = FT_Get_Char_Index(face.get(), codePoint);
        if (index == 0)
            return {};
        return RenderNamed(face.get(), index, cbf::CodePointName(codePoint));
    }

  private:
    Library library; // outlives the face
    Face face;
};

} // namespace

std::unique_ptr<FontSource> OpenFreeTypeFont(const std::string &path, int pixelSize) {
    return std::make_unique<FreeTypeFont>(path, pixelSize);
}

} // namespace cbfconv
