// SPDX-License-Identifier: MIT
// Coordinates, lengths and sizes as scripts write them.
#include "overlay/messages.h"
#include "overlay/place.h"
#include "support/cases.h"

#include <sstream>

using overlay::Axis;

// In a frame of 200 x 101, where the coordinate before is 7: a word, x and y. A '!' is a refusal.
TEST(OverlayPlaces, Coordinates) {
    std::istringstream cases(R"(
12 12 12  -5 -5 -5  -0 0 0  9-3+1 7 7  50% 100 51  0.25% 1 0  -0.25% 0 0  0.24% 0 0  50%-8 92 43
50%-10%+1 81 41  1-50% -99 -49  left 0 !  left-3 -3 !  top ! 0  right 200 !  right-20 180 !
right+10% 220 !  bottom ! 101  bottom-1 ! 100  center 100 50  centre+1 101 51  text.left 11 !
text.center 22 34  text.right+4 38 !  text.top ! 22  text.bottom-50% ! -3  box.left 50 !
box.centre 61 71  box.right-1% 71 !  box.bottom ! 82  +80 87 87  +-80 -73 -73  +1%-1 8 7
2147483647+1 2147483647 2147483647  -2147483648-1 -2147483648 -2147483648  2147483648 ! !
-2147483649 ! !  1000000% 2000000 1010000  -1000000% -2000000 -1010000  1000001% ! !  - ! !
+ ! !  ++5 ! !  --5 ! !  5+ ! !  5- ! !  5--3 ! !  5+-3 ! !  5+left ! !  +left ! !  +top ! !
% ! !  +% ! !  5+.5% ! !  5%% ! !  5%3 ! !  5x ! !  5.5 ! !  x ! !  left5 ! !  top5 ! !
left+ ! !  right% ! !  middle ! !  text ! !  text. ! !  text.5 ! !  text.-5 ! !  box.50% ! !
box.text.left ! !  text.box.top ! !  box.+5 ! !  left.left ! !  nan% ! !  inf% ! !  /5 ! !
:5 ! !)");
    const overlay::Surroundings all{{0, 0, 200, 101}, {{11, 22, 34, 47}}, {{50, 61, 73, 82}}};
    for (std::string word, expected; cases >> word;)
        for (const Axis axis : {Axis::X, Axis::Y}) {
            overlay::PlaceResolver resolver(all);
            resolver.Resolve(overlay::ParsePlace("99", axis == Axis::X ? Axis::Y : Axis::X));
            resolver.Resolve(overlay::ParsePlace("7", axis));
            std::string found;
            const std::string refusal = Refusal([&] {
                found = std::to_string(*resolver.Resolve(overlay::ParsePlace(word, axis)));
            });
            cases >> expected;
            EXPECT_EQ(refusal.empty() ? found : "!", expected) << word;
        }
    for (const char *wrong : {"", "1 ", " 1"})
        EXPECT_EQ(Refusal([wrong] { overlay::ParsePlace(wrong, Axis::X); }).substr(0, 4), "bad ");
    EXPECT_EQ(Refusal([] { overlay::ParsePlace("top", Axis::X); }),
              "bad x coordinate 'top': expected a number, N%, +N, or left, center, right, each "
              "with +N or -N after it if need be");
    const overlay::Surroundings bare{{0, 0, 200, 101}, {}, {}};
    overlay::PlaceResolver resolver(bare);
    EXPECT_EQ(resolver.Resolve(overlay::ParsePlace("+3", Axis::X)), 3);
    EXPECT_FALSE(resolver.Resolve(overlay::ParsePlace("text.left", Axis::X)));
    EXPECT_FALSE(resolver.Resolve(overlay::ParsePlace("box.top", Axis::Y)));
    EXPECT_EQ(resolver.Resolve(overlay::ParsePlace("+3", Axis::X)), 6);
}

TEST(OverlayPlaces, LengthsAndSizes) {
    for (const char *right : {"0", "-5", "9", "10%+3", "5-9"})
        EXPECT_EQ(Refusal([right] { overlay::ParseLength(right, Axis::X); }), "") << right;
    for (const char *wrong : {"", "+5", "left", "text.left", "%"})
        EXPECT_EQ(Refusal([wrong] { overlay::ParseLength(wrong, Axis::Y); }),
                  "bad length '" + std::string(wrong) + "': expected a number or N%");
    for (const char *wrong : {"0", "0%", "1-1", "3-4", "1%-1", "1-1%", "0-1%", "1%-1%"})
        EXPECT_EQ(Refusal([wrong] { overlay::ParseSize(wrong); }),
                  "bad size '" + std::string(wrong) + "': expected more than 0");
    EXPECT_EQ(Refusal([] { overlay::ParseSize(""); }),
              "expected a size, found the end of the line");
    EXPECT_EQ(Refusal([] { overlay::ParseSize("-1"); }),
              "bad size '-1': expected a number, or N% of the height");
    std::istringstream cases("1 100 1  7 1 7  50% 101 51  50% 100 50  1% 149 1  1% 150 2  1% 49 1 "
                             "0.001% 9 1  10%+3 50 8  0+2% 100 2  2147483647+100% 9 2147483647");
    int32_t height, pixels;
    for (std::string size; cases >> size >> height >> pixels;)
        EXPECT_EQ(overlay::PixelsOf(overlay::ParseSize(size), height), pixels) << size;
}
