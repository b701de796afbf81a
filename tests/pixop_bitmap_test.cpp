// SPDX-License-Identifier: MIT
// Scaled bitmaps against a naive reference that samples each pixel by itself.
#include "frame.h"

#include <climits>

namespace {

struct TestBitmap {
    int width, height;
    std::vector<uint32_t> words;
    TestBitmap(int w, int h, std::mt19937 &random) : width(w), height(h) {
        words.resize(size_t((w + 31) / 32 * h));
        for (auto &word : words)
            word = random() % 8 ? uint32_t(random()) : ~0u; // bits past the width, too
    }
    bool Bit(Int c, Int r) const {
        return words[size_t(r * ((width + 31) / 32) + c / 32)] >> (31 - c % 32) & 1;
    }
    // Whether sample (x, y) of a plane is painted for a rectangle in that plane's coordinates.
    bool Paints(const OrnMinRenderRect &rect, Int x, Int y) const {
        const Int dw = Int{rect.right} - rect.left, dh = Int{rect.bottom} - rect.top;
        if (dw <= 0 || dh <= 0 || x < rect.left || x >= rect.right || y < rect.top ||
            y >= rect.bottom)
            return false;
        const Int xs = Int{width} * 65536 / dw, ys = Int{height} * 65536 / dh;
        return Bit((x - rect.left) * xs >> 16, (y - rect.top) * ys >> 16);
    }
};

void CheckBitmap(const TestBitmap &bitmap, const OrnMinRenderRect &rect, int w, int h,
                 unsigned planes) {
    const OrnMinRenderRect halved = {rect.left / 2, rect.top / 2, rect.right / 2, rect.bottom / 2};
    const auto luma = [&](Int x, Int y) { return bitmap.Paints(rect, x, y); };
    const auto chroma = [&](Int x, Int y) { return bitmap.Paints(halved, x, y); };
    ASSERT_TRUE(Draws(
        w, h, planes,
        [&](auto *image) {
            OrnMinRenderDrawBitmapYUV420SP(image, &rect, bitmap.width, bitmap.height,
                                           bitmap.words.data(), kInk);
        },
        luma, chroma));
    ASSERT_TRUE(Draws(
        w, h, planes,
        [&](auto *image) {
            OrnMinRenderDrawBitmapY8(image, &rect, bitmap.width, bitmap.height, bitmap.words.data(),
                                     kInk.y);
        },
        luma, NoInk));
    std::mt19937 random(1);
    Frame drawn(w, h, planes), expected(w, h, planes);
    drawn.Randomise(random);
    expected.luma = drawn.luma;
    expected.chroma = drawn.chroma;
    OrnMinRenderDrawBitmapSemiTransparentYUV420SP(&drawn.image, &rect, bitmap.width, bitmap.height,
                                                  bitmap.words.data(), kInk);
    const auto blend = [](uint8_t &old, int value) { old = uint8_t((old + value) / 2); };
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            if (planes & 1 && luma(x, y))
                blend(expected.Y(x, y), kInk.y);
    for (int cy = 0; cy < ChromaSide(h); ++cy)
        for (int cx = 0; cx < ChromaSide(w); ++cx)
            if (planes & 2 && chroma(cx, cy)) {
                blend(expected.UV(cx, cy)[0], kInk.u);
                blend(expected.UV(cx, cy)[1], kInk.v);
            }
    ASSERT_TRUE(drawn == expected);
}

TEST(Bitmaps, MatchTheReference) {
    std::mt19937 random(21);
    const auto pick = [&](int from, int to) {
        return from + static_cast<int>(random() % unsigned(to - from + 1));
    };
    for (int i = 0; i < 4000; ++i) {
        const TestBitmap bitmap(pick(1, i % 3 ? 9 : 70), pick(1, 9), random);
        const int w = pick(1, 24), h = pick(1, 20);
        const int left = pick(-30, w + 1), top = pick(-9, h);
        const int width = pick(-1, i % 7 ? 40 : 100 * bitmap.width), height = pick(-1, 30);
        SCOPED_TRACE("case " + std::to_string(i));
        CheckBitmap(bitmap, {left, top, left + width, top + height}, w, h, unsigned(i) % 4);
        if (HasFatalFailure())
            return;
    }
    const TestBitmap tall(9, 40, random); // of more rows and samples than become a mask at once
    CheckBitmap(tall, {1, -3, 1619, 90}, 1600, 90, 3);
    EXPECT_EQ(WordWidth, 32);
    const TestBitmap large(32767, 2, random);
    CheckBitmap(large, {-5, 1, 40000, 5}, 30, 9, 3);
    CheckBitmap(large, {INT_MIN, INT_MIN, INT_MAX, INT_MAX}, 30, 9, 3);
}

} // namespace
