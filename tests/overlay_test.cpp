// SPDX-License-Identifier: MIT
// What the engine of overlays promises to clients beyond what orn-overlay shows: frames in any
// order, settings that change between frames, errors as values.
#include "overlay/engine.h"

#include <cstdlib>
#include <fstream>
#include <gtest/gtest.h>
#include <random>
#include <vector>

namespace {

using overlay::Engine;
using overlay::Errors;
using overlay::FrameShape;

constexpr int32_t kWidth = 16;
constexpr int32_t kHeight = 12; // dashes begin at 8
const FrameShape kY8{kWidth, kHeight, false, {}};

// The bytes of one frame that was zero: luma, then chroma of the same stride.
std::vector<uint8_t> Drawn(Engine &engine, int64_t number, bool hasChroma = false) {
    std::vector<uint8_t> bytes(kWidth * (kHeight + kHeight / 2));
    OrnMinRenderImage image{};
    image.width = kWidth;
    image.height = kHeight;
    image.stride = kWidth;
    image.yPlane = bytes.data();
    image.uvPlane = hasChroma ? bytes.data() + kWidth * kHeight : nullptr;
    engine.Draw(image, number, {number, 25});
    return bytes;
}

std::string Told(const Errors &errors) {
    std::string told;
    for (const overlay::Error &error : errors)
        told += error.Message() + "\n";
    return told;
}

// A folder with a picture of two frames, 2 x 2 pixels of luma alone, or of one and a third with
// chroma.
struct Folder {
    std::string path = "/tmp/orn_overlay_XXXXXX";
    Folder() {
        if (!mkdtemp(path.data()))
            abort();
        std::ofstream(path + "/two.raw") << "abcdefgh";
    }
    ~Folder() {
        std::remove((path + "/two.raw").c_str());
        std::remove(path.c_str());
    }
};

} // namespace

// Overlay i owns column i of row 0, and is shown in its range alone.
TEST(Overlay, FramesInAnyOrder) {
    constexpr int64_t ranges[][2] = {{3, 9}, {0, 0}, {5, 1000}, {9, 9}, {4, 4}, {0, 7}, {2, 3}};
    std::string script;
    for (size_t i = 0; i < std::size(ranges); ++i)
        script += std::to_string(ranges[i][0]) + "-" + std::to_string(ranges[i][1]) + " fill " +
                  std::to_string(i) + " 0 +1 1 white\n";
    Engine engine({});
    ASSERT_EQ(Told(engine.SetScript(script, "script")), "");
    engine.SetFrames(kY8);
    std::mt19937 random(1);
    for (int step = 0; step < 200; ++step) {
        const int64_t number = step < 14 ? step : static_cast<int64_t>(random() % 12);
        const std::vector<uint8_t> bytes = Drawn(engine, number);
        for (size_t i = 0; i < std::size(ranges); ++i)
            EXPECT_EQ(bytes[i] != 0, ranges[i][0] <= number && number <= ranges[i][1])
                << "step " << step << " frame " << number << " overlay " << i;
    }
}

// Luma is the same with chroma and without, and from whichever corner or end a shape is told.
TEST(Overlay, LumaIsOneWhateverTheLayoutAndTheOrder) {
    constexpr const char *shapes[][2] = {
        {"box A B C D white dashed", "box C B A D white dashed"},
        {"box A B C D white", "box A D C B white"},
        {"hline A C B white dashed", "hline C A B white dashed"},
        {"vline A B D white dashed", "vline A D B white dashed"},
        {"vline A B D white", "vline A D B white"},
        {"fill A B C D white", "fill C D A B white"},
        {"ellipse A B C D white", "ellipse C D A B white"},
        {"copy A B C D 3 2", "copy C B A D 3 2"},
    };
    std::mt19937 random(3);
    for (size_t step = 0; step < 600; ++step) {
        std::string numbers[4];
        for (std::string &number : numbers)
            number = std::to_string(static_cast<int>(random() % 24) - 3);
        std::vector<uint8_t> expected;
        for (const std::string shape : shapes[step % std::size(shapes)]) {
            std::string script = "* fill 1 1 9 7 red\n* ";
            for (const char c : shape)
                script += c >= 'A' && c <= 'D' ? numbers[c - 'A'] : std::string(1, c);
            for (const bool hasChroma : {false, true}) {
                Engine engine({});
                ASSERT_EQ(Told(engine.SetScript(script, "script")), "");
                engine.SetFrames({kWidth, kHeight, hasChroma, {}});
                std::vector<uint8_t> luma = Drawn(engine, 0, hasChroma);
                luma.resize(kWidth * kHeight);
                expected = expected.empty() ? luma : expected;
                EXPECT_EQ(luma, expected) << script << ", chroma: " << hasChroma;
            }
        }
    }
}

TEST(Overlay, PicturesFollowTheShape) {
    const Folder folder;
    const std::string file = folder.path + "/script";
    const std::string script = "* fill 9 0 10 1 white\n\n1- picture 0 0 2 2 \"two.raw\"";
    const std::string refusal =
        file + ":3: " + folder.path + "/two.raw: its 8 bytes are no whole frames of 6\n";
    Engine engine({});
    ASSERT_EQ(Told(engine.SetScript(script, file)), "");
    EXPECT_EQ(Told(engine.SetFrames({kWidth, kHeight, true, {}})), refusal);
    EXPECT_TRUE(Drawn(engine, 1, true)[9] && !Drawn(engine, 1, true)[0]); // the rest is drawn
    EXPECT_EQ(Told(engine.SetFrames(kY8)), "");
    for (const auto &[number, luma] : {std::pair(2, 'e'), {3, 'a'}, {1, 'a'}, {2, 'e'}})
        EXPECT_EQ(Drawn(engine, number)[0], luma) << number;
    engine.SetFrames({kWidth, kHeight, true, {}});
    engine.SetFrames(kY8);
    EXPECT_EQ(Drawn(engine, 2)[0], 'e'); // opened again, and read again
    Engine early({{}, false, true});     // knows of the chroma before the script comes
    EXPECT_EQ(Told(early.SetScript(script, file)), refusal);

    engine.SetScript("* picture 0 0 2 2 \"two.raw\"", file);
    std::ofstream(folder.path + "/two.raw") << "abcd";
    EXPECT_THROW(Drawn(engine, 1), overlay::Failure);
    EXPECT_EQ(Drawn(engine, 0)[0], 'a');
}

