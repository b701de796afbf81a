// SPDX-License-Identifier: MIT
// Ellipses and rounded rectangles by a naive reference, and by properties that hold for all of
// them.
#include "frame.h"

#include <chrono>
#include <climits>

namespace {

void Ellipse(const OrnMinRenderImage *image, OrnMinRenderRect rect) {
    OrnMinRenderDrawEllipseYUV420SP(nullptr, image, &rect, kInk);
}

void Disc(const OrnMinRenderImage *image, OrnMinRenderRect rect) {
    OrnMinRenderFillEllipseYUV420SP(Context(), image, &rect, kInk);
}

void RoundBox(const OrnMinRenderImage *image, OrnMinRenderRect rect, OrnMinRenderPoint radii) {
    OrnMinRenderDrawRoundRectYUV420SP(Context(), image, &rect, &radii, kInk);
}

void RoundFill(const OrnMinRenderImage *image, OrnMinRenderRect rect, OrnMinRenderPoint radii) {
    OrnMinRenderFillRoundRectYUV420SP(Context(), image, &rect, &radii, kInk);
}

// The rows that a shape fills in each plane.
struct Row {
    int y, first, last;
};

void ExpectRows(Frame *frame, const std::vector<Row> &luma, const std::vector<Row> &chroma) {
    Frame expected(frame->image.width, frame->image.height);
    for (const Row &row : luma)
        memset(&expected.Y(row.first, row.y), kInk.y, size_t(row.last - row.first + 1));
    for (const Row &row : chroma)
        for (int cx = row.first; cx <= row.last; ++cx)
            expected.SetUV(cx, row.y);
    EXPECT_EQ(frame->Picture(), expected.Picture());
}

TEST(Ellipses, Fills) {
    // clang-format off
    Frame circle(24, 24), wide(34, 24), narrow(310, 312), rounded(34, 28), tall(60, 90);
    Disc(&circle.image, {10, 10, 18, 18});
    ExpectRows(&circle, {{11, 12, 15}, {12, 11, 16}, {13, 10, 17}, {14, 10, 17}, {15, 10, 17},
                         {16, 11, 16}, {17, 12, 15}},
               {{5, 6, 7}, {6, 5, 8}, {7, 5, 8}, {8, 6, 7}});
    Disc(&wide.image, {10, 10, 30, 20});
    ExpectRows(&wide, {{11, 15, 24}, {12, 12, 27}, {13, 11, 28}, {14, 10, 29}, {15, 10, 29},
                       {16, 10, 29}, {17, 11, 28}, {18, 12, 27}, {19, 15, 24}},
               {{6, 6, 13}, {7, 5, 14}, {8, 6, 13}, {9, 8, 11}});
    Disc(&narrow.image, {300, 300, 303, 308});
    ExpectRows(&narrow, {{302, 300, 301}, {303, 300, 301}, {304, 300, 301}, {305, 300, 301},
                         {306, 300, 301}},
               {{151, 150, 150}, {152, 150, 150}, {153, 150, 150}});
    RoundFill(&rounded.image, {10, 24, 30, 10}, {5, 4});
    std::vector<Row> rows = {{11, 12, 27}, {12, 11, 28}, {22, 11, 28}, {23, 12, 27}};
    for (int y = 13; y <= 21; ++y)
        rows.push_back({y, 10, 29});
    ExpectRows(&rounded, rows, {{6, 6, 13}, {7, 5, 14}, {8, 5, 14}, {9, 5, 14}, {10, 5, 14},
                                {11, 6, 13}});
    // clang-format on
    Disc(&tall.image, {5, 5, 52, 79}); // its arcs meet 31 rows above the centre, at (28, 42)
    EXPECT_EQ(tall.Y(15, 11), kPaper);
}

TEST(Ellipses, SquareCorners) {
    for (const OrnMinRenderPoint radii : {OrnMinRenderPoint{0, 0}, {0, 5}, {5, -1}}) {
        const auto ring = [](Int x, Int y) {
            const bool inside = x >= 5 && x <= 14 && y >= 4 && y <= 11;
            return inside && !(x >= 7 && x <= 12 && y >= 6 && y <= 9);
        };
        Frame outline(20, 16);
        RoundBox(&outline.image, {13, 10, 5, 4}, radii);
        for (int y = 0; y < 16; ++y)
            for (int x = 0; x < 20; ++x)
                EXPECT_EQ(outline.Y(x, y) == kInk.y, ring(x, y)) << x << ' ' << y;
        Frame fill(20, 16), plain(20, 16);
        const OrnMinRenderRect rect = {13, 10, 5, 3};
        RoundFill(&fill.image, rect, radii);
        OrnMinRenderFillRectYUV420SP(Context(), &plain.image, &rect, kInk);
        EXPECT_TRUE(fill == plain);
    }
}

// ---- Outlines against a naive reference: block by block, sample by sample ----

// The curve of an ellipse of the given size, in the corners of a rectangle.
struct Curve {
    OrnMinRenderRect rect;
    Int width, height;
};

// Plots the offset (ox, oy), doubled, in all four quadrants.
void Plot(Frame *frame, const Curve &curve, Int ox, Int oy) {
    const Int w = frame->image.width, h = frame->image.height;
    const auto &r = curve.rect;
    for (const Int sx : {-1, 1})
        for (const Int sy : {-1, 1}) {
            const Int x2 = r.left + r.right + sx * (r.right - r.left - curve.width + ox);
            const Int y2 = r.top + r.bottom + sy * (r.bottom - r.top - curve.height + oy);
            const Int x = x2 / 2, y = y2 / 2;
            if (x2 < -1 || x >= w || y2 < 2 || y > h)
                continue;
            for (Int i = 0; i < 4; ++i)
                if (x + i % 2 < w && y + i / 2 < h)
                    frame->Y(x + i % 2, y + i / 2) = kInk.y;
            if ((x + sx) / 2 < ChromaSide(int(w)) && (y + sy) / 2 < ChromaSide(int(h)))
                frame->SetUV((x + sx) / 2, (y + sy) / 2);
        }
}

// The arc from the end of the axis of length across; plot(k, inward) is called for each step.
template <class Call> void Trace(Int across, Int along, Call plot) {
    const Int step = across * across / 2, fall = along * along / 2;
    Int inward = across, sum = 0, error = along * along * (1 - across) / 2;
    for (Int k = 0; k <= along; ++k) {
        plot(k, inward);
        sum += (k + 1) * step;
        if (error + 2 * sum > 0) {
            sum += error;
            error += fall;
            --inward;
        }
        if ((k + 1) * step > fall * inward)
            return;
    }
}

void PlotCurve(Frame *frame, const Curve &curve) {
    Trace(curve.width, curve.height, [&](Int k, Int in) { Plot(frame, curve, in, k); });
    Trace(curve.height, curve.width, [&](Int k, Int in) { Plot(frame, curve, k, in); });
}

void PlotSides(const OrnMinRenderImage *image, const OrnMinRenderRect &r, int rx, int ry) {
    for (const int y : {r.top, r.bottom})
        OrnMinRenderDrawHLineYUV420SP(nullptr, image, r.left + rx, r.right - rx, y, kInk, 0);
    for (const int x : {r.left, r.right})
        OrnMinRenderDrawVLineYUV420SP(nullptr, image, x, r.top + ry, r.bottom - ry, kInk, 0);
}

TEST(Outlines, MatchTheReferenceWhereverTheyLie) {
    std::mt19937 random(9);
    const auto pick = [&](int limit) { return static_cast<int>(random() % unsigned(limit)); };
    for (int i = 0; i < 6000; ++i) {
        const int limit = i % 3 ? 60 : 700; // the largest are stepped in several bands
        const int left = pick(160) - 80 - limit / 4, top = pick(160) - 80 - limit / 4;
        const int width = pick(limit), height = pick(limit), w = 60 + i % 31, h = 50 + i % 37;
        const int rx = std::min(1 + pick(40), width / 2), ry = std::min(1 + pick(40), height / 2);
        const OrnMinRenderRect rect = {left, top, left + width, top + height};
        Frame ring(w, h), plottedRing(w, h), box(w, h), plottedBox(w, h);
        Ellipse(&ring.image, rect);
        PlotCurve(&plottedRing, {rect, width, height});
        SCOPED_TRACE(testing::Message() << "case " << i << ": " << left << ' ' << top << ' '
                                        << width << ' ' << height << ", " << rx << ' ' << ry);
        ASSERT_TRUE(ring == plottedRing) << ring.Picture() << plottedRing.Picture();
        if (rx == 0 || ry == 0)
            continue; // square corners
        RoundBox(&box.image, rect, {rx, ry});
        PlotCurve(&plottedBox, {rect, 2 * rx, 2 * ry});
        PlotSides(&plottedBox.image, rect, rx, ry);
        ASSERT_TRUE(box == plottedBox) << box.Picture() << plottedBox.Picture();
    }
}

// ---- Properties ----

struct Shape {
    OrnMinRenderRect rect;
    OrnMinRenderPoint radii;
    std::string Text() const {
        return testing::PrintToString(
            std::vector<int>{rect.left, rect.top, rect.right, rect.bottom, radii.x, radii.y});
    }
};

Shape RandomShape(std::mt19937 &random) {
    const auto pick = [&](int limit) { return static_cast<int>(random() % unsigned(limit)); };
    const OrnMinRenderRect rect = {pick(120) - 20, pick(120) - 20, pick(120) - 20, pick(120) - 20};
    return {rect, {pick(40), pick(40)}};
}

using ShapeCall = void (*)(const OrnMinRenderImage *, const Shape &);
const ShapeCall kShapes[] = {
    [](const OrnMinRenderImage *image, const Shape &s) { Ellipse(image, s.rect); },
    [](const OrnMinRenderImage *image, const Shape &s) { Disc(image, s.rect); },
    [](const OrnMinRenderImage *image, const Shape &s) { RoundBox(image, s.rect, s.radii); },
    [](const OrnMinRenderImage *image, const Shape &s) { RoundFill(image, s.rect, s.radii); },
};

TEST(ShapeProperties, SwappedCornersMissingPlanesAndCutOuts) {
    std::mt19937 random(3);
    for (int i = 0; i < 3000; ++i) {
        const Shape shape = RandomShape(random);
        Shape swapped = shape;
        if (i & 1)
            std::swap(swapped.rect.left, swapped.rect.right);
        if (i & 2)
            std::swap(swapped.rect.top, swapped.rect.bottom);
        const int w = 40 + i % 41, h = 30 + i % 37;
        for (const ShapeCall draw : kShapes) {
            SCOPED_TRACE("case " + std::to_string(i) + shape.Text());
            Frame whole(w, h), other(w, h), onlyLuma(w, h, 1), onlyChroma(w, h, 2), large(130, 130);
            draw(&whole.image, shape);
            draw(&other.image, swapped);
            draw(&onlyLuma.image, shape);
            draw(&onlyChroma.image, shape);
            draw(&large.image, shape);
            ASSERT_TRUE(whole == other);
            ASSERT_EQ(whole.luma, onlyLuma.luma);
            ASSERT_EQ(whole.chroma, onlyChroma.chroma);
            ASSERT_EQ(std::count(onlyLuma.chroma.begin(), onlyLuma.chroma.end(), kPaper),
                      Int(onlyLuma.chroma.size()));
            // Vertical sides are drawn with both columns or not at all, so the last one may differ.
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w - 1; ++x)
                    ASSERT_EQ(whole.Y(x, y), large.Y(x, y)) << x << ' ' << y;
            for (int cy = 0; cy < (h - 2) / 2; ++cy)
                for (int cx = 0; cx < (w - 2) / 2; ++cx)
                    ASSERT_EQ(whole.UV(cx, cy)[0], large.UV(cx, cy)[0]) << cx << ' ' << cy;
        }
    }
}

