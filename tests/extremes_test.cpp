// SPDX-License-Identifier: MIT
// Calls of several rooms at the limits of their arguments: coordinates and strides.
#include "frame.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdlib>

namespace {

// A call whose work followed its arguments instead of the frame would take minutes here.
TEST(Extremes, CostNoTimeAndStayInside) {
    const auto begin = std::chrono::steady_clock::now();
    const Ints limits = {INT_MIN, INT_MIN + 1, -65536, -1, 0, 9, 65536, INT_MAX - 1, INT_MAX};
    Frame frame(16, 16);
    OrnMinRenderImage empty[] = {frame.image, frame.image};
    empty[0].width = empty[1].height = INT_MIN; // one is too narrow, one too low
    ForAll({limits, limits, limits, limits}, [&](const Ints &v) {
        const int a = int(v[0]), b = int(v[1]), c = int(v[2]), d = int(v[3]);
        const OrnMinRenderRect rect = {a, b, c, d};
        const OrnMinRenderPoint points[] = {{a, b}, {c, d}, {b, c}};
        OrnMinRenderDrawLineYUV420SP(nullptr, &frame.image, {a, b}, {c, d}, kInk, 0);
        OrnMinRenderDrawLineYUV420SP(nullptr, &empty[a < 0], {a, b}, {c, d}, kInk, 0);
        OrnMinRenderDrawFrameYUV420SP(Context(), &frame.image, &rect, kInk, 1);
        OrnMinRenderFillRectYUV420SP(Context(), &frame.image, &rect, kInk);
        OrnMinRenderFillPolygonYUV420SP(Context(), &frame.image, points, 3, kInk);
    });
    EXPECT_EQ(std::count(frame.luma.begin(), frame.luma.begin() + kGuard, kPaper), kGuard);
    EXPECT_EQ(std::count(frame.luma.end() - kGuard, frame.luma.end(), kPaper), kGuard);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

TEST(Strides, ReachPastTwoGiB) {
    if (sizeof(void *) < 8)
        GTEST_SKIP() << "no room for such a plane";
    const int64_t stride = int64_t{3} << 30;
    std::unique_ptr<uint8_t, decltype(&free)> plane(
        static_cast<uint8_t *>(malloc(static_cast<size_t>(2 * stride + 64))), free);
    if (!plane)
        GTEST_SKIP() << "no address space for 6 GiB";
    OrnMinRenderImage image = {};
    image.width = 64;
    image.height = 3;
    image.stride = stride;
    image.yPlane = image.uvPlane = plane.get();
    uint8_t *last = plane.get() + 2 * stride;
    OrnMinRenderDrawLineY8(nullptr, &image, {0, 1}, {9, 1}, 7, 0);
    OrnMinRenderDrawVLineY8(nullptr, &image, 20, 2, 3, 8, 0);
    OrnMinRenderSetYPixel(&image, 63, 2, 9);
    EXPECT_EQ(last[9], 7);
    EXPECT_EQ(last[20], 8);
    EXPECT_EQ(last[63], 9);
}

} // namespace
