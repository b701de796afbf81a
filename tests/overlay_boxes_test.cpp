// SPDX-License-Identifier: MIT
// Tracked boxes by frame: between rows, where they have been, and those that come with the frames.
#include "overlay/live_boxes.h"
#include "overlay/tracks.h"

#include <gtest/gtest.h>
#include <sstream>

using overlay::LiveBoxes;
using overlay::TrackedBox;
using overlay::Tracks;

// Of "frame id left", and so on: 2 pixels wide.
static std::vector<TrackedBox> BoxesOf(const std::string &rows) {
    std::istringstream in(rows);
    std::vector<TrackedBox> boxes;
    for (TrackedBox box{}; in >> box.frame >> box.id >> box.left; boxes.push_back(box))
        box.right = box.left + 2;
    return boxes;
}

template <typename Boxes> static std::string TextOf(const Boxes &boxes) {
    std::string text;
    for (const TrackedBox &box : boxes)
        text += std::to_string(box.id) + "@" + std::to_string(RectOf(box).left) + " ";
    return text + "|";
}

// Where the left edges were.
static std::string TextOf(const std::vector<OrnMinRenderPoint> &feet) {
    std::string text;
    for (const OrnMinRenderPoint &point : feet)
        text += std::to_string(point.x - 1) + " ";
    return text;
}

TEST(Boxes, LieBetweenTheRowsOfATrack) {
    const std::tuple<const char *, int64_t, const char *> cases[] = {
        {"", 9, "||||||"},
        {"2 1 3", 9, "||1@3 ||||"},
        {"1 1 0 4 1 3", 3, "|1@0 |1@1 |1@2 |1@3 ||"},
        {"1 1 0 4 1 3", 2, "|1@0 |||1@3 ||"},
        {"1 0 0 3 0 2", 2, "|0@0 |0@1 |0@2 |||"},
        {"1 -1 0 3 -1 2", 9, "|-1@0 ||-1@2 |||"},
        {"1 1 0 3 2 2", 9, "|1@0 ||2@2 |||"},
        {"1 1 0 1 1 4 3 1 6", 9, "|1@0 1@4 |1@5 |1@6 |||"},
        {"5 1 4 1 1 0 3 1 8", 2, "|1@0 |1@4 |1@8 |1@6 |1@4 |"},
        {"-2 1 0 2 1 4", 4, "1@2 |1@3 |1@4 ||||"},
        {"1 -1 5 1 -1 3 1 -3 4", 0, "|-3@4 -1@5 -1@3 |||||"},
    };
    for (const auto &[rows, maxGap, expected] : cases) {
        Tracks tracks(BoxesOf(rows), maxGap);
        std::string shown[6];
        for (const int frame : {0, 1, 2, 3, 4, 5, 4, 0, 3, 3, 2, 1, 5, 0})
            shown[frame] = TextOf(tracks.At(frame));
        EXPECT_EQ(shown[0] + shown[1] + shown[2] + shown[3] + shown[4] + shown[5], expected);
    }
    const TrackedBox from{0, 1, 0, 0, 10, 20, 1, "a"};
    Tracks tracks({from, {4, 1, 8, 4, 12, 40, 0.5, "b"}}, 4);
    EXPECT_EQ(tracks.At(1)[0].top, 1);
    tracks.SetScale(2, 3);
    const TrackedBox &box = tracks.At(1)[0];
    EXPECT_TRUE(box.left == 4 && box.top == 3 && box.right == 21 && box.bottom == 75);
    EXPECT_TRUE(box.confidence == 0.875 && box.className == "a" && box.frame == 1);
}

TEST(Boxes, AreRoundedToPixels) {
    const std::pair<double, int32_t> edges[] = {{-0.5, 0},          {-0.51, -1}, {0.49, 0},
                                                {0.5, 1},           {-1.5, -1},  {1e300, INT32_MAX},
                                                {-1e300, INT32_MIN}};
    for (const auto &[edge, pixel] : edges)
        EXPECT_EQ(overlay::RectOf({0, 0, edge, 0, 0, 0, 1}).left, pixel) << edge;
}

