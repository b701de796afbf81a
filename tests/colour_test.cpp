// SPDX-License-Identifier: MIT
// Colour conversion against the exact equations, and by a table of known colours.
#include "frame.h"

namespace {

TEST(Colours, FollowTheEquationsAndStayInRange) {
    uint32_t sum = 0; // of every byte, so that no coefficient is one off
    ForAll({Range(0, 51), Range(0, 51), Range(0, 255)}, [&](const Ints &v) {
        const double r = double(v[0] * 5), g = double(v[1] * 5), b = double(v[2]);
        const uint8_t rgb[3] = {uint8_t(r), uint8_t(g), uint8_t(b)};
        uint8_t yuv[3], other[3];
        OrnMinRenderRGB2YUV(yuv, rgb);
        OrnMinRenderYUV2RGB(other, rgb); // any three bytes are a colour either way
        const double exact[3] = {0.299 * r + 0.587 * g + 0.114 * b,
                                 128 - 0.168736 * r - 0.331264 * g + 0.5 * b,
                                 128 + 0.5 * r - 0.418688 * g - 0.081312 * b};
        for (int i = 0; i < 3; ++i)
            ASSERT_TRUE(yuv[i] <= exact[i] + 0.01 && yuv[i] > exact[i] - 1.01) << i;
        sum = sum * 31 + yuv[0] + (yuv[1] << 8) + (yuv[2] << 16);
        sum = sum * 31 + other[0] + (other[1] << 8) + (other[2] << 16);
    });
    EXPECT_EQ(sum, 3386987178u);
}

TEST(Colours, ReproduceTheTableAlsoInPlace) {
    const uint8_t triples[][9] = {// RGB, its YUV, and that back in RGB
                                  {255, 255, 255, 254, 128, 128, 254, 254, 254},
                                  {0, 0, 0, 0, 128, 128, 0, 0, 0},
                                  {255, 0, 0, 76, 84, 255, 254, 1, 0},
                                  {0, 255, 0, 149, 43, 21, 0, 255, 0},
                                  {0, 0, 255, 29, 255, 107, 0, 1, 254}};
    for (const auto &t : triples) {
        uint8_t triple[3] = {t[0], t[1], t[2]};
        OrnMinRenderRGB2YUV(triple, triple);
        EXPECT_EQ(memcmp(triple, t + 3, 3), 0) << int(t[0]);
        OrnMinRenderYUV2RGB(triple, triple);
        EXPECT_EQ(memcmp(triple, t + 6, 3), 0) << int(t[0]);
        OrnMinRenderColour colour; // by its own address
        OrnMinRenderRGB2YUV(&colour, t);
        EXPECT_EQ(memcmp(&colour.y, t + 3, 3), 0) << int(t[0]);
        OrnMinRenderYUV2RGB(triple, &colour);
        EXPECT_EQ(memcmp(triple, t + 6, 3), 0) << int(t[0]);
    }
    const uint8_t clamped[][6] = {{0, 128, 0, 0, 92, 0}, {255, 128, 255, 255, 165, 255}};
    for (const auto &t : clamped) {
        uint8_t rgb[3];
        OrnMinRenderYUV2RGB(rgb, t);
        EXPECT_EQ(memcmp(rgb, t + 3, 3), 0) << int(t[0]);
    }
}

} // namespace
