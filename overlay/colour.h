// SPDX-License-Identifier: MIT
// Colours as the script names them, and as the frames hold them.
#pragma once

#include "frame.h"

#include <array>
#include <orn_min_render.h>
#include <string>
#include <string_view>

namespace overlay {

// Whether it is "#rrggbb".
bool IsHexColour(std::string_view word);

// Of "#rrggbb" or a name. Throws Failure.
uint32_t ParseColour(std::string_view word);

// The colour of 0xrrggbb. Full range and BT.601 is what the library computes.
OrnMinRenderColour ColourOf(uint32_t rgb, const ColourSpace &space);

// The colours by which tracked boxes are told apart: bright, so that black text can be read on
// them.
using Palette = std::array<OrnMinRenderColour, 24>;
Palette MakePalette(const ColourSpace &space);

// All names, each with a blank before it.
std::string ColourNames();

} // namespace overlay
