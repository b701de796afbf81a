// SPDX-License-Identifier: MIT
// Polygons against a naive reference, which counts for each pixel how many crossings lie at or left
// of it; and the order and number of the crossings.
#include "frame.h"
#include "shapes_polygon.h"

#include <algorithm>
#include <climits>
#include <cstdlib>

using namespace orn;

namespace {

std::vector<Int> RowCrossings(const std::vector<OrnMinRenderPoint> &points, Int y) {
    std::vector<Int> xs;
    for (size_t i = 0, n = points.size(); i < n; ++i) {
        const auto a = points[i], b = points[(i + 1) % n], next = points[(i + 2) % n];
        if (a.y == y)
            xs.push_back(a.x);
        if (b.y == y && (a.y > b.y ? b.y < next.y : b.y >= next.y))
            xs.push_back(b.x);
        const auto top = a.y < b.y ? a : b, bottom = a.y < b.y ? b : a;
        if (y <= top.y || y >= bottom.y)
            continue;
        const Int dy = Int{bottom.y} - top.y, dx = Int{bottom.x} - top.x;
        const auto travelled = uint64_t(y - top.y) * uint64_t(std::abs(dx)),
                   half = uint64_t(dy / 2);
        const Int m =
            travelled <= half ? 0 : Int((travelled - half + uint64_t(dy) - 1) / uint64_t(dy));
        xs.push_back(top.x + (dx < 0 ? -m : m));
    }
    return xs;
}

bool InPolygon(const std::vector<OrnMinRenderPoint> &points, int w, int h, Int x, Int y) {
    if (x >= w || y >= h)
        return false;
    const auto xs = RowCrossings(points, y);
    EXPECT_EQ(xs.size() % 2, 0u);
    return std::count_if(xs.begin(), xs.end(), [=](Int c) { return c <= x; }) % 2 == 1;
}

testing::AssertionResult FillsPolygon(const std::vector<OrnMinRenderPoint> &points, int w, int h,
                                      unsigned planes) {
    auto halved = points;
    for (auto &p : halved)
        p = {p.x >> 1, p.y >> 1};
    auto result = Draws(
        w, h, planes,
        [&](auto *image) {
            OrnMinRenderFillPolygonYUV420SP(Context(), image, points.data(), points.size(), kInk);
        },
        [&](Int x, Int y) { return InPolygon(points, w, h, x, y); },
        [&](Int cx, Int cy) { return InPolygon(halved, w / 2, h / 2, cx, cy); });
    if (!result)
        for (const auto &p : points)
            result << " (" << p.x << "," << p.y << ")";
    return result;
}

TEST(Polygons, MatchTheReferenceForAllSmallTriangles) {
    // Coordinates -1..5, on a frame of 4 x 5.
    const auto point = [](Int i) { return OrnMinRenderPoint{int(i % 7 - 1), int(i / 7 - 1)}; };
    ForAll({Range(0, 48), Range(0, 48), Range(0, 48)}, [&](const Ints &v) {
        ASSERT_TRUE(FillsPolygon({point(v[0]), point(v[1]), point(v[2])}, 4, 5, 3));
    });
}

TEST(Polygons, MatchTheReferenceForRandomOutlines) {
    std::mt19937 random(11);
    const Int far[] = {INT_MIN, INT_MAX, 1 << 30, -(1 << 30), 65536, -40000};
    for (int i = 0; i < 4000; ++i) {
        // Few edges are walked in another way than many.
        std::vector<OrnMinRenderPoint> points(2 + random() % (i % 7 ? 9 : 90));
        for (auto &p : points) {
            p = {static_cast<int>(random() % 50) - 8, static_cast<int>(random() % 44) - 8};
            if (random() % 8 == 0)
                p.x = static_cast<int>(far[random() % 6]);
            if (random() % 8 == 0)
                p.y = static_cast<int>(far[random() % 6]);
            if (random() % 6 == 0)
                p = points[0]; // repeated vertices
        }
        if (i % 21 == 0) // rows with two crossings, of many edges
            std::sort(points.begin(), points.end(), [](auto &a, auto &b) { return a.y < b.y; });
        ASSERT_TRUE(FillsPolygon(points, 33, 26, i % 4)) << "case " << i;
    }
}

// Planes that end within a few rows of the limit, each by itself.
TEST(Polygons, DrawWithFewerThan4096CrossingsAPlane) {
    std::mt19937 random(3);
    int few = 0;
    for (int i = 0; i < 2000; ++i) {
        const int top = i % 3 ? 0 : 1500, shift = i % 2;
        std::vector<OrnMinRenderPoint> points(20 + random() % 60), list(4096);
        for (auto &p : points) {
            const int n = int(&p - &points[0]), toAndFro = n % 2 ? 9999 : -9999;
            const int y = i % 16 == 14 ? 110 * n : i % 16 ? int(random() % 40 * 7) - 30 : toAndFro;
            p = {int(random() % 90), top + y};
        }
        OrnMinRenderImage image = {};
        image.width = 90 << shift;
        size_t crossings = 0;
        for (; crossings < 4080 + size_t(i % 16) && image.height < 3600; ++image.height)
            crossings += RowCrossings(points, image.height).size();
        image.height <<= shift;
        few += crossings < 4096;
        for (auto &p : points)
            p.y *= 1 << shift;
        ASSERT_EQ(FillPolygonPlane(list.data(), &image, points.data(), points.size(), shift) > 0,
                  crossings < 4096);
    }
    EXPECT_NEAR(few, 1000, 700);
}

TEST(Polygons, CrossingsComeInTheOrderOfTheGeneralSort) {
    std::mt19937 random(5);
    for (int i = 0; i < 2000; ++i) {
        std::vector<OrnMinRenderPoint> outline(3 + random() % (i % 9 ? 12 : 900)), crossings(4096);
        for (auto &p : outline)
            p = {int(random() % 120) - 10, int(random() % (i % 7 ? 100 : 3)) - 1};
        const Frame frame(100, 80, 0);
        crossings.resize(size_t(FillPolygonPlane(crossings.data(), &frame.image, outline.data(),
                                                 outline.size(), i % 2)));
        if (crossings.empty())
            continue;
        auto sorted = crossings;
        qsort(sorted.data(), sorted.size(), sizeof sorted[0], ComparePoints);
        ASSERT_EQ(memcmp(crossings.data(), sorted.data(), sorted.size() * sizeof sorted[0]), 0);
    }
}

} // namespace
