// SPDX-License-Identifier: MIT
// Coordinates, lengths and sizes as scripts write them, and the rows of frames in a stream.
#include "overlay/frame_memory.h"
#include "overlay/messages.h"
#include "overlay/place.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <sstream>

namespace {

using overlay::Axis;

// What is told of a word that is refused.
template <typename Parse> std::string Refusal(Parse parse) {
    try {
        parse();
    } catch (const overlay::Failure &failure) {
        return failure.what();
    }
    return "";
}

} // namespace

// In a frame of 200 x 101, where the coordinate before is 7: a word, x and y. A '!' is a refusal.
TEST(OverlayPlaces, Coordinates) {
    std::istringstream cases(
        "12 12 12  -5 -5 -5  -0 0 0  9-3+1 7 7  50% 100 51  0.25% 1 0  -0.25% 0 0  0.24% 0 0 "
        "50%-8 92 43  50%-10%+1 81 41  1-50% -99 -49  left 0 !  left-3 -3 !  top ! 0  right 200 ! "
        "right-20 180 !  right+10% 220 !  bottom ! 101  bottom-1 ! 100  center 100 50 "
        "centre+1 101 51  text.left 11 !  text.center 22 34  text.right+4 38 !  text.top ! 22 "
        "text.bottom-50% ! -3  box.left 50 !  box.centre 61 71  box.right-1% 71 !  box.bottom ! 82 "
        "+80 87 87  +-80 -73 -73  +1%-1 8 7  2147483647+1 2147483647 2147483647 "
        "-2147483648-1 -2147483648 -2147483648  2147483648 ! !  -2147483649 ! ! "
        "1000000% 2000000 1010000  -1000000% -2000000 -1010000  1000001% ! !  - ! !  + ! !  ++5 ! "
        "! "
        "--5 ! !  5+ ! !  5- ! !  5--3 ! !  5+-3 ! !  5+left ! !  +left ! !  +top ! !  % ! !  +% ! "
        "! "
        "5+.5% ! !  5%% ! !  5%3 ! !  5x ! !  5.5 ! !  x ! !  left5 ! !  top5 ! !  left+ ! !  "
        "right% ! ! "
        "middle ! !  text ! !  text. ! !  text.5 ! !  text.-5 ! !  box.50% ! !  box.text.left ! ! "
        "text.box.top ! !  box.+5 ! !  left.left ! !  nan% ! !  inf% ! !  /5 ! !  :5 ! !");
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

// A shape and strides in and out; bytes in, the stride in memory, how many runs of bytes pass, and
// how many bytes when the second run, or the only one, is short by one.
TEST(OverlayPlaces, RowsInStreams) {
    std::istringstream cases("4 2 1 0 0  12 4 1 11  5 3 1 0 0  27 6 5 9  5 3 0 0 0  15 5 1 14 "
                             "1 1 1 0 0  3 2 2 2  5 3 1 8 0  40 8 1 39  5 3 1 0 8  27 8 5 9 "
                             "5 3 0 7 6  21 7 1 20  4 2 1 6 6  18 6 1 17");
    int64_t in, out, stride;
    size_t bytes, passes, cut;
    for (overlay::FrameShape shape; cases >> shape.width >> shape.height >> shape.hasChroma >> in >>
                                    out >> bytes >> stride >> passes >> cut;) {
        const overlay::RawLayout from(shape, in);
        EXPECT_EQ(from.Bytes(), bytes);
        overlay::FrameMemory memory(shape, from, overlay::RawLayout(shape, out));
        const OrnMinRenderImage image = memory.Image();
        EXPECT_EQ(image.stride, stride);
        EXPECT_EQ(image.uvPlane,
                  shape.hasChroma ? image.yPlane + image.stride * shape.height : nullptr);
        size_t count = 0;
        const auto pass = [&](uint8_t *, size_t length) { return ++count, length; };
        EXPECT_EQ(memory.Transfer(from, pass), bytes);
        EXPECT_EQ(count, passes) << bytes;
        const size_t least = std::min<size_t>(passes, 2);
        count = 0;
        const auto fall = [&](uint8_t *, size_t length) { return length - (++count == least); };
        EXPECT_EQ(memory.Transfer(from, fall), cut) << bytes;
    }
}
