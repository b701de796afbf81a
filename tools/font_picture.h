// Pictures of a font, drawn by the library: a text for the terminal, a sheet of all characters.
#pragma once

#include "cbf_reader.h"
#include "orn_min_render.h"

#include <string>
#include <vector>

struct Picture {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint8_t> luma;
};

constexpr uint8_t kInkLuma = 0;
constexpr uint8_t kOutlineLuma = 160;
constexpr uint8_t kPaperLuma = 255;

// The text as large as it measures, and as its outline reaches. A picture too large to hold throws
// OutputError, here and below.
Picture DrawText(OrnMinRenderFont *font, int32_t direction, const std::string &text, bool outlined);

// One character a cell, in rows of 16 or a multiple of that. Rows without any are left out; each of
// the others begins with its first code point, where the font can write that.
Picture DrawSheet(OrnMinRenderFont *font, const cbf::Bytes &file, const cbf::FontFile &contents);

// Throws OutputError. A path that ends in ".pgm" gets that format, any other one PNG, which the
// ffmpeg program makes.
void WritePicture(const Picture &picture, const std::string &path);
