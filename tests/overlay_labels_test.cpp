// SPDX-License-Identifier: MIT
// Where labels go that avoid each other, in a frame of 100 x 100 pixels.
#include "overlay/label_places.h"

#include <gtest/gtest.h>
#include <limits>
#include <ostream>
#include <random>

static bool operator==(const OrnMinRenderRect &a, const OrnMinRenderRect &b) {
    return a.left == b.left && a.top == b.top && a.right == b.right && a.bottom == b.bottom;
}

static std::ostream &operator<<(std::ostream &out, const OrnMinRenderRect &r) {
    return out << "{" << r.left << "," << r.top << " " << r.right << "," << r.bottom << "}";
}

namespace {

using overlay::LabelPlaces;
using Rects = std::vector<OrnMinRenderRect>;

constexpr OrnMinRenderRect kBox{40, 40, 60, 70};
constexpr OrnMinRenderRect kAbove{40, 30, 70, 40};
constexpr OrnMinRenderRect kBelow{40, 70, 70, 80};

OrnMinRenderRect Chosen(LabelPlaces &places, int64_t frame, const Rects &boxes, const Rects &labels,
                        const LabelPlaces::Request &request = {1, 7, kBox, kAbove}) {
    places.BeginFrame(frame, 100, 100);
    for (const OrnMinRenderRect &box : boxes)
        places.AddBox(box);
    for (const OrnMinRenderRect &label : labels)
        places.AddLabel(label);
    return places.Choose(request);
}

} // namespace

// Pixels under a label count as 16, under a box as 4, under the own box as 2. Against them stand
// those of a label that moves, and a 32nd of them for each step down the list.
TEST(OverlayLabels, CostsAreExact) {
    constexpr OrnMinRenderRect inside{46, 40, 76, 50}, large{10, 5, 74, 45}, small{10, 45, 20, 50};
    constexpr OrnMinRenderRect largeBelow{10, 50, 74, 90};
    const struct {
        OrnMinRenderRect box, asked;
        Rects boxes, labels;
        OrnMinRenderRect expected;
    } cases[] = {
        {kBox, kAbove, {}, {{42, 35, 49, 38}}, kAbove},
        {kBox, kAbove, {}, {{42, 35, 53, 37}}, kBelow},
        {kBox, kAbove, {{42, 33, 54, 40}}, {}, kAbove},
        {kBox, kAbove, {{42, 35, 59, 40}}, {}, kBelow},
        {small, large, {}, {{12, 10, 32, 19}}, large},
        {small, large, {{50, 10, 51, 11}}, {{12, 10, 32, 19}}, largeBelow},
        {kBox, {40, 40, 70, 50}, {kBox}, {}, kAbove},
        {kBox, inside, {kBox}, {}, inside},
        {kBox, kAbove, {kBox}, {{60, 30, 100, 40}}, {30, 30, 60, 40}},
        {kBox, kAbove, {kBox, {55, 20, 90, 40}}, {}, kBelow},
        {kBox, inside, {{41, 40, 60, 70}}, {}, kAbove},
        {kBox, inside, {{40, 41, 60, 70}}, {}, kAbove},
        {kBox, inside, {{40, 40, 61, 70}}, {}, kAbove},
        {kBox, inside, {{40, 40, 60, 71}}, {}, kAbove},
        {kBox,
         kAbove,
         {kBox},
         {{0, 0, 100, 40}, {0, 70, 100, 100}, {60, 40, 100, 70}, {0, 40, 40, 60}},
         {10, 60, 40, 70}},
        {kBox,
         kAbove,
         {kBox},
         {{0, 0, 100, 40}, {0, 70, 100, 100}, {0, 40, 40, 70}, {60, 40, 100, 60}},
         {60, 60, 90, 70}},
    };
    for (const auto &[box, asked, boxes, labels, expected] : cases) {
        LabelPlaces places;
        EXPECT_EQ(Chosen(places, 0, boxes, labels, {1, 7, box, asked}), expected)
            << asked << boxes.size() << labels.size();
    }
    LabelPlaces places; // what only touches the frame is not in it
    Chosen(places, 0, {{100, 0, 110, 10}, {0, 100, 9, 110}}, {{-9, 0, 0, 9}, {0, -9, 9, 0}});
    EXPECT_TRUE(!places.HasBoxes() && places.Labels().empty());
    EXPECT_EQ(Chosen(places, 1, {}, {{40, 20, 70, 40}}, {1, 0, kBox, kAbove}), kBelow);
    EXPECT_EQ(Chosen(places, 2, {}, {}, {1, 0, kBox, kAbove}), kBelow); // 0 is an id
}