TEST(Overlay, SizesOfPicturesFollowTheHeight) {
    const Folder folder;
    const std::string name = folder.path + "/white.png";
    std::ofstream(name) << "white";
    overlay::Settings settings;
    settings.decodePicture = [](std::string_view, int32_t width, int32_t height) {
        const auto bytes = static_cast<size_t>(4 * width * height);
        return overlay::Pixels{width, height, std::vector<uint8_t>(bytes, 255)};
    };
    Engine engine(settings);
    engine.SetScript("* picture 0 0 25% 1 \"" + name + "\"", "script");
    for (const int32_t height : {4, 8, 1, 4}) {
        EXPECT_EQ(Told(engine.SetFrames({kWidth, height, false, {}})), "");
        const std::vector<uint8_t> bytes = Drawn(engine, 0);
        const int32_t side = std::max(1, height / 4);
        EXPECT_TRUE(bytes[0] && !bytes[static_cast<size_t>(side)]) << height;
        EXPECT_TRUE(bytes[static_cast<size_t>(side - 1)]) << height;
    }
    std::remove(name.c_str());
    EXPECT_NE(Told(engine.SetFrames({kWidth, 8, false, {}})), "");
    EXPECT_FALSE(Drawn(engine, 0)[0]);
}

TEST(Overlay, ErrorsAreValuesAndChangeNothing) {
    Engine engine({{"font=", "tracks=", "first="}, true, {}});
    engine.SetScript("tracks fill box.left 0 +1 1 white", "right");
    engine.SetTracks({{"1,1,2,0,1,1", "right"}}, {});
    engine.SetFrames(kY8);
    const auto before = Drawn(engine, 0);
    EXPECT_TRUE(before[2]);
    EXPECT_EQ(Told(engine.SetScript("# first\n* text 0 9 red \"x\"\n* blob", "wrong")),
              "wrong:2: 'text' needs a font: name one by font= or in a line before, "
              "or install the package orn-min-render-fonts\n"
              "wrong:3: unknown command 'blob'\n");
    EXPECT_EQ(Told(engine.SetTracks({{"0,1,2,0,1,1", "wrong"}}, {})),
              "wrong:1: bad frame '0': the first one is 1, unless first= is given\n");
    EXPECT_EQ(Told(engine.SetFont("/nowhere.cbf")), "/nowhere.cbf: No such file or directory\n");
    EXPECT_EQ(Drawn(engine, 0), before);
    std::string many;
    for (int line = 0; line < 30; ++line)
        many += "blob\n";
    const Errors errors = engine.SetScript(many, "many");
    ASSERT_EQ(errors.size(), 21u);
    EXPECT_EQ(errors.back().Message(), "many: too many errors, the rest is not checked");
}

// Boxes that come with their frames are drawn beside those of a table; a trail follows them.
TEST(Overlay, BoxesOfFrames) {
    Engine engine({{}, true, {}});
    engine.SetScript("tracks trail 5000 white\ntracks fill box.left 0 +1 1 white", "script");
    engine.SetTracks({{"1,1,15,0,1,1", "tracks"}}, {});
    engine.SetFrames(kY8);
    const auto give = [&engine](int64_t number, std::vector<double> lefts) {
        std::vector<overlay::TrackedBox> boxes;
        for (const double left : lefts)
            boxes.push_back({0, 7 - static_cast<int64_t>(boxes.size()), left, 0, left + 1, 2, 1});
        engine.SetBoxes(number, boxes);
        return engine.Touches(number);
    };
    EXPECT_EQ(give(5, {}), overlay::Planes::None);
    EXPECT_EQ(give(0, {1, 3}), overlay::Planes::LumaAndChroma);
    auto bytes = Drawn(engine, 0);
    EXPECT_TRUE(bytes[1] && !bytes[2] && bytes[3] && bytes[15]);
    EXPECT_FALSE(bytes[2 * kWidth + 3]);                        // no trail yet
    EXPECT_EQ(give(1, {9, 3}), overlay::Planes::LumaAndChroma); // of the frame alone
    bytes = Drawn(engine, 1);
    EXPECT_TRUE(!bytes[1] && bytes[9] && bytes[2 * kWidth + 3] && bytes[2 * kWidth + 8]);
    EXPECT_EQ(Told(engine.TakeNotes()), "");
    engine.SetBoxes(2100, {{0, -1, 9, 0, 10, 2, 1}, {0, -1, 9, 0, 10, 2, 1}});
    for (int64_t number = 2101; number < 2103; ++number)
        engine.SetBoxes(number,
                        {{0, 5, 9, 0, 10, 2, 1}, {0, 4, 9, 0, 10, 2, 1}, {0, 5, 1, 0, 2, 2, 1}});
    EXPECT_EQ(Told(engine.TakeNotes()), "tracked boxes: frame 2101 has two of one id\n");
}
