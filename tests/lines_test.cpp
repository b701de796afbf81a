// Lines, frames, fills, spans and polygons against naive per-pixel references, over all small
// worlds: frames of a few pixels, coordinates a few pixels beyond them.
#include "frame.h"
#include "lines.h"
#include "shapes.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdlib>

namespace {

using Int = int64_t;

const int kSides[] = {1, 2, 3, 4, 6, 7};
const int kStyles[] = {0, 1, 2, -1};

bool Dash(Int along, int style, Int bit) {
    return style == 0 || (style == 1 && (along & bit));
}

// Half-open, ordered and clamped.
struct Interval {
    Int first, end;
    Interval(Int a, Int b, Int size)
        : first(std::clamp<Int>(std::min(a, b), 0, size)),
          end(std::clamp<Int>(std::max(a, b), 0, size)) {
    }
    bool Has(Int v) const {
        return v >= first && v < end;
    }
    bool HasHalved(Int v) const {
        return v >= first / 2 && v < end / 2;
    }
};

struct Predicate {
    std::function<bool(Int, Int)> luma, chroma;
};

Predicate HLine(int w, int h, Int x0, Int x1, Int y, int style, bool chromaLine) {
    const Interval columns(x0, x1, w);
    const bool oneRow = style == 1 && !chromaLine;
    return {[=](Int px, Int py) {
                return (py == y || (py == y + 1 && !oneRow)) && columns.Has(px) &&
                       Dash(px, style, 8);
            },
            [=](Int cx, Int cy) {
                return chromaLine && y >= 0 && y < h && cy == y / 2 && columns.HasHalved(cx) &&
                       Dash(cx, style, 4);
            }};
}

Predicate VLine(int w, int h, Int x, Int y0, Int y1, int style, bool chromaLine) {
    const bool visible = x >= 0 && x < w - 1 && (chromaLine || y0 < y1);
    const Interval rows(y0, y1, h);
    return {[=](Int px, Int py) {
                return visible && (px == x || px == x + 1) && rows.Has(py) && Dash(py, style, 8);
            },
            [=](Int cx, Int cy) {
                return chromaLine && visible && cx == x / 2 && rows.HasHalved(cy) &&
                       Dash(cy, style, 4);
            }};
}

Predicate Either(std::vector<Predicate> parts) {
    return {[=](Int x, Int y) {
                return std::any_of(parts.begin(), parts.end(),
                                   [=](const Predicate &p) { return p.luma(x, y); });
            },
            [=](Int x, Int y) {
                return std::any_of(parts.begin(), parts.end(),
                                   [=](const Predicate &p) { return p.chroma(x, y); });
            }};
}

TEST(AxisAlignedLines, MatchTheReferenceInAllSmallWorlds) {
    for (int w : kSides)
        for (int h : kSides)
            for (int a = -2; a <= 9; ++a)
                for (int b = -2; b <= 9; ++b)
                    for (int c = -3; c <= 8; ++c)
                        for (int style : kStyles) {
                            const unsigned planes = static_cast<unsigned>(a + b + c + 9) % 4;
                            auto *context = Context();
                            const auto check = [&](auto draw, const Predicate &p) {
                                return Draws(w, h, planes, draw, p.luma, p.chroma)
                                       << " a " << a << " b " << b << " c " << c << " style "
                                       << style;
                            };
                            ASSERT_TRUE(check(
                                [&](auto *image) {
                                    OrnMinRenderDrawHLineY8(context, image, a, b, c, 200, style);
                                },
                                HLine(w, h, a, b, c, style, false)));
                            ASSERT_TRUE(check(
                                [&](auto *image) {
                                    OrnMinRenderDrawHLineY(context, image, a, b, c, 200, style);
                                },
                                HLine(w, h, a, b, c, style, false)));
                            ASSERT_TRUE(check(
                                [&](auto *image) {
                                    OrnMinRenderDrawHLineYUV420SP(context, image, a, b, c, kInk,
                                                                  style);
                                },
                                HLine(w, h, a, b, c, style, true)));
                            ASSERT_TRUE(check(
                                [&](auto *image) {
                                    OrnMinRenderDrawVLineY8(nullptr, image, c, a, b, 200, style);
                                },
                                VLine(w, h, c, a, b, style, false)));
                            ASSERT_TRUE(check(
                                [&](auto *image) {
                                    OrnMinRenderDrawVLineYUV420SP(nullptr, image, c, a, b, kInk,
                                                                  style);
                                },
                                VLine(w, h, c, a, b, style, true)));
                        }
}

TEST(AxisAlignedLines, DashesFollowTheFrameNotTheLine) {
    for (int from : {0, 3, 9}) {
        const auto h = HLine(40, 20, from, 40, 5, 1, true);
        EXPECT_TRUE(Draws(
            40, 20, 3,
            [&](auto *image) {
                OrnMinRenderDrawHLineYUV420SP(Context(), image, from, 40, 5, kInk, 1);
            },
            h.luma, h.chroma));
        const auto v = VLine(20, 40, 5, 40, from, 1, true);
        EXPECT_TRUE(Draws(
            20, 40, 3,
            [&](auto *image) {
                OrnMinRenderDrawVLineYUV420SP(nullptr, image, 5, 40, from, kInk, 1);
            },
            v.luma, v.chroma));
    }
}

TEST(FramesAndFills, MatchTheReferenceInAllSmallWorlds) {
    const Int limits[] = {INT_MIN, -2, -1, 0, 1, 2, 4, 5, 8, INT_MAX};
    for (int w : {1, 4, 7})
        for (int h : {1, 3, 6})
            for (Int l : limits)
                for (Int t : limits)
                    for (Int r : limits)
                        for (Int b : limits) {
                            const int style = static_cast<int>((l + t + r + b) & 3);
                            const unsigned planes = static_cast<unsigned>(l + r) % 3 + 1;
                            const OrnMinRenderRect rect = {int(l), int(t), int(r), int(b)};
                            const auto frame = Either({HLine(w, h, l, r, t, style, true),
                                                       HLine(w, h, l, r, b - 1, style, true),
                                                       VLine(w, h, l, t, b + 1, style, true),
                                                       VLine(w, h, r - 1, t, b + 1, style, true)});
                            const Interval columns(l, r, w), rows(t, b, h);
                            const auto where =
                                testing::PrintToString(std::vector<Int>{l, t, r, b, style});
                            ASSERT_TRUE(Draws(
                                w, h, planes,
                                [&](auto *image) {
                                    OrnMinRenderDrawFrameYUV420SP(Context(), image, &rect, kInk,
                                                                  style);
                                },
                                frame.luma, frame.chroma))
                                << where;
                            const auto filled = [&](Int x, Int y) {
                                return columns.Has(x) && rows.Has(y);
                            };
                            ASSERT_TRUE(Draws(
                                w, h, planes,
                                [&](auto *image) {
                                    OrnMinRenderFillRectYUV420SP(Context(), image, &rect, kInk);
                                },
                                filled,
                                [&](Int cx, Int cy) {
                                    return filled(2 * cx, 2 * cy) || filled(2 * cx + 1, 2 * cy) ||
                                           filled(2 * cx, 2 * cy + 1) ||
                                           filled(2 * cx + 1, 2 * cy + 1);
                                }))
                                << where;
                            ASSERT_TRUE(Draws(
                                w, h, planes,
                                [&](auto *image) {
                                    OrnMinRenderFillRectY8(Context(), image, &rect, kInk.y);
                                },
                                filled, NoInk))
                                << where;
                        }
}

TEST(FramesAndFills, LumaFrameIsFourLumaLines) {
    const OrnMinRenderRect rect = {1, 1, 19, 18};
    for (int style : kStyles) {
        const auto p =
            Either({HLine(22, 20, 1, 19, 1, style, false), HLine(22, 20, 1, 19, 17, style, false),
                    VLine(22, 20, 1, 1, 19, style, false), VLine(22, 20, 18, 1, 19, style, false)});
        EXPECT_TRUE(Draws(
            22, 20, 3,
            [&](auto *image) { OrnMinRenderDrawFrameY8(Context(), image, &rect, kInk.y, style); },
            p.luma, p.chroma));
    }
}

// ---- Sloped lines: each step's minor coordinate in closed form ----

Int CeilDiv(Int a, Int b) {
    return a <= 0 ? 0 : (a + b - 1) / b;
}

Predicate SlopedLine(int w, int h, OrnMinRenderPoint p0, OrnMinRenderPoint p1, int style) {
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
    for (int w : kSides)
        for (int h : {1, 2, 5, 6})
            for (int x0 = -3; x0 <= 8; ++x0)
                for (int y0 = -3; y0 <= 7; ++y0)
                    for (int x1 = -3; x1 <= 8; ++x1)
                        for (int y1 = -3; y1 <= 7; ++y1) {
                            const auto p = SlopedLine(w, h, {x0, y0}, {x1, y1}, 0);
                            ASSERT_TRUE(Draws(
                                w, h, 3,
                                [&](auto *image) {
                                    OrnMinRenderDrawLineYUV420SP(nullptr, image, {x0, y0}, {x1, y1},
                                                                 kInk, 0);
                                },
                                p.luma, p.chroma))
                                << x0 << ' ' << y0 << ' ' << x1 << ' ' << y1;
                        }
}

TEST(SlopedLines, MatchTheReferenceOnLargerFrames) {
    std::mt19937 random(7);
    const auto near = [&] { return static_cast<int>(random() % 90) - 20; };
    for (int i = 0; i < 3000; ++i) {
        const OrnMinRenderPoint p0 = {near(), near()}, p1 = {near(), near()};
        const int style = kStyles[random() % 3];
        const unsigned planes = random() % 4;
        const auto p = SlopedLine(61, 48, p0, p1, style);
        const auto check = [&](auto draw, auto chroma) {
            return Draws(61, 48, planes, draw, p.luma, chroma)
                   << i << ": " << p0.x << ' ' << p0.y << ' ' << p1.x << ' ' << p1.y;
        };
        ASSERT_TRUE(check(
            [&](auto *image) { OrnMinRenderDrawLineYUV420SP(nullptr, image, p0, p1, kInk, style); },
            p.chroma));
        ASSERT_TRUE(check(
            [&](auto *image) { OrnMinRenderDrawLineY8(nullptr, image, p0, p1, kInk.y, style); },
            NoInk));
    }
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
        {{-5, 5}, {5, -20}, 8, 8, false, {}, {}},
        {{9, 9}, {9, 9}, 8, 8, false, {}, {}},
        {{INT_MIN, INT_MIN}, {INT_MAX, INT_MAX}, 1917, 1078, true, {0, 0}, {1078, 1078}},
        {{INT_MIN, 0}, {INT_MAX, 7}, 99, 99, true, {0, 3}, {99, 3}},
        {{INT_MAX, 1 - INT_MAX}, {1 - INT_MAX, INT_MAX}, 99, 99, true, {1, 0}, {0, 1}},
        {{INT_MAX, 1 - INT_MAX}, {1 - INT_MAX, INT_MAX}, 99, 99, true, {1, 0}, {0, 1}},
        {{INT_MAX, INT_MIN}, {INT_MIN, INT_MAX}, 99, 99, false, {}, {}},
        {{INT_MIN, INT_MAX}, {INT_MAX, INT_MAX}, 99, 99, false, {}, {}},
        {{0, 0}, {0, 0}, -1, 5, false, {}, {}},
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

// ---- Polygons: a pixel is inside when an odd number of crossings lies at or left of it ----

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
    constexpr int kSide = 7; // coordinates -1..5, on a frame of 4 x 5
    const auto point = [](int i) { return OrnMinRenderPoint{i % kSide - 1, i / kSide - 1}; };
    for (int a = 0; a < kSide * kSide; ++a)
        for (int b = 0; b < kSide * kSide; ++b)
            for (int c = 0; c < kSide * kSide; c += 1 + (a + b) % 2)
                ASSERT_TRUE(FillsPolygon({point(a), point(b), point(c)}, 4, 5, 3));
}

TEST(Polygons, MatchTheReferenceForRandomOutlines) {
    std::mt19937 random(11);
    const Int far[] = {INT_MIN, INT_MAX, 1 << 30, -(1 << 30), 65536, -40000};
    for (int i = 0; i < 4000; ++i) {
        std::vector<OrnMinRenderPoint> points(3 + random() % 9);
        for (auto &p : points) {
            p = {static_cast<int>(random() % 50) - 8, static_cast<int>(random() % 44) - 8};
            if (random() % 8 == 0)
                p.x = static_cast<int>(far[random() % 6]);
            if (random() % 8 == 0)
                p.y = static_cast<int>(far[random() % 6]);
            if (random() % 6 == 0)
                p = points[0]; // repeated vertices
        }
        ASSERT_TRUE(FillsPolygon(points, 33, 26, i % 4)) << "case " << i;
    }
}

TEST(Polygons, DrawWithFewerThan4096CrossingsAPlane) {
    for (const int height : {2045, 2046}) {
        const OrnMinRenderPoint points[] = {{0, 0}, {10, 0}, {10, height}, {0, height}};
        Frame frame(12, 2100);
        OrnMinRenderFillPolygonYUV420SP(Context(), &frame.image, points, 4, kInk);
        EXPECT_EQ(frame.Y(0, 0) == kInk.y, height == 2045);
        EXPECT_EQ(frame.Y(9, 2044) == kInk.y, height == 2045);
        EXPECT_EQ(frame.UV(4, 1021)[1], kInk.v);
    }
    const OrnMinRenderPoint two[] = {{0, 0}, {5, 5}};
    EXPECT_TRUE(Draws(
        8, 8, 3,
        [&](auto *image) { OrnMinRenderFillPolygonYUV420SP(Context(), image, two, 2, kInk); },
        NoInk, NoInk));
}

TEST(Polygons, CrossingsSortLikeTheGeneralSort) {
    std::mt19937 random(5);
    for (int i = 0; i < 400; ++i) {
        const int rows = 1 + static_cast<int>(random() % (i % 5 ? 40 : 2000));
        std::vector<OrnMinRenderPoint> points;
        for (int row = 0; row < rows; ++row)
            for (int k = 0; k < 2; ++k)
                points.push_back({static_cast<int>(random() % 500), 17 + row});
        while (points.size() < 4094 && random() % 50)
            points.push_back({static_cast<int>(random() % 9), 17 + int(random() % unsigned(rows))});
        std::shuffle(points.begin(), points.end(), random);
        auto expected = points;
        qsort(expected.data(), expected.size(), sizeof expected[0], ComparePoints);
        SortCrossings(points.data(), points.size());
        ASSERT_EQ(memcmp(points.data(), expected.data(), points.size() * sizeof points[0]), 0);
    }
}

// ---- Spans, strides and extremes ----

TEST(Spans, CountPointsAndLeaveEmptySpansAlone) {
    const OrnMinRenderScanline spans[] = {{{1, 2}, {3, 2}}, {{2, 0}, {2, 0}}, {{0, 3}, {4, 3}}};
    for (int count : {-2, 0, 2, 4, 6}) {
        const auto ink = [&](Int x, Int y) {
            return (count >= 2 && y == 2 && x >= 1 && x < 3) || (count >= 6 && y == 3 && x < 4);
        };
        EXPECT_TRUE(Draws(
            6, 4, 1, [&](auto *image) { OrnMinRenderDrawScanlinesY8(image, spans, count, kInk.y); },
            ink, NoInk));
        EXPECT_TRUE(Draws(
            12, 8, 2, [&](auto *image) { OrnMinRenderDrawScanlinesUV(image, spans, count, kInk); },
            NoInk, ink));
    }
}

TEST(Spans, ChromaRunsOfEveryLengthPaintWholePairs) {
    for (int first = 0; first < 9; ++first)
        for (int end = first; end <= 60; ++end) {
            const OrnMinRenderScanline span = {{first, 0}, {end, 0}};
            ASSERT_TRUE(Draws(
                120, 2, 2, [&](auto *image) { OrnMinRenderDrawScanlinesUV(image, &span, 2, kInk); },
                NoInk, [&](Int cx, Int) { return cx >= first && cx < end; }));
        }
}

TEST(BuildingBlocks, EmptyRectanglesAndSinglePixels) {
    for (const OrnMinRenderRect rect : {OrnMinRenderRect{3, 1, 3, 5}, OrnMinRenderRect{1, 3, 5, 3}})
        EXPECT_TRUE(Draws(
            8, 8, 3,
            [&](auto *image) {
                OrnMinRenderFillRectY8Impl(Context(), image, &rect, kInk.y);
                OrnMinRenderFillRectUVImpl(Context(), image, &rect, kInk);
            },
            NoInk, NoInk));
    EXPECT_TRUE(Draws(
        9, 7, 3,
        [&](auto *image) {
            OrnMinRenderSetYPixel(image, 5, 1, kInk.y);
            OrnMinRenderSetUVPixel(image, 4, 3, kInk);
        },
        [](Int x, Int y) { return x == 5 && y == 1; },
        [](Int cx, Int cy) { return cx == 4 && cy == 3; }));
}

TEST(Strides, MayBeNegative) {
    Frame up(20, 10), down(20, 10);
    up.image.yPlane += 9 * up.image.stride;
    up.image.uvPlane += 4 * up.image.stride;
    up.image.stride = -up.image.stride;
    const OrnMinRenderRect rect = {3, 1, 15, 7};
    const OrnMinRenderRect mirrored = {3, 3, 15, 9};
    OrnMinRenderFillRectYUV420SP(Context(), &up.image, &rect, kInk);
    OrnMinRenderFillRectY8(Context(), &down.image, &mirrored, kInk.y);
    EXPECT_EQ(up.luma, down.luma);
    EXPECT_EQ(up.chroma[kGuard + 4u * 26 + 2], kInk.u); // row 0, column 1
    EXPECT_EQ(up.chroma[kGuard + 1u * 26 + 2], kInk.u); // row 3
    EXPECT_EQ(up.chroma[kGuard + 0u * 26 + 2], kPaper);
}

// Only the drawn rows of a plane of 6 GiB are touched, so that address space is all it takes.
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

TEST(TallFrames, EveryFillIsComplete) {
    const OrnMinRenderRect rect = {1, -50, 63, 9000};
    EXPECT_TRUE(Draws(
        64, 5000, 3,
        [&](auto *image) { OrnMinRenderFillRectYUV420SP(Context(), image, &rect, kInk); },
        [](Int x, Int) { return x >= 1 && x < 63; }, [](Int, Int) { return true; }));
}

// A call whose work followed its arguments instead of the frame would take minutes here.
TEST(Extremes, CostNoTimeAndStayInside) {
    const auto begin = std::chrono::steady_clock::now();
    const int limits[] = {INT_MIN, INT_MIN + 1, -65536, -1, 0, 9, 65536, INT_MAX - 1, INT_MAX};
    Frame frame(16, 16);
    for (int a : limits)
        for (int b : limits)
            for (int c : limits)
                for (int d : limits) {
                    const OrnMinRenderRect rect = {a, b, c, d};
                    const OrnMinRenderPoint points[] = {{a, b}, {c, d}, {b, c}};
                    OrnMinRenderDrawLineYUV420SP(nullptr, &frame.image, {a, b}, {c, d}, kInk, 0);
                    OrnMinRenderDrawFrameYUV420SP(Context(), &frame.image, &rect, kInk, 1);
                    OrnMinRenderFillRectYUV420SP(Context(), &frame.image, &rect, kInk);
                    OrnMinRenderFillPolygonYUV420SP(Context(), &frame.image, points, 3, kInk);
                }
    for (int width : {INT_MIN, -1, 0})
        for (int height : {INT_MIN, 0, 16}) {
            frame.image.width = width;
            frame.image.height = height;
            const OrnMinRenderRect rect = {INT_MIN, INT_MIN, INT_MAX, INT_MAX};
            OrnMinRenderFillRectYUV420SP(Context(), &frame.image, &rect, kInk);
            OrnMinRenderDrawFrameYUV420SP(Context(), &frame.image, &rect, kInk, 0);
            OrnMinRenderDrawLineYUV420SP(nullptr, &frame.image, {0, 0}, {9, 9}, kInk, 0);
        }
    EXPECT_EQ(std::count(frame.luma.begin(), frame.luma.begin() + kGuard, kPaper), kGuard);
    EXPECT_EQ(std::count(frame.luma.end() - kGuard, frame.luma.end(), kPaper), kGuard);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

// ---- Colours ----

TEST(Colours, FollowTheEquationsAndStayInRange) {
    for (int r = 0; r < 256; r += 3)
        for (int g = 0; g < 256; g += 3)
            for (int b = 0; b < 256; ++b) {
                const uint8_t rgb[3] = {uint8_t(r), uint8_t(g), uint8_t(b)};
                uint8_t yuv[3];
                OrnMinRenderRGB2YUV(yuv, rgb);
                const double exact[3] = {0.299 * r + 0.587 * g + 0.114 * b,
                                         128 - 0.168736 * r - 0.331264 * g + 0.5 * b,
                                         128 + 0.5 * r - 0.418688 * g - 0.081312 * b};
                for (int i = 0; i < 3; ++i)
                    ASSERT_TRUE(yuv[i] <= exact[i] + 0.01 && yuv[i] > exact[i] - 1.01)
                        << r << ' ' << g << ' ' << b << " component " << i;
            }
}

TEST(Colours, ReproduceTheTableAlsoInPlace) {
    const struct {
        uint8_t rgb[3], yuv[3], back[3];
    } cases[] = {{{255, 255, 255}, {254, 128, 128}, {254, 254, 254}},
                 {{0, 0, 0}, {0, 128, 128}, {0, 0, 0}},
                 {{255, 0, 0}, {76, 84, 255}, {254, 1, 0}},
                 {{0, 255, 0}, {149, 43, 21}, {0, 255, 0}},
                 {{0, 0, 255}, {29, 255, 107}, {0, 1, 254}}};
    for (const auto &c : cases) {
        uint8_t triple[3] = {c.rgb[0], c.rgb[1], c.rgb[2]};
        OrnMinRenderRGB2YUV(triple, triple);
        EXPECT_EQ(memcmp(triple, c.yuv, 3), 0) << int(c.rgb[0]);
        OrnMinRenderYUV2RGB(triple, triple);
        EXPECT_EQ(memcmp(triple, c.back, 3), 0) << int(c.rgb[0]);
    }
    const uint8_t yuv[][3] = {{0, 128, 0}, {255, 128, 255}},
                  rgb[][3] = {{0, 92, 0}, {255, 165, 255}};
    for (int i = 0; i < 2; ++i) {
        uint8_t out[3];
        OrnMinRenderYUV2RGB(out, yuv[i]);
        EXPECT_EQ(memcmp(out, rgb[i], 3), 0) << i;
    }
}

} // namespace
