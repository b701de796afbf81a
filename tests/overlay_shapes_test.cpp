// SPDX-License-Identifier: MIT
// Shapes that overlay/ puts together itself, compared with naive references pixel by pixel: lines
// and rings of any thickness, masks and mosaics. A chroma sample is painted when one of its pixels
// is.
#include "overlay/engine.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <random>

namespace {

constexpr int32_t kWidth = 37; // odd, so that the last chroma samples are cut
constexpr int32_t kHeight = 23;
constexpr int32_t kStride = 38;
constexpr uint8_t kWhite = 254;

using Bytes = std::vector<uint8_t>;

// Luma, then chroma of the same stride, of what a script leaves in a frame.
Bytes Drawn(const std::string &script, const Bytes &before, bool hasChroma = true) {
    const bool hasTracks = script.find("tracks") != script.npos; // else lines would be added
    overlay::Engine engine({{}, hasTracks, {}});
    const overlay::Errors errors = engine.SetScript(script, "script");
    EXPECT_TRUE(errors.empty()) << script << ": " << errors[0].Message();
    engine.SetTracks({{"1,1,5,3,11,9", "tracks"}}, {});
    engine.SetFrames({kWidth, kHeight, hasChroma, {}});
    Bytes bytes = before;
    OrnMinRenderImage image{0, kWidth, kHeight, kStride, bytes.data(), 0, nullptr};
    if (hasChroma)
        image.uvPlane = bytes.data() + kStride * kHeight;
    engine.Draw(image, 0, {0, 25});
    return bytes;
}

const Bytes kBlank(kStride *(kHeight + (kHeight + 1) / 2));

// Whether the middle of a pixel belongs to a shape: beyond 0 by how far, and around 0 either way.
using Depth = std::function<double(double x, double y)>;

void ExpectShape(const std::string &script, const Depth &depth) {
    const Bytes bytes = Drawn(script, kBlank);
    Bytes chroma(kBlank.size() - kStride * kHeight);
    for (int32_t y = 0; y < kHeight; ++y)
        for (int32_t x = 0; x < kWidth; ++x) {
            const bool isPainted = bytes[static_cast<size_t>(y * kStride + x)] == kWhite;
            const double inside = depth(x, y);
            if (std::abs(inside) > 1e-5) {
                ASSERT_EQ(isPainted, inside > 0) << script << " at " << x << "," << y;
            }
            for (const int32_t byte : {0, 1})
                if (isPainted)
                    chroma[static_cast<size_t>(y / 2 * kStride + x / 2 * 2 + byte)] = 128;
        }
    EXPECT_TRUE(std::equal(chroma.begin(), chroma.end(), bytes.begin() + kStride * kHeight))
        << script;
    const Bytes luma = Drawn(script, kBlank, false);
    EXPECT_TRUE(std::equal(luma.begin(), luma.begin() + kStride * kHeight, bytes.begin()));
}

struct Points {
    double x0, y0, x1, y1;
};

// The nearest point of a line is where a point's shadow falls, or an end.
double DistanceFrom(const Points &line, double x, double y) {
    const double dx = line.x1 - line.x0, dy = line.y1 - line.y0;
    const double square = dx * dx + dy * dy;
    const double shadow = square > 0 ? ((x - line.x0) * dx + (y - line.y0) * dy) / square : 0;
    const double share = std::clamp(shadow, 0.0, 1.0);
    if (shadow == share && square > 0) // exact for ends far away
        return std::abs((x - line.x0) * dy - (y - line.y0) * dx) / std::sqrt(square);
    return std::hypot(x - line.x0 - share * dx, y - line.y0 - share * dy);
}

// Of a rectangle with rounded corners: 1 at its middle, 0 at its edge.
double DepthIn(const Points &rect, double radiusX, double radiusY, double x, double y) {
    const double fromEdgeX = std::min(x - rect.x0, rect.x1 - x);
    const double fromEdgeY = std::min(y - rect.y0, rect.y1 - y);
    if (fromEdgeX < 0 || fromEdgeY < 0)
        return -1;
    if (radiusX <= 0 || radiusY <= 0 || fromEdgeX >= radiusX || fromEdgeY >= radiusY)
        return std::min({1.0, fromEdgeX, fromEdgeY});
    return 1 - std::hypot((radiusX - fromEdgeX) / radiusX, (radiusY - fromEdgeY) / radiusY);
}

// Inside of the outer edge, outside of the inner one.
double DepthInRing(const Points &r, double radiusX, double radiusY, double thickness, double x,
                   double y) {
    radiusX = std::min(radiusX, (r.x1 - r.x0) / 2);
    radiusY = std::min(radiusY, (r.y1 - r.y0) / 2);
    const double outer = DepthIn(r, radiusX, radiusY, x + 0.5, y + 0.5);
    const Points inner{r.x0 + thickness, r.y0 + thickness, r.x1 - thickness, r.y1 - thickness};
    if (outer <= 0 || inner.x0 >= inner.x1 || inner.y0 >= inner.y1)
        return outer;
    const double hole = DepthIn(inner, radiusX - thickness, radiusY - thickness, x + 0.5, y + 0.5);
    return std::min(outer, -hole);
}

std::string Numbers(std::initializer_list<int64_t> numbers) {
    std::string text;
    for (const int64_t number : numbers)
        text += " " + std::to_string(number);
    return text;
}

} // namespace