// What the stepping leaves when one side is 0 or 1 must end and stay in its box.
TEST(ShapeProperties, ThinAndExtremeShapesEnd) {
    const auto begin = std::chrono::steady_clock::now();
    const Ints sides = {0, 1, 2, 40, 65536, 65537, INT_MAX - 10};
    const Ints radii = {INT_MIN, 0, 1, 2, 32768, 32769, INT_MAX};
    ForAll({sides, sides, radii}, [](const Ints &v) {
        const Int width = v[0], height = v[1];
        const OrnMinRenderRect rect = {10, 6, int(10 + width), int(6 + height)};
        Frame ring(60, 60), disc(60, 60), box(60, 60);
        Ellipse(&ring.image, rect);
        Disc(&disc.image, rect);
        RoundBox(&box.image, rect, {int(v[2]), int(v[2])});
        RoundFill(&box.image, rect, {int(v[2]), int(v[2])});
        const bool large = width > 65536 || height > 65536;
        ASSERT_TRUE(height != 40 || (ring.Y(10, 26) == kInk.y) == !large);
        ASSERT_TRUE(width != 40 || (ring.Y(30, 6) == kInk.y) == !large);
        const bool proper = 4 * width >= height; // narrower discs leave their box
        for (int y = 0; y < 60; ++y)
            for (int x = 0; x < 60; ++x) {
                const bool inBox = x >= 10 && x <= 11 + width && y >= 6 && y <= 7 + height;
                ASSERT_TRUE((inBox && !large) || ring.Y(x, y) == kPaper) << x << ' ' << y;
                ASSERT_TRUE((inBox && !large) || !proper || disc.Y(x, y) == kPaper);
                ASSERT_TRUE((width != 1 && height >= 2) || disc.Y(x, y) == kPaper);
            }
    });
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
}

