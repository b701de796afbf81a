// SPDX-License-Identifier: MIT
// Pictures that the library draws of a font, in memory.
#pragma once

#include "orn_min_render.h"

#include <string>
#include <vector>

namespace cbfdump {

struct Picture {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint8_t> luma;
};

constexpr uint8_t kInkLuma = 0;
constexpr uint8_t kOutlineLuma = 160;
constexpr uint8_t kPaperLuma = 255;

// All paper. Throws tool::Failure where it is too large to hold.
Picture BlankPicture(int64_t width, int64_t height);

// To draw into; valid as long as the picture.
OrnMinRenderImage ImageOf(Picture &picture);

// The rectangle of a text with the pen at the origin.
OrnMinRenderRect Measure(const OrnMinRenderFont *font, const std::string &text);

// The text as large as it measures, and as its outline reaches.
Picture DrawText(OrnMinRenderFont *font, int32_t direction, const std::string &text, bool outlined);

} // namespace cbfdump
