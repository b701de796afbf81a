// SPDX-License-Identifier: MIT
// Fitting text to a width, by a table of texts and what becomes of them.
#include "font_files.h"

#include <cstdlib>
#include <gtest/gtest.h>

namespace {

// Space advance 4, every letter 5 wide with an advance of 6: two letters take 11.
cbf::Font LetterFont() {
    cbf::Font font;
    font.fallback = {5, 1, 0, 1, 6, {1, 1, 1, 1, 1}};
    font.glyphs[' '].advance = 4;
    font.glyphs['\t'].advance = 9;
    font.glyphs['z'] = {5, 1, 0, 1, -6, {1, 1, 1, 1, 1}}; // back over the letter before it
    return font;
}

TEST(Fitting, BreaksBeforeWordsThatOverflow) {
    const struct {
        std::string text;
        int width;
        std::string fitted;
    } cases[] = {
        // clang-format off
        {"ab", 20, "ab"},                         {"ab cd ef", 20, "ab \n- cd \n- ef"},
        {"ab cd ef", 26, "ab cd \n- ef"},         {"abcdef gh", 20, "\n- abcdef \n- gh"},
        {"ab  cd", 100, "ab  cd"},                {"ab cd   ef", 20, "ab \n- cd \n- ef"},
        {"ab\ncd", 11, "ab\ncd"},                 {"ab cd\nef", 20, "ab \n- cd\nef"},
        {"ab\tcd", 31, "ab\tcd"},                 {"ab\tcd", 30, "ab\t\n- cd"},
        {"ab    ", 20, "ab   \n-  "},             {"\x80", 20, ""},
        {"ab\xE2\x82", 20, "ab"},                 {"ab\xC0\x80" "cd", 99, "ab"},
        {"ab\xC0\xA0" "cd", 20, "ab\xC0\xA0\n- cd"}, {"a", -1, "\n- a"},
        {"\n\n", -1, "\n- \n\n- \n\n- "},        {"azb cd", 25, "azb \n- cd"},
        // clang-format on
    };
    const FontPtr font = Load(cbf::WriteFont(LetterFont()).bytes);
    for (const auto &c : cases) {
        const std::unique_ptr<char, decltype(&free)> fitted(
            OrnMinRenderFixTextWidth(nullptr, font.get(), c.text.c_str(), c.width), free);
        ASSERT_NE(fitted, nullptr);
        EXPECT_EQ(fitted.get(), c.fitted) << testing::PrintToString(c.text) << " in " << c.width;
    }
    EXPECT_EQ(OrnMinRenderFixTextWidth(nullptr, font.get(), "", 9), nullptr);
}

} // namespace
