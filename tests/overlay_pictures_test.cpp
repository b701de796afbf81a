// SPDX-License-Identifier: MIT
// Pictures of scripts: what PBM files mean, and how raw frames, bits and copies meet a frame.
#include "overlay/engine.h"
#include "overlay/pbm.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

namespace {

// Width, height and words of a bitmap, or why it is none.
std::string Read(const std::string &content) {
    try {
        const overlay::Bitmap bitmap = overlay::ParsePbm(content);
        std::string told = std::to_string(bitmap.width) + "x" + std::to_string(bitmap.height);
        for (const uint32_t word : bitmap.words) {
            char hex[16];
            std::snprintf(hex, sizeof hex, " %08x", word);
            told += hex;
        }
        return told;
    } catch (const overlay::Failure &failure) {
        return failure.what();
    }
}

} // namespace

TEST(OverlayPictures, Pbm) {
    const std::pair<std::string, std::string> cases[] = {
        {"P1 3 2 101 010", "3x2 a0000000 40000000"},
        {"P1\t1\v1\f1\n", "1x1 80000000"},
        {"P1#3 3 1\n2#\r1#0\n0#\n1#", "2x1 40000000"},
        {"P1 2 2 0110 1 and more", "2x2 40000000 80000000"},
        {"P1 33 2 " + std::string(31, '0') + "11" + std::string(32, '0') + "1",
         "33x2 00000001 80000000 00000000 80000000"},
        {"P1 32 2 " + std::string(32, '0') + std::string(32, '1'), "32x2 00000000 ffffffff"},
        {"P4 9 2\n\xFF\x80\x01\x7F", "9x2 ff800000 01000000"},
        {"P4 8 2 \x20\x0A and more", "8x2 20000000 0a000000"},
        {"P4#c\n1#c\n1\t\x80", "1x1 80000000"},
        {"P4 40 1 \1\x82\3\x84\5", "40x1 01820384 05000000"},
        {"P4 1 1#c\na", "its header must end with one white space, not with a comment"}};
    for (const auto &[content, expected] : cases)
        EXPECT_EQ(Read(content), expected) << content;
    const std::pair<const char *, const char *> refusals[] = {
        // contents between bars
        {"it is no PBM picture (P1 or P4)", "|P|P2 1 1 1"},
        {"its width and height are not numbers from 1 to 32767",
         "P4 32768 1 |P4 1 32768 |P4 99999999999 1 |P1 0 1 1|P1 1 0 1|P1 -1 1 1|P1|P1 1|P1 1 #1 1"},
        {"its width and height are not numbers between white space",
         "P11 1 1|P1 1x1 1|P1 1 1x1|P1\0101 1 1|P1\0161 1 1"},
        {"it is cut short",
         "P4 32767 1 |P1 1 1|P1 1 1 |P1 2 1  1|P1 1 2 1#0|P4 1 1|P4 1 1 |P4 9 2 abc"},
        {"its pixels are not all 0 or 1", "P1 1 1 2|P1 1 1 /"}};
    for (const auto &[reason, contents] : refusals) {
        std::istringstream list(contents);
        for (std::string content; std::getline(list, content, '|');)
            EXPECT_EQ(Read(content), reason) << content;
    }
}

// Three frames of two pixels, a bitmap and a part of the frame.
TEST(OverlayPictures, InFrames) {
    std::string folder = "/tmp/orn_overlay_XXXXXX";
    ASSERT_NE(mkdtemp(folder.data()), nullptr);
    std::ofstream(folder + "/three.raw") << "abcdef";
    std::ofstream(folder + "/bits.pbm") << "P1 2 1 10";
    overlay::Engine engine({});
    const overlay::Errors errors = engine.SetScript("2- picture 1 1 2 1 \"three.raw\"\n"
                                                    "* bitmap 0 2 4 3 white \"bits.pbm\"\n"
                                                    "* copy 4 0 7 2 1 1",
                                                    folder + "/script");
    ASSERT_TRUE(errors.empty()) << errors[0].Message();
    engine.SetFrames({8, 3, false, {}});
    for (const auto &[number, expected] :
         {std::pair(1, "........|....W...|WW......"), {3, "....cd..|.cd.W...|WW......"}}) {
        std::string drawn(24, '.');
        auto *bytes = reinterpret_cast<uint8_t *>(drawn.data());
        engine.Draw({0, 8, 3, 8, bytes, 0, nullptr}, number, {number, 25});
        std::replace(drawn.begin(), drawn.end(), char(254), 'W');
        EXPECT_EQ(drawn.substr(0, 8) + "|" + drawn.substr(8, 8) + "|" + drawn.substr(16), expected);
    }
    std::filesystem::remove_all(folder);
}