// Also of ends as far away as they can be.
TEST(OverlayShapes, ThickLines) {
    std::mt19937 random(1);
    constexpr int64_t kFar[] = {-2147483647 - 1, 2147483647, -2000000000, 5, 11};
    for (int step = 0; step < 400; ++step) {
        int64_t c[6];
        for (int64_t &number : c)
            number = step % 4 == 3 ? kFar[random() % 5] : int64_t(random() % 50) - 6;
        const int64_t thick = 1 + static_cast<int64_t>(random() % 9);
        const double shift = thick % 2 == 0 ? 0.5 : 0;
        const auto depth = [&](size_t from, size_t to) {
            const Points line{double(c[from]) + shift, double(c[from + 1]) + shift,
                              double(c[to]) + shift, double(c[to + 1]) + shift};
            return [line, thick](double x, double y) {
                return double(thick) / 2 - DistanceFrom(line, x, y);
            };
        };
        const std::string size = " white thick " + std::to_string(thick);
        const auto first = depth(0, 2), second = depth(2, 4), last = depth(4, 0);
        ExpectShape("* line" + Numbers({c[0], c[1], c[2], c[3]}) + size, first);
        std::string points;
        for (const size_t i : {size_t{0}, size_t{2}, size_t{4}})
            points += " " + std::to_string(c[i]) + "," + std::to_string(c[i + 1]);
        ExpectShape("* polyline" + size + points,
                    [&](double x, double y) { return std::max(first(x, y), second(x, y)); });
        ExpectShape("* loop" + size + points, [&](double x, double y) {
            return std::max({first(x, y), second(x, y), last(x, y)});
        });
    }
}

// A frame lies inside of its closed rectangle, rings inside of the usual outline, which reaches one
// pixel further. Lines along an axis have straight ends.
TEST(OverlayShapes, ThickRings) {
    std::mt19937 random(2);
    constexpr int64_t kFar[] = {-2147483647 - 1, 2147483647, -9, 5, 30};
    for (int step = 0; step < 400; ++step) {
        int64_t c[4];
        for (int64_t &number : c)
            number = step % 4 == 3 ? kFar[random() % 5] : int64_t(random() % 50) - 6;
        const int64_t thick = 1 + static_cast<int64_t>(random() % 9),
                      rx = int64_t(random() % 12) - 1, ry = int64_t(random() % 12) - 1;
        const std::string size = " white thick " + std::to_string(thick);
        const auto [left, right] = std::minmax<double>({double(c[0]), double(c[2])});
        const auto [top, bottom] = std::minmax<double>({double(c[1]), double(c[3])});
        const Points box{left, top, right + 1, bottom + 1}, wide{left, top, right + 2, bottom + 2};
        const std::string corners = Numbers({c[0], c[1], c[2], c[3]});
        const auto ring = [thick](const Points &rect, double radiusX, double radiusY) {
            return [=](double x, double y) {
                return DepthInRing(rect, radiusX, radiusY, double(thick), x, y);
            };
        };
        ExpectShape("* box" + corners + size, ring(box, 0, 0));
        ExpectShape("* roundbox" + corners + Numbers({rx, ry}) + size,
                    ring(wide, double(rx), double(ry)));
        ExpectShape("* ellipse" + corners + size, ring(wide, 1e10, 1e10));
        const double before = double((thick - 1) / 2);
        const auto bar = [](Points rect) {
            return [rect](double x, double y) { return DepthIn(rect, 0, 0, x + 0.5, y + 0.5); };
        };
        ExpectShape(
            "* hline" + Numbers({c[0], c[2], c[1]}) + size,
            bar({left, double(c[1]) - before, right, double(c[1]) - before + double(thick)}));
        ExpectShape(
            "* vline" + Numbers({c[0], c[1], c[3]}) + size,
            bar({double(c[0]) - before, top, double(c[0]) - before + double(thick), bottom}));
    }
}

