// SPDX-License-Identifier: MIT
// Glyphs are rendered in one bit by FreeType's own hinting for that; bitmaps are taken as they are.
#include "cbfconv/freetype_font.h"

#include "cbf/glyph_record.h"
#include "cbfconv/freetype_face.h"
#include "cbfconv/glyph_box.h"

#include FT_BBOX_H
#include FT_BDF_H
#include FT_BITMAP_H
#include FT_FONT_FORMATS_H
#include FT_OUTLINE_H

#include <algorithm>
#include <cstring>

namespace cbfconv {

namespace {

// FreeType's metrics are in 64ths of a pixel.
int32_t RoundToPixels(FT_Pos sixtyFourths) {
    return static_cast<int32_t>((sixtyFourths + 32) >> 6);
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
        throw FontChoiceError("has bitmaps of several sizes, choose one with -s: " +
                              ListStrikes(face));
    throw FontChoiceError("has no bitmaps of " + std::to_string(pixelSize) +
                          " pixels, only of: " + ListStrikes(face));
}

void SetSize(FT_Face face, int pixelSize) {
    FT_Error error = 0;
    if (!FT_IS_SCALABLE(face))
        error = FT_Select_Size(face, FindStrike(face, pixelSize));
    else if (pixelSize == kNativeSize)
        throw FontChoiceError("is an outline font and needs a size in pixels (-s)");
    else
        error = FT_Set_Pixel_Sizes(face, 0, static_cast<FT_UInt>(pixelSize));
    if (error)
        throw FontError("can't be scaled to this size");
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
        throw GlyphError("has a bitmap of unknown form", "");
    std::vector<uint8_t> pixels;
    for (unsigned y = 0; y < gray.bitmap.rows; ++y) {
        const uint8_t *row = gray.bitmap.buffer + static_cast<ptrdiff_t>(y) * gray.bitmap.pitch;
        for (unsigned x = 0; x < gray.bitmap.width; ++x)
            pixels.push_back(row[x] * 2 >= gray.bitmap.num_grays);
    }
    return pixels;
}

// Pixels of a side. Larger glyphs are refused before they are rendered: a font of a kilobyte can
// ask for a gigabyte of them. Smaller ones may yet be cropped to what fits, bitmaps more than
// outlines, of whose box only slivers that are lost between pixels stay empty.
constexpr FT_Pos kMaxBitmapSide = 1024, kMaxOutlineSide = 256;

void CheckSize(const FT_GlyphSlot slot) {
    FT_Pos width = slot->bitmap.width, height = slot->bitmap.rows, most = kMaxBitmapSide;
    if (slot->format == FT_GLYPH_FORMAT_OUTLINE) {
        FT_BBox box = {};
        FT_Outline_Get_BBox(&slot->outline, &box);
        width = (box.xMax - box.xMin + 63) / 64;
        height = (box.yMax - box.yMin + 63) / 64;
        most = kMaxOutlineSide;
    }
    if (std::max(width, height) <= most)
        return;
    cbf::Glyph glyph;
    glyph.width = static_cast<int32_t>(width);
    glyph.height = static_cast<int32_t>(height);
    glyph.advance = RoundToPixels(slot->advance.x);
    throw GlyphError(cbf::Reason(cbf::Problem::Size), SizesOf(glyph));
}

cbf::Glyph RenderGlyph(FT_Face face, FT_UInt index) {
    const FT_GlyphSlot slot = face->glyph;
    FT_Error error = FT_Load_Glyph(face, index, FT_LOAD_TARGET_MONO);
    if (!error) {
        CheckSize(slot);
        error = FT_Render_Glyph(slot, FT_RENDER_MODE_MONO);
    }
    if (error)
        throw GlyphError("can't be rendered", " (FreeType error " + std::to_string(error) + ")");
    cbf::Glyph glyph;
    glyph.width = static_cast<int32_t>(slot->bitmap.width);
    glyph.height = static_cast<int32_t>(slot->bitmap.rows);
    glyph.bearingX = slot->bitmap_left;
    glyph.bearingY = slot->bitmap_top;
    glyph.advance = RoundToPixels(slot->advance.x);
    glyph.pixels = InkOf(slot->library, slot->bitmap);
    return Crop(glyph);
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
        cbf::Glyph own = RenderGlyph(face, 0);
        if (own.width > 0)
            return own;
    }
    return HollowBox(RoundToPixels(face->size->metrics.ascender));
}

class FreeTypeFont : public FontSource {
  public:
    FreeTypeFont(const std::string &path, const FontChoice &choice)
        : library(OpenLibrary()), face(OpenFace(library.get(), path, choice)) {
        SetSize(face.get(), choice.pixelSize);
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
        return RenderGlyph(face.get(), index);
    }

  private:
    Library library; // outlives the face
    Face face;
};

} // namespace

std::unique_ptr<FontSource> OpenFreeTypeFont(const std::string &path, const FontChoice &choice) {
    return std::make_unique<FreeTypeFont>(path, choice);
}

} // namespace cbfconv