// A label stays where it was as long as that is nearly as good: its own box in mind, in the frame
// after, in one some frames later, in one that is drawn again; not in one before or far away.
TEST(OverlayLabels, KeepTheirPlaces) {
    const Rects blocked{{40, 20, 70, 40}};
    const auto other = [](size_t line, int64_t id) {
        return LabelPlaces::Request{line, id, kBox, kAbove};
    };
    LabelPlaces places;
    EXPECT_EQ(Chosen(places, 5, {kBox}, blocked), kBelow);
    EXPECT_EQ(Chosen(places, 5, {kBox}, {}), kAbove); // the frame again, as if for the first time
    EXPECT_EQ(Chosen(places, 5, {kBox}, blocked), kBelow);
    EXPECT_EQ(Chosen(places, 6, {kBox}, {}), kBelow);
    EXPECT_EQ(Chosen(places, 6, {kBox}, {}), kBelow);
    EXPECT_EQ(Chosen(places, 56, {kBox}, {}), kBelow);
    EXPECT_EQ(Chosen(places, 107, {kBox}, {}), kAbove);
    EXPECT_EQ(Chosen(places, 111, {kBox}, blocked), kBelow);
    EXPECT_EQ(Chosen(places, 110, {kBox}, {}), kAbove);
    EXPECT_EQ(Chosen(places, 111, {kBox}, blocked), kBelow);
    EXPECT_EQ(Chosen(places, 112, {kBox}, {}, other(1, 8)), kAbove);
    EXPECT_EQ(Chosen(places, 113, {kBox}, blocked, other(1, -1)), kBelow);
    EXPECT_EQ(Chosen(places, 114, {kBox}, {}, other(1, -1)), kAbove); // told apart by nothing
    EXPECT_EQ(Chosen(places, 115, {kBox}, blocked), kBelow);
    EXPECT_EQ(Chosen(places, 116, {kBox}, {}, other(2, 7)), kAbove);
}

// Wherever boxes lie, labels keep their size, and stay in the frame if they can.
TEST(OverlayLabels, StayInTheFrame) {
    using Limits = std::numeric_limits<int32_t>;
    std::mt19937 random(1);
    const auto edges = [&random](bool far) {
        const int32_t ends[] = {Limits::min(), Limits::max(), -1, 50};
        const int32_t a = far ? ends[random() % 4] : static_cast<int32_t>(random() % 140) - 20;
        const int32_t b = far ? ends[random() % 4] : static_cast<int32_t>(random() % 140) - 20;
        return std::minmax<int32_t>({a, b});
    };
    for (int step = 0; step < 5000; ++step) {
        const auto [left, right] = edges(step % 3 == 0);
        const auto [top, bottom] = edges(step % 3 == 0);
        const auto width = static_cast<int32_t>(1 + random() % 120);
        const auto height = static_cast<int32_t>(1 + random() % 40);
        const int32_t x = std::max(0, std::min(left, 100 - width)),
                      y = std::max(0, std::min(top, 90));
        const OrnMinRenderRect box{left, top, right, bottom}, asked{x, y, x + width, y + height};
        LabelPlaces places;
        places.BeginFrame(step, 100, 100);
        Rects labels;
        for (int i = 0; i < 20; ++i) {
            const auto [from, to] = edges(false);
            labels.push_back({from, to, from + 30, to + 10});
            places.AddLabel(labels.back());
            if (step % 2 == 1)
                places.AddBox({to, from, to + 20, from + 40});
        }
        const OrnMinRenderRect chosen = places.Choose({1, step % 5, box, asked});
        EXPECT_EQ(chosen.right - chosen.left, width);
        EXPECT_EQ(chosen.bottom - chosen.top, height);
        EXPECT_TRUE(chosen == asked || (chosen.left >= 0 && chosen.top >= 0));
        EXPECT_TRUE(chosen == asked || width > 100 || chosen.right <= 100);
        EXPECT_TRUE(chosen == asked || height > 100 || chosen.bottom <= 100);
    }
    LabelPlaces places; // beyond so many, nothing is looked at
    places.BeginFrame(0, 100, 100);
    for (int i = 0; i < 256; ++i)
        places.AddLabel(kAbove);
    EXPECT_EQ(places.Choose({1, 7, kBox, kAbove}), kAbove);
    places.AddLabel(kAbove);
    EXPECT_EQ(places.Labels().size(), 256u);
}
