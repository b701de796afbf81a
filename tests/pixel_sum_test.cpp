// SPDX-License-Identifier: MIT
// One constant for each family of calls: the bytes of a few thousand random drawings, summed up.
// Every compiler, optimisation level, machine and set of instructions must reproduce them; this
// file is built once for each set.
#include "font_files.h"
#include "frame.h"
#include "kernels/kernels.h"

namespace {

class PixelSums : public testing::Test {
    void SetUp() override {
        if (!orn::kernels::Has(orn::kernels::Set::ORN_TESTED_SET))
            GTEST_SKIP() << "this processor lacks the set";
    }
};

// A generator of its own, since the library's distributions differ between implementations.
struct Random {
    uint64_t state;
    uint32_t Next() {
        state = state * 6364136223846793005u + 1442695040888963407u;
        return uint32_t(state >> 33);
    }
    int Between(int first, int last) {
        return first + int(Next() % uint32_t(last - first + 1));
    }
    // Mostly on the frame or near it, sometimes far away.
    int Coordinate() {
        const int far[] = {INT32_MIN, INT32_MAX, -65537, 65536, 1 << 30};
        return Next() % 24 ? Between(-40, 240) : far[Next() % 5];
    }
    OrnMinRenderPoint Point() {
        const int x = Coordinate();
        return {x, Coordinate()};
    }
    OrnMinRenderRect Rect() {
        const auto a = Point(), b = Point();
        return {a.x, a.y, b.x, b.y};
    }
    OrnMinRenderColour Colour() {
        const uint32_t bits = Next();
        return {uint8_t(bits), uint8_t(bits >> 8), uint8_t(bits >> 16)};
    }
};

void Add(uint64_t *sum, const std::vector<uint8_t> &bytes) {
    for (const uint8_t byte : bytes)
        *sum = (*sum ^ byte) * 1099511628211u; // FNV-1a
}

// Draws many times over one frame; its last state sums up all of them.
template <class Draw> uint64_t Sum(int count, Draw draw) {
    uint64_t sum = 14695981039346656037u;
    for (const int odd : {0, 1}) {
        Frame frame(200 + odd, 150 + odd, 3, 10);
        Random random = {uint64_t(odd)};
        for (int i = 0; i < count; ++i) {
            draw(&frame.image, random, i);
            if (i % 64 == 0) {
                Add(&sum, frame.luma);
                Add(&sum, frame.chroma);
            }
        }
        Add(&sum, frame.luma);
        Add(&sum, frame.chroma);
    }
    return sum;
}

TEST_F(PixelSums, LinesAndFrames) {
    EXPECT_EQ(
        Sum(4000,
            [](Image image, Random &random, int i) {
                const auto rect = random.Rect();
                const auto colour = random.Colour();
                const int style = random.Between(0, 2);
                const auto [a, b, c, d] = rect;
                if (i % 4 == 0)
                    OrnMinRenderDrawLineYUV420SP(Context(), image, {a, b}, {c, d}, colour, style);
                else if (i % 4 == 1)
                    OrnMinRenderDrawFrameYUV420SP(Context(), image, &rect, colour, style);
                else if (i % 4 == 2)
                    OrnMinRenderDrawHLineY8(Context(), image, a, b, c, colour.y, style);
                else
                    OrnMinRenderDrawLineY8(Context(), image, {a, b}, {c, d}, colour.y, style);
            }),
        16333184646513324296u);
}

TEST_F(PixelSums, Shapes) {
    EXPECT_EQ(
        Sum(3000,
            [](Image image, Random &random, int i) {
                const auto rect = random.Rect();
                const auto colour = random.Colour();
                const OrnMinRenderPoint radii = {random.Between(-1, 60), random.Between(-1, 60)};
                if (i % 5 == 0)
                    OrnMinRenderFillRectYUV420SP(Context(), image, &rect, colour);
                else if (i % 5 == 1)
                    OrnMinRenderDrawEllipseYUV420SP(Context(), image, &rect, colour);
                else if (i % 5 == 2)
                    OrnMinRenderFillEllipseYUV420SP(Context(), image, &rect, colour);
                else if (i % 5 == 3)
                    OrnMinRenderDrawRoundRectYUV420SP(Context(), image, &rect, &radii, colour);
                else
                    OrnMinRenderFillRoundRectYUV420SP(Context(), image, &rect, &radii, colour);
            }),
        5982071921835769588u);
}

TEST_F(PixelSums, Polygons) {
    EXPECT_EQ(Sum(2000,
                  [](Image image, Random &random, int) {
                      std::vector<OrnMinRenderPoint> points(size_t(random.Between(3, 12)));
                      for (auto &point : points)
                          point = random.Point();
                      OrnMinRenderFillPolygonYUV420SP(Context(), image, points.data(),
                                                      points.size(), random.Colour());
                  }),
              2512258819539507214u);
}

TEST_F(PixelSums, Pictures) {
    EXPECT_EQ(Sum(2000,
                  [](Image image, Random &random, int i) {
                      std::vector<uint32_t> words(60);
                      for (auto &word : words)
                          word = random.Next() << 1 ^ random.Next();
                      const auto rect = random.Rect();
                      const auto colour = random.Colour();
                      const int width = random.Between(1, 96), height = random.Between(1, 20);
                      Frame source(90, 70);
                      memset(source.luma.data(), colour.u, source.luma.size());
                      if (i % 3 == 0)
                          OrnMinRenderBltYUV420SP(image, rect, &source.image, random.Point());
                      else if (i % 3 == 1)
                          OrnMinRenderDrawBitmapYUV420SP(image, &rect, width, height, words.data(),
                                                         colour);
                      else
                          OrnMinRenderDrawBitmapSemiTransparentYUV420SP(image, &rect, width, height,
                                                                        words.data(), colour);
                  }),
              8458728072006983865u);
}

TEST_F(PixelSums, Text) {
    Random glyphs = {99};
    cbf::Font source;
    source.lineHeight = 17;
    for (uint32_t c = 32; c < 127; ++c) {
        cbf::Glyph &glyph = c == 32 ? source.fallback : source.glyphs[c];
        glyph = {glyphs.Between(0, c % 9 ? 20 : 120), glyphs.Between(0, 24), 0, 15, 0, {}};
        glyph.advance = glyphs.Between(2, 22);
        for (int i = 0; i < glyph.width * glyph.height; ++i)
            glyph.pixels.push_back(glyphs.Next() % 3 == 0);
    }
    const FontPtr font = Load(cbf::WriteFont(source).bytes);
    EXPECT_EQ(Sum(3000,
                  [&](Image image, Random &random, int i) {
                      std::string text;
                      for (int n = random.Between(0, 9); n > 0; --n)
                          text += random.Next() % 9 ? char(random.Between(32, 127)) : '\n';
                      OrnMinRenderSetFontDirection(font.get(), random.Between(0, 4));
                      auto pen = random.Point();
                      const auto colour = random.Colour();
                      if (i % 2)
                          OrnMinRenderDrawTextY8(nullptr, image, font.get(), text.c_str(), &pen, 9,
                                                 colour.y);
                      else
                          OrnMinRenderDrawOutlineTextY8(nullptr, image, font.get(), text.c_str(),
                                                        &pen, 9, colour.u, colour.y);
                  }),
              6707407915785743887u);
}

} // namespace