TEST(Boxes, TrailsEndWhereTheTrackDoes) {
    const auto boxes =
        BoxesOf("1 1 0 2 1 2 5 1 8 6 1 9 3 0 50 4 0 51 3 2 60 5 2 60 5 2 70 5 -1 1 6 -1 2");
    const std::tuple<const char *, int64_t, int32_t, const char *> cases[] = {
        {"6 1 9", 3, 1, "9 8 "},    {"6 1 9", 3, 4, "9 8 6 4 2 "}, {"6 1 9", 3, 9, "9 8 6 4 2 0 "},
        {"6 1 9", 2, 9, "9 8 "},    {"4 1 6", 3, 1, "6 4 "},       {"4 1 6", 3, 9, "6 4 2 0 "},
        {"4 0 51", 9, 9, "51 50 "}, {"5 2 60", 9, 9, "60 60 60 "}, {"6 -1 2", 9, 9, "2 "},
        {"7 1 9", 9, 2, "9 9 8 "},  {"8 1 9", 9, 2, "9 "},         {"5 9 7", 9, 2, "7 "},
        {"5 0 7", 9, 1, "7 51 "},
    };
    for (const auto &[box, maxGap, frames, feet] : cases)
        EXPECT_EQ(TextOf(Tracks(boxes, maxGap).Trail(BoxesOf(box)[0], frames)), feet) << box;
    EXPECT_EQ(TextOf(Tracks().Trail(BoxesOf("5 1 7")[0], 9)), "7 ");
}

TEST(Boxes, RepeatsAreTold) {
    const char *const cases[][2] = {
        {"", ""},
        {"1 1 0 2 1 0 1 2 0 1 -1 0 1 -1 0", ""},
        {"1 1 0 5 0 0 5 0 0", "frame 7 has two boxes of id 0"},
        {"1 1 0 1 1 0 1 1 0 2 1 0", "frame 3 has two boxes of id 1, and there is 1 more like this"},
        {"1 1 0 1 1 0 2 1 0 2 1 0 2 3 0 2 3 0",
         "frame 3 has two boxes of id 1, and there are 2 more like this"},
    };
    for (const auto &[rows, told] : cases)
        EXPECT_EQ(Tracks(BoxesOf(rows)).Repeats(2), told);
}

TEST(Boxes, ComeWithFrames) {
    LiveBoxes boxes;
    const auto shown = [&boxes](int64_t frame) {
        return TextOf(boxes.At(frame)) + (boxes.HasRepeat(frame) ? "twice" : "");
    };
    boxes.Append(5, BoxesOf("0 2 1 0 1 2 0 2 3"));
    boxes.Append(6, BoxesOf("0 -1 2 0 -1 1 0 2 7 0 3 7"));
    boxes.Append(8, BoxesOf("0 0 1 0 0 2"));
    EXPECT_EQ(shown(4) + shown(5) + shown(6), "|1@2 2@1 2@3 |twice-1@2 -1@1 2@7 3@7 |");
    EXPECT_EQ(shown(7) + shown(8) + shown(9), "|0@1 0@2 |twice|");
    boxes.Append(8, BoxesOf("0 2 4"));
    EXPECT_EQ(shown(5) + shown(8), "|2@4 |");
    boxes.Append(7, {});
    EXPECT_TRUE(boxes.At(7).empty() && boxes.At(8).empty());
    const auto trail = [&boxes](const char *box, int32_t frames) {
        return TextOf(boxes.Trail(BoxesOf(box)[0], frames));
    };
    EXPECT_EQ(trail("1 1 7", 9), "7 ");
    for (const int64_t frame : {1, 2, 4, 5, 6})
        boxes.Append(frame, BoxesOf("0 -1 9 0 5 3 0 0 " + std::to_string(frame)));
    EXPECT_EQ(trail("6 0 6", 1) + trail("6 0 6", 9), "6 5 6 5 4 ");
    EXPECT_EQ(trail("6 -1 6", 9) + trail("6 4 1", 9) + trail("7 6 1", 9), "6 1 1 ");
    for (int64_t frame = 0; frame <= 2001; ++frame) {
        EXPECT_EQ(frame == 2001 ? boxes.Trail(boxes.At(2000).first[0], 9999).size() : 2001, 2001u);
        boxes.Append(frame, BoxesOf("0 1 1"));
    }
    EXPECT_EQ(boxes.Trail(boxes.At(2001).first[0], 9999).size(), 1001u); // which are promised
}
