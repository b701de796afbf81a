// SPDX-License-Identifier: MIT
// The checked reader of font files, by whole files that end too early.
#include "font_exercise.h"
#include "font_files.h"

#include <gtest/gtest.h>

namespace {

cbf::File SampleFont() {
    std::mt19937 random(77);
    cbf::Font source;
    source.lineHeight = 12;
    source.fallback = RandomGlyph(random, 9, 12);
    for (uint32_t c = 32; c < 70; ++c)
        source.glyphs[c] = RandomGlyph(random, 20, 30);
    source.glyphs[0x110004] = RandomGlyph(random, 20, 30);
    return cbf::WriteFont(source);
}

TEST(HostileFonts, CutShortAnywhere) {
    const auto file = SampleFont();
    for (size_t length = 0; length < file.bytes.size(); ++length) {
        cbf::Bytes bytes = file.bytes;
        bytes.resize(length);
        ExerciseFont(bytes);
    }
    EXPECT_EQ(OrnMinRenderLoadCbfFont("/nowhere/at/all.cbf"), nullptr);
    EXPECT_EQ(OrnMinRenderLoadCbfFont("/tmp"), nullptr);
    EXPECT_EQ(OrnMinRenderLoadCbfFont(nullptr), nullptr);
    OrnMinRenderDestroyFont(nullptr);
}

} // namespace