// Sizes follow the height of the frame, 23 rows, and are never less than a pixel.
TEST(OverlayShapes, SizesOfTheFrame) {
    constexpr const char *same[][2] = {
        {"* box 3 3 20 20 white thick 25%", "* box 3 3 20 20 white thick 6"},
        {"* line 3 3 20 9 white thick 999999%", "* fill left top right bottom white"},
        {"* box 3 3 20 20 white thick 2147483647", "* fill 3 3 21 21 white"},
        {"* roundfill 2 2 30 10 5 0 white", "* fill 2 2 30 10 white"},
        {"* mask 3 3 8 9 # in black", "* fill 2 2 8 10 black"},
        {"* mask 8 9 3 3 red", "* fill 2 2 8 10 red"},
        {"tracks mask", "* mask 5 3 16 12"},
        {"tracks mask id # the box", "tracks mask box.left box.top box.right box.bottom id"},
        {"tracks mosaic 13%", "* mosaic 5 3 16 12 3"},
        {"* mosaic 3 3 9 9 1", "* mask 99 99 99 99"},
    };
    Bytes noise(kBlank.size());
    std::mt19937 random(4);
    for (uint8_t &byte : noise)
        byte = static_cast<uint8_t>(random());
    for (const auto &[one, other] : same)
        for (const bool hasChroma : {false, true})
            EXPECT_TRUE(Drawn(one, noise, hasChroma) == Drawn(other, noise, hasChroma)) << one;
}

// Every sample is the average of those in its block, and chroma belongs to the block of its first
// pixel.
TEST(OverlayShapes, Mosaics) {
    std::mt19937 random(3);
    for (int step = 0; step < 300; ++step) {
        Bytes before(kBlank.size());
        for (uint8_t &byte : before)
            byte = static_cast<uint8_t>(random());
        const int64_t size = 1 + static_cast<int64_t>(random() % 12);
        const int64_t left = int64_t(random() % 60) - 20, top = int64_t(random() % 40) - 15;
        const int64_t right = left + int64_t(random() % 40), bottom = top + int64_t(random() % 40);
        const int64_t evenLeft = left - (left & 1), evenTop = top - (top & 1);
        const auto blockOf = [&](int64_t x, int64_t y) -> int64_t { // -1: none
            if (x < evenLeft || x >= right + (right & 1) || y < evenTop ||
                y >= bottom + (bottom & 1))
                return -1;
            return (y - evenTop) / size * 1000 + (x - evenLeft) / size;
        };
        std::vector<int64_t> blocks(before.size(), -1); // of planes one after the other
        for (int64_t y = 0; y < kHeight; ++y)
            for (int64_t x = 0; x < kWidth; ++x)
                if (blockOf(x, y) >= 0)
                    blocks[size_t(y * kStride + x)] = 3 * blockOf(x, y);
        for (int64_t y = 0; y < (kHeight + 1) / 2; ++y)
            for (int64_t i = 0; i < kStride; ++i)
                if (blockOf(i / 2 * 2, 2 * y) >= 0)
                    blocks[size_t((kHeight + y) * kStride + i)] =
                        3 * blockOf(i / 2 * 2, 2 * y) + 1 + i % 2;
        Bytes expected = before;
        for (size_t i = 0; i < expected.size(); ++i) {
            uint64_t sum = 0, count = 0;
            for (size_t j = 0; j < expected.size() && blocks[i] >= 0; ++j)
                if (blocks[j] == blocks[i]) {
                    sum += before[j];
                    ++count;
                }
            if (count > 0)
                expected[i] = static_cast<uint8_t>((sum + count / 2) / count);
        }
        const std::string script = "* mosaic" + Numbers({left, top, right, bottom, size});
        ASSERT_TRUE(Drawn(script, before) == expected) << script;
    }
}
