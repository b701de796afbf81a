// SPDX-License-Identifier: MIT
// The checked reader of font files, by whole files that end too early.
#include "font_exercise.h"
#include "font_files.h"

#include <gtest/gtest.h>

namespace {

TEST(HostileFonts, CutShortAnywhere) {
    const cbf::Bytes file = SampleFont();
    for (size_t length = 0; length < file.size(); ++length) {
        cbf::Bytes bytes = file;
        bytes.resize(length);
        ExerciseFont(bytes);
    }
    EXPECT_EQ(OrnMinRenderLoadCbfFont("/nowhere/at/all.cbf"), nullptr);
    EXPECT_EQ(OrnMinRenderLoadCbfFont("/tmp"), nullptr);
    EXPECT_EQ(OrnMinRenderLoadCbfFont(nullptr), nullptr);
    OrnMinRenderDestroyFont(nullptr);
}

} // namespace
