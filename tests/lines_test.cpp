// SPDX-License-Identifier: MIT
// Lines against naive per-pixel references, over all small worlds: frames of a few pixels,
// coordinates a few pixels beyond them; and the clip by a table of what must remain of a segment.
#include "axis_aligned.h"
#include "lines.h"

#include <climits>
#include <cstdlib>

using namespace orn;

namespace {

const Ints kSides = {1, 2, 3, 4, 7, 18};
const Ints kStyles = {0, 1, 2, -1};

TEST(AxisAlignedLines, MatchTheReferenceInAllSmallWorlds) {
    auto *context = Context();
    const Ints ends = {-2, -1, 0, 1, 2, 3, 4, 5, 6, 7, 8, 12, 17, 18, 20};
    ForAll({kSides, {1, 2, 3, 6, 18}, ends, ends, Range(-3, 8), kStyles}, [&](const Ints &v) {
        const Int w = v[0], h = v[1], planes = (v[2] + v[3] + v[4] + 9) % 4;
        const int a = int(v[2]), b = int(v[3]), c = int(v[4]), style = int(v[5]);
        Check(w, h, planes, HLine(w, h, a, b, c, style, false),
              [=](Image i) { OrnMinRenderDrawHLineY8(context, i, a, b, c, kInk.y, style); });
        Check(w, h, planes, HLine(w, h, a, b, c, style, false),
              [=](Image i) { OrnMinRenderDrawHLineY(context, i, a, b, c, kInk.y, style); });
        Check(w, h, planes, HLine(w, h, a, b, c, style, true),
              [=](Image i) { OrnMinRenderDrawHLineYUV420SP(context, i, a, b, c, kInk, style); });
        Check(w, h, planes, VLine(w, h, c, a, b, style, false),
              [=](Image i) { OrnMinRenderDrawVLineY8(nullptr, i, c, a, b, kInk.y, style); });
        Check(w, h, planes, VLine(w, h, c, a, b, style, true),
              [=](Image i) { OrnMinRenderDrawVLineYUV420SP(nullptr, i, c, a, b, kInk, style); });
    });
}

// ---- Sloped lines: each step's minor coordinate in closed form ----

Int CeilDiv(Int a, Int b) {
    return a <= 0 ? 0 : (a + b - 1) / b;
}

Predicate SlopedLine(int w, int h, OrnMinRenderPoint p0, OrnMinRenderPoint p1, Int style) {
    const auto nothing = [](Int, Int) { return false; };
    if (w < 2 || h < 2 || !ClipLine(&p0, &p1, w - 2, h - 2))
        return {nothing, nothing};
    const bool steep = std::abs(p1.y - p0.y) > std::abs(p1.x - p0.x);
    if (steep ? p1.y < p0.y : p1.x < p0.x)
        std::swap(p0, p1);
    const Int major0 = steep ? p0.y : p0.x, major1 = steep ? p1.y : p1.x;
    const Int minor0 = steep ? p0.x : p0.y, minor1 = steep ? p1.x : p1.y;
    const Int length = major1 - major0, rise = std::abs(minor1 - minor0);
    const Int sign = minor1 > minor0 ? 1 : -1;
    const auto minorAt = [=](Int start, Int i) {
        return start + sign * (length ? CeilDiv(i * rise - length / 2, length) : 0);
    };
    return {[=](Int x, Int y) {
                const Int major = steep ? y : x, minor = steep ? x : y;
                const Int at = minorAt(minor0, major - major0);
                return major >= major0 && major <= major1 && (minor == at || minor == at + 1) &&
                       Dash(major, style, 8);
            },
            [=](Int cx, Int cy) {
                const Int major = steep ? cy : cx, minor = steep ? cx : cy;
                return major >= major0 / 2 && major <= major1 / 2 &&
                       minor == minorAt(minor0 / 2, major - major0 / 2) && Dash(major, style, 4);
            }};
}

TEST(SlopedLines, MatchTheReferenceInAllSmallWorlds) {
    const Ints xs = Range(-3, 8), ys = Range(-3, 7);
    ForAll({{1, 2, 3, 5, 7}, {1, 2, 5, 6}, xs, ys, xs, ys}, [](const Ints &v) {
        const int w = int(v[0]), h = int(v[1]);
        const OrnMinRenderPoint p0 = {int(v[2]), int(v[3])}, p1 = {int(v[4]), int(v[5])};
        Check(w, h, 3, SlopedLine(w, h, p0, p1, 0),
              [=](Image i) { OrnMinRenderDrawLineYUV420SP(nullptr, i, p0, p1, kInk, 0); });
    });
}

TEST(SlopedLines, MatchTheReferenceOnLargerFrames) {
    std::mt19937 random(7);
    const auto near = [&] { return static_cast<int>(random() % 90) - 20; };
    ForAll({Range(0, 3000)}, [&](const Ints &v) {
        const OrnMinRenderPoint p0 = {near(), near()}, p1 = {near(), near()};
        const int style = int(kStyles[random() % 3]);
        auto p = SlopedLine(61, 48, p0, p1, style);
        Check(61, 48, v[0] % 4, p,
              [=](Image i) { OrnMinRenderDrawLineYUV420SP(nullptr, i, p0, p1, kInk, style); });
        p.chroma = NoInk;
        Check(61, 48, v[0] % 4, p,
              [=](Image i) { OrnMinRenderDrawLineY8(nullptr, i, p0, p1, kInk.y, style); });
    });
}

// The clip's contract, for every int32: exact intersections, quotients cut toward zero.
TEST(ClipLine, CutsExactlyAndTruncatesTowardZero) {
    struct Case {
        OrnMinRenderPoint p0, p1;
        int xmax, ymax;
        bool visible;
        OrnMinRenderPoint q0, q1;
    };
    const Case cases[] = {
        {{2, 3}, {6, 7}, 8, 8, true, {2, 3}, {6, 7}},
        {{-3, 1}, {-1, 7}, 8, 8, false, {}, {}},
        {{-10, 5}, {10, 5}, 8, 8, true, {0, 5}, {8, 5}},
        {{-4, -4}, {12, 12}, 8, 8, true, {0, 0}, {8, 8}},
        {{0, 0}, {10, 3}, 5, 100, true, {0, 0}, {5, 1}},
        {{10, 10}, {0, -5}, 100, 100, true, {10, 10}, {4, 0}},
        {{INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}, 1917, 1078, true, {0, 0}, {1078, 1078}},
        {{INT_MIN, 0}, {INT_MAX, 7}, 99, 99, true, {0, 3}, {99, 3}},
        {{INT_MAX, 1 - INT_MAX}, {1 - INT_MAX, INT_MAX}, 99, 99, true, {1, 0}, {0, 1}},
        {{INT_MAX, INT_MIN}, {INT_MIN, INT_MAX}, 99, 99, false, {}, {}},
        {{0, 0}, {0, 0}, -1, 5, false, {}, {}},
        {{0, -3}, {0, 9}, 0, 5, true, {0, 0}, {0, 5}},
        {{-3, 0}, {9, 0}, 5, 0, true, {0, 0}, {5, 0}},
    };
    for (const Case &c : cases) {
        OrnMinRenderPoint p0 = c.p0, p1 = c.p1;
        ASSERT_EQ(ClipLine(&p0, &p1, c.xmax, c.ymax), c.visible) << c.p0.x << ' ' << c.p1.x;
        if (c.visible) {
            EXPECT_EQ((std::vector<int>{p0.x, p0.y, p1.x, p1.y}),
                      (std::vector<int>{c.q0.x, c.q0.y, c.q1.x, c.q1.y}));
        }
    }
}

} // namespace
