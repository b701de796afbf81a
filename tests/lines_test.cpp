// Lines, frames, fills, spans and polygons against naive per-pixel references, over all small
// worlds: frames of a few pixels, coordinates a few pixels beyond them.
#include "frame.h"
#include "lines.h"
#include "pixop.h"
#include "shapes.h"

#include <algorithm>
#include <chrono>
#include <climits>
#include <cstdlib>

namespace {

const Ints kSides = {1, 2, 3, 4, 7, 18};
const Ints kStyles = {0, 1, 2, -1};

bool Dash(Int along, Int style, Int bit) {
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

// Which pixels and chroma samples must be ink.
struct Predicate {
    std::function<bool(Int, Int)> luma, chroma;
};

Predicate HLine(Int w, Int h, Int x0, Int x1, Int y, Int style, bool chromaLine) {
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

Predicate VLine(Int w, Int h, Int x, Int y0, Int y1, Int style, bool chromaLine) {
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

Predicate FrameLines(Int w, Int h, const OrnMinRenderRect &r, Int style, bool chroma) {
    const Int right = Int{r.right} - 1, bottom = Int{r.bottom} - 1;
    const Predicate lines[] = {HLine(w, h, r.left, r.right, r.top, style, chroma),
                               HLine(w, h, r.left, r.right, bottom, style, chroma),
                               VLine(w, h, r.left, r.top, bottom + 2, style, chroma),
                               VLine(w, h, right, r.top, bottom + 2, style, chroma)};
    const std::vector<Predicate> all(std::begin(lines), std::end(lines));
    const auto any = [all](auto member) {
        return [=](Int x, Int y) {
            return std::any_of(all.begin(), all.end(),
                               [=](const Predicate &p) { return (p.*member)(x, y); });
        };
    };
    return {any(&Predicate::luma), any(&Predicate::chroma)};
}

template <class Draw> void Check(Int w, Int h, Int planes, const Predicate &p, Draw draw) {
    ASSERT_TRUE(Draws(int(w), int(h), unsigned(planes), draw, p.luma, p.chroma));
}

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

TEST(FramesAndFills, MatchTheReferenceInAllSmallWorlds) {
    const Ints ends = {INT_MIN, -2, -1, 0, 1, 2, 4, 5, 8, INT_MAX};
    ForAll({{1, 4, 7}, {1, 3, 6}, ends, ends, ends, ends}, [&](const Ints &v) {
        const Int w = v[0], h = v[1], planes = unsigned(v[2] + v[4]) % 3 + 1;
        const OrnMinRenderRect rect = {int(v[2]), int(v[3]), int(v[4]), int(v[5])};
        const int style = int((v[2] + v[3] + v[4] + v[5]) & 3);
        auto *context = Context();
        Check(w, h, planes, FrameLines(w, h, rect, style, true),
              [&](Image i) { OrnMinRenderDrawFrameYUV420SP(context, i, &rect, kInk, style); });
        Check(w, h, planes, FrameLines(w, h, rect, style, false),
              [&](Image i) { OrnMinRenderDrawFrameY8(context, i, &rect, kInk.y, style); });
        const auto filled = [&](Int x, Int y) {
            return Interval(v[2], v[4], w).Has(x) && Interval(v[3], v[5], h).Has(y);
        };
        const auto touched = [&](Int cx, Int cy) {
            return filled(2 * cx, 2 * cy) || filled(2 * cx + 1, 2 * cy) ||
                   filled(2 * cx, 2 * cy + 1) || filled(2 * cx + 1, 2 * cy + 1);
        };
        Check(w, h, planes, {filled, touched},
              [&](Image i) { OrnMinRenderFillRectYUV420SP(context, i, &rect, kInk); });
        Check(w, h, planes, {filled, NoInk},
              [&](Image i) { OrnMinRenderFillRectY8(context, i, &rect, kInk.y); });
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
    for (const int height : {2045, 2046, 2047, 2048, 2099}) {
        const OrnMinRenderPoint points[] = {{0, 0}, {10, 0}, {10, height}, {0, height}};
        Frame frame(12, 2100);
        OrnMinRenderFillPolygonYUV420SP(Context(), &frame.image, points, 4, kInk);
        EXPECT_EQ(frame.Y(0, 0) == kInk.y, height == 2045);
        EXPECT_EQ(frame.Y(9, 2044) == kInk.y, height == 2045);
        EXPECT_EQ(frame.UV(4, 1021)[1], kInk.v);
    }
    const OrnMinRenderPoint two[] = {{0, 0}, {5, 5}};
    Check(8, 8, 3, {NoInk, NoInk},
          [&](Image i) { OrnMinRenderFillPolygonYUV420SP(Context(), i, two, 2, kInk); });
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

// ---- Spans, strides and extremes ----

TEST(Spans, CountPointsAndLeaveEmptySpansAlone) {
    const OrnMinRenderScanline spans[] = {{{1, 2}, {3, 2}}, {{2, 0}, {2, 0}}, {{0, 3}, {4, 3}}};
    for (int count : {-2, 0, 2, 4, 6}) {
        const auto ink = [=](Int x, Int y) {
            return (count >= 2 && y == 2 && x >= 1 && x < 3) || (count >= 6 && y == 3 && x < 4);
        };
        Check(6, 4, 1, {ink, NoInk},
              [&](Image i) { OrnMinRenderDrawScanlinesY8(i, spans, count, kInk.y); });
        Check(12, 8, 2, {NoInk, ink},
              [&](Image i) { OrnMinRenderDrawScanlinesUV(i, spans, count, kInk); });
    }
}

TEST(Spans, ChromaRunsOfEveryLengthPaintWholePairs) {
    ForAll({Range(0, 8), Range(8, 60)}, [](const Ints &v) {
        const OrnMinRenderScanline span = {{int(v[0]), 0}, {int(v[1]), 0}};
        Check(120, 2, 2, {NoInk, [&](Int cx, Int) { return cx >= v[0] && cx < v[1]; }},
              [&](Image i) { OrnMinRenderDrawScanlinesUV(i, &span, 2, kInk); });
    });
}

// On machines with the instructions for them, the wide stores; elsewhere both are the same.
TEST(Stores, WideOnesWriteWhatThePlainOnesDo) {
    std::mt19937 random(13);
    const auto pick = [&](int from, int to) {
        return from + int(random() % unsigned(to - from + 1));
    };
    for (int i = 0; i < 20000; ++i) {
        Frame wide(i % 9 ? 160 : 9000, 12, 3, 8), plain(i % 9 ? 160 : 9000, 12, 3, 8);
        wide.Randomise(random);
        plain.luma = wide.luma;
        const auto stride = wide.image.stride;
        const bool luma = random() % 2;
        const Pattern pattern = luma ? LumaPattern(uint8_t(random()))
                                     : ChromaPattern({0, uint8_t(random()), uint8_t(random())});
        const ptrdiff_t step = luma ? 1 : 2, first = pick(0, 40) * step;
        const auto at = [&](Frame &frame) { return frame.image.yPlane + first; };
        if (i % 3 == 0) {
            const int bytes = int(step) * pick(0, int((wide.image.width - first) / step));
            FillRows(at(wide), stride, 12, bytes, pattern);
            FillRowsPlain(at(plain), stride, 12, bytes, pattern);
        } else if (i % 3 == 1) {
            std::vector<OrnMinRenderScanline> spans;
            for (int n = pick(0, 60); n > 0; --n) {
                const int start = pick(0, 50), y = pick(0, 11);
                spans.push_back({{start, y}, {pick(start, 80), y}});
            }
            PaintSpans({wide.image.yPlane, stride, step}, spans.data(), int(spans.size()), pattern);
            PaintSpansPlain({plain.image.yPlane, stride, step}, spans.data(), int(spans.size()),
                            pattern);
        } else {
            std::vector<uint32_t> words(12 * 3);
            for (auto &word : words)
                word = random() % 8 ? uint32_t(random() & random()) : ~0u;
            const Mask mask = {words.data(),
                               pick(0, 2),
                               12,
                               luma ? pick(1, 3) : 1,
                               BitRange(pick(0, 31), 32),
                               BitRange(0, pick(1, 32))};
            PaintMask(at(wide), stride, mask, {pattern, step, i % 2 == 0});
            PaintMaskPlain(at(plain), stride, mask, {pattern, step, i % 2 == 0});
        }
        ASSERT_EQ(wide.luma, plain.luma) << i;
    }
}

// Rounded outward they would paint a chroma sample that holds nothing of them.
TEST(BuildingBlocks, EmptyRectanglesAtOddCoordinatesPaintNothing) {
    for (const OrnMinRenderRect rect : {OrnMinRenderRect{3, 1, 3, 5}, OrnMinRenderRect{1, 3, 5, 3}})
        Check(8, 8, 3, {NoInk, NoInk}, [&](Image i) {
            OrnMinRenderFillRectY8Impl(Context(), i, &rect, kInk.y);
            OrnMinRenderFillRectUVImpl(Context(), i, &rect, kInk);
        });
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

TEST(TallFrames, EveryRowIsFilled) {
    const OrnMinRenderRect rect = {1, -50, 63, 9000};
    Check(64, 5000, 3, {[](Int x, Int) { return x >= 1 && x < 63; }, [](Int, Int) { return true; }},
          [&](Image i) { OrnMinRenderFillRectYUV420SP(Context(), i, &rect, kInk); });
}

// A call whose work followed its arguments instead of the frame would take minutes here.
TEST(Extremes, CostNoTimeAndStayInside) {
    const auto begin = std::chrono::steady_clock::now();
    const Ints limits = {INT_MIN, INT_MIN + 1, -65536, -1, 0, 9, 65536, INT_MAX - 1, INT_MAX};
    Frame frame(16, 16);
    ForAll({limits, limits, limits, limits}, [&](const Ints &v) {
        const int a = int(v[0]), b = int(v[1]), c = int(v[2]), d = int(v[3]);
        const OrnMinRenderRect rect = {a, b, c, d};
        const OrnMinRenderPoint points[] = {{a, b}, {c, d}, {b, c}};
        OrnMinRenderDrawLineYUV420SP(nullptr, &frame.image, {a, b}, {c, d}, kInk, 0);
        OrnMinRenderDrawFrameYUV420SP(Context(), &frame.image, &rect, kInk, 1);
        OrnMinRenderFillRectYUV420SP(Context(), &frame.image, &rect, kInk);
        OrnMinRenderFillPolygonYUV420SP(Context(), &frame.image, points, 3, kInk);
    });
    EXPECT_EQ(std::count(frame.luma.begin(), frame.luma.begin() + kGuard, kPaper), kGuard);
    EXPECT_EQ(std::count(frame.luma.end() - kGuard, frame.luma.end(), kPaper), kGuard);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

// ---- Colours ----

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
    }
    const uint8_t clamped[][6] = {{0, 128, 0, 0, 92, 0}, {255, 128, 255, 255, 165, 255}};
    for (const auto &t : clamped) {
        uint8_t rgb[3];
        OrnMinRenderYUV2RGB(rgb, t);
        EXPECT_EQ(memcmp(rgb, t + 3, 3), 0) << int(t[0]);
    }
}

} // namespace