// Of 65,536 pixels, and of one more, which is not drawn.
TEST(ShapeProperties, LargestCurves) {
    constexpr int kHalf = 32768;
    for (const int more : {0, 1}) {
        const int end = 30 + kHalf + more;
        Frame frames[] = {{60, 60}, {60, 60}, {60, 60}, {60, 60}};
        Disc(&frames[0].image, {30 - kHalf, 0, end, 60});
        Disc(&frames[1].image, {30 - kHalf, 6, 30 + kHalf, 6 + 2 * kHalf + more});
        RoundFill(&frames[2].image, {-99999, 0, 99999, 60}, {kHalf + more, 20});
        RoundFill(&frames[3].image, {0, -99999, 60, 99999}, {20, kHalf + more});
        for (Frame &frame : frames)
            EXPECT_EQ(frame.Y(30, 30) == kInk.y, more == 0) << &frame - frames;
    }
}

TEST(ShapeProperties, TallShapesAreComplete) {
    Frame disc(64, 5000), rounded(64, 5000);
    Disc(&disc.image, {2, 0, 62, 5000});
    RoundFill(&rounded.image, {2, 0, 62, 5000}, {30, 2500});
    for (int y = 1; y < 4999; ++y) {
        ASSERT_EQ(disc.Y(32, y), kInk.y) << y;
        ASSERT_EQ(rounded.Y(32, y), kInk.y) << y;
        const bool wide = y > 50 && y < 4950; // chroma, rounded inward, begins a little later
        ASSERT_TRUE(!wide || disc.UV(16, y / 2)[0] == kInk.u) << y;
        ASSERT_TRUE(!wide || rounded.UV(16, y / 2)[0] == kInk.u) << y;
    }
}

} // namespace
