// SPDX-License-Identifier: MIT
// Pictures of scripts: what PBM files mean, and how a picture with transparent parts meets a frame.
#include "overlay/colour.h"
#include "overlay/messages.h"
#include "overlay/pbm.h"
#include "overlay/still.h"

#include <gtest/gtest.h>
#include <random>
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

// Wherever it lies, odd corners and negative ones too: pixels that are at least half opaque, and
// chroma of samples of which half the pixels or more are, in the mean of these pixels.
TEST(OverlayPictures, Stills) {
    constexpr int32_t kWidth = 13, kHeight = 9, kStride = 16;
    constexpr size_t kLumaBytes = size_t{kStride} * kHeight;
    std::mt19937 random(1);
    for (int step = 0; step < 500; ++step) {
        const auto within = [&random](int32_t least, int32_t count) {
            return least + static_cast<int32_t>(random() % static_cast<uint32_t>(count));
        };
        overlay::Pixels pixels{within(1, 17), within(1, 12), {}};
        constexpr uint8_t kAlphas[] = {0, 127, 128, 255};
        const auto size = static_cast<size_t>(4 * pixels.width * pixels.height);
        for (size_t i = 0; i < size; ++i)
            pixels.rgba.push_back(i % 4 == 3 ? kAlphas[random() % 4]
                                             : static_cast<uint8_t>(random()));
        const overlay::ColourSpace colours{
            step % 2 ? overlay::Range::Limited : overlay::Range::Full,
            step % 3 ? overlay::Matrix::Bt601 : overlay::Matrix::Bt709};
        overlay::Still still(pixels);
        still.Mix(colours);
        const int32_t left = within(-20, 36), top = within(-14, 26);
        std::vector<uint8_t> bytes(kStride * (kHeight + 5), 7), expected = bytes;
        OrnMinRenderImage image{0, kWidth, kHeight, kStride, bytes.data(), 0, nullptr};
        if (step % 4)
            image.uvPlane = bytes.data() + kLumaBytes;
        still.Draw(image, {left, top});
        const auto at = [&](int32_t x, int32_t y) {
            return &pixels.rgba[static_cast<size_t>(4 * (y * pixels.width + x))];
        };
        for (int32_t y = 0; y < pixels.height; ++y)
            for (int32_t x = 0; x < pixels.width; ++x) {
                const uint8_t *p = at(x, y);
                const int32_t toX = left + x, toY = top + y;
                if (p[3] >= 128 && toX >= 0 && toX < kWidth && toY >= 0 && toY < kHeight)
                    expected[static_cast<size_t>(toY * kStride + toX)] =
                        overlay::ColourOf(uint32_t(p[0] << 16 | p[1] << 8 | p[2]), colours).y;
            }
        for (int32_t row = 0; row < (pixels.height + 1) / 2; ++row)
            for (int32_t column = 0; column < (pixels.width + 1) / 2; ++column) {
                uint32_t sums[3] = {}, count = 0, all = 0;
                for (int32_t y = 2 * row; y < pixels.height && y < 2 * row + 2; ++y)
                    for (int32_t x = 2 * column; x < pixels.width && x < 2 * column + 2; ++x, ++all)
                        if (at(x, y)[3] >= 128 && ++count)
                            for (size_t i = 0; i < 3; ++i)
                                sums[i] += at(x, y)[i];
                const int32_t toX = (left & ~1) + 2 * column, toY = (top & ~1) / 2 + row;
                if (!image.uvPlane || 2 * count < all || toX < 0 || toX >= kWidth || toY < 0 ||
                    toY >= (kHeight + 1) / 2)
                    continue;
                uint32_t rgb = 0;
                for (const uint32_t sum : sums)
                    rgb = rgb << 8 | (2 * sum + count) / (2 * count);
                const OrnMinRenderColour colour = overlay::ColourOf(rgb, colours);
                uint8_t *sample = &expected[kLumaBytes + static_cast<size_t>(toY * kStride + toX)];
                sample[0] = colour.u;
                sample[1] = colour.v;
            }
        ASSERT_EQ(bytes, expected) << "step " << step;
    }
}
