// SPDX-License-Identifier: MIT
// Blits against a naive reference: which pixels are copied, and the chroma that comes with them.
#include "frame.h"

#include <climits>

namespace {

TEST(Blit, MatchesTheReferenceInSmallWorlds) {
    std::mt19937 random(9);
    Frame source(7, 6, 3, 10);
    source.Randomise(random);
    const Ints starts = {-2, -1, 0, 2, 4}, lengths = {-1, 0, 1, 2, 3, 6}, from = {-2, -1, 0, 1, 3};
    ForAll({{1, 4, 5}, starts, starts, lengths, lengths, from, from}, [&](const Ints &v) {
        const int w = int(v[0]), px = int(v[5]), py = int(v[6]);
        const OrnMinRenderRect r = {int(v[1]), int(v[2]), int(v[1] + v[3]), int(v[2] + v[4])};
        Frame drawn(w, 5), expected(w, 5);
        OrnMinRenderBltYUV420SP(&drawn.image, r, &source.image, {px, py});
        int x0 = -1, y0 = 0, width = 0, height = 0; // what is copied
        for (int y = 0; y < 5; ++y)
            for (int x = 0; x < w; ++x) {
                const int sx = x - r.left + px, sy = y - r.top + py;
                if (x < r.left || x >= r.right || y < r.top || y >= r.bottom || sx < 0 || sy < 0 ||
                    sx >= 7 || sy >= 6)
                    continue;
                expected.Y(x, y) = source.Y(sx, sy);
                y0 = x0 < 0 ? y : y0;
                x0 = x0 < 0 ? x : x0;
                width = x - x0 + 1;
                height = y - y0 + 1;
            }
        for (int i = 0; i < height / 2; ++i)
            memcpy(expected.UV(x0 / 2, y0 / 2 + i),
                   source.UV((x0 - r.left + px) / 2, (y0 - r.top + py) / 2 + i), size_t(width));
        ASSERT_TRUE(drawn == expected);
    });
}

TEST(Blit, CopiesRowsWithoutGaps) {
    std::mt19937 random(3);
    Frame source(8, 6, 3, 0), drawn(8, 6, 3, 0);
    source.Randomise(random);
    OrnMinRenderBltYUV420SP(&drawn.image, {0, 0, 8, 6}, &source.image, {0, 0});
    EXPECT_EQ(memcmp(drawn.image.yPlane, source.image.yPlane, 48), 0);
    EXPECT_EQ(memcmp(drawn.image.uvPlane, source.image.uvPlane, 24), 0);
    EXPECT_EQ(drawn.Y(8, 5), kPaper);
}

TEST(Blit, SkipsMissingPlanesAndTakesExtremes) {
    Frame source(6, 6, 1), drawn(6, 6), expected(6, 6);
    memset(source.image.yPlane, 9, 6);
    memset(expected.image.yPlane, 9, 6);
    for (int x : {INT_MIN, INT_MAX})
        OrnMinRenderBltYUV420SP(&drawn.image, {x, x, x, x}, &source.image, {x, x});
    OrnMinRenderBltYUV420SP(&drawn.image, {INT_MIN, 0, INT_MAX, 1}, &source.image, {INT_MIN, 0});
    EXPECT_TRUE(drawn == expected);
}

} // namespace
