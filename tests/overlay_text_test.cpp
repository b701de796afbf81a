// SPDX-License-Identifier: MIT
// Texts: where they go, how they break into lines, what a font lacks of them, which font they get,
// and files that hold them.
#include "font_files.h"
#include "overlay/engine.h"
#include "overlay/font_set.h"
#include "overlay/paragraph.h"
#include "overlay/text_layout.h"
#include "support/cases.h"

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>

namespace {

using namespace std::string_literals;
using overlay::Edge;

struct TextTest : testing::Test {
    // Blocks of ink. A is 6 columns from the pen on and 7 rows above it, B 3 and 4; L has 3 columns
    // before the pen and 3 rows below. What the font lacks is 2 x 2.
    cbf::Font blocks = BlockFont();
    std::unique_ptr<OrnMinRenderContext, decltype(&OrnMinRenderDestroyContext)> context{
        OrnMinRenderCreateContext(), OrnMinRenderDestroyContext};
    std::filesystem::path folder = "/tmp/orn_overlay_XXXXXX";

    TextTest() {
        Add('B', 3, 4, 0, 4, 4);
        Add('L', 2, 2, -3, -1, 1);
        Add('-', 2, 1, 1, 3, 4);
        Add(' ', 0, 0, 0, 0, 5);
        std::string path = folder;
        folder = mkdtemp(path.data());
    }
    ~TextTest() override {
        std::filesystem::remove_all(folder);
    }
    void Add(uint32_t codePoint, int32_t width, int32_t height, int32_t x, int32_t y,
             int32_t advance) {
        blocks.glyphs[codePoint] = {
            width, height,  x,
            y,     advance, std::vector<uint8_t>(static_cast<size_t>(width * height), 1)};
    }
    overlay::Font Loaded() const {
        return overlay::Font(Load(cbf::WriteFont(blocks).bytes));
    }
    std::string Write(const std::string &name, const std::string &content) const {
        std::ofstream(folder / (name + ".new")) << content;
        std::filesystem::rename(folder / (name + ".new"), folder / name);
        return folder / name;
    }
};

using OverlayText = TextTest;

} // namespace

// In a frame of 100 x 60, "LA" lies in columns -3 to 7 of its pen and rows -7 to 3. A place, the
// parts that are asked for, a shape (an 'i': inside), and the pen and the rectangle.
TEST_F(OverlayText, Places) {
    std::istringstream cases(R"(
50 30 -- p 50 30 47 23 57 33  50 30 -- o 50 30 47 23 57 33  50 30 -- l 59 43 50 30 72 52
50 30 ss p 53 37 50 30 60 40  50 30 mm p 48 32 45 25 55 35  50 30 ee p 43 27 40 20 50 30
50 30 em l 37 32 28 19 50 41  left+3 top -- p 6 7 3 0 13 10
center centre-1 -- p 48 31 45 24 55 34  right-8 bottom -- l 79 51 70 38 92 60
right bottom so p 103 60 100 53 110 63  text.right text.bottom -- p 30 40 27 33 37 43
text.center box.center -- p 18 7 15 0 25 10  box.left +9 -- p 5 9 2 2 12 12
0 0 -- pi 3 7 0 0 10 10  2 8 -- pi 3 8 0 1 10 11  94 56 -- pi 93 56 90 49 100 59
99 58 -- pi 93 57 90 50 100 60  0 99 -- oi 6 54 3 47 13 57  99 0 -- oi 90 10 87 3 97 13
2147483647 -2147483648 -- p 2147483647 -2147483648 2147483644 -2147483648 2147483647 -2147483645)");
    const std::map<char, std::optional<Edge>> parts{
        {'-', {}}, {'s', Edge::Start}, {'m', Edge::Middle}, {'e', Edge::End}, {'o', Edge::Origin}};
    const std::map<char, overlay::TextShape> shapes{
        {'p', {}}, {'o', {0, 3, Edge::Origin}}, {'l', {6, 0, Edge::Start}}};
    overlay::Canvas canvas;
    canvas.context = context.get();
    canvas.shape = {100, 60, true, {}};
    const overlay::Surroundings all{{0, 0, 100, 60}, {{10, 20, 30, 40}}, {{5, 1, 25, 9}}};
    overlay::Overlay overlay;
    overlay.font = Loaded();
    for (std::string x, y, part, shape; cases >> x >> y >> part >> shape;) {
        overlay.places = {ParsePlace(x, overlay::Axis::X), ParsePlace(y, overlay::Axis::Y)};
        overlay::PlaceResolver resolver(all);
        canvas.coordinates = {*resolver.Resolve(overlay.places[0]),
                              *resolver.Resolve(overlay.places[1])};
        overlay.textStyle.horizontal = parts.at(part[0]);
        overlay.textStyle.vertical = parts.at(part[1]);
        overlay.textStyle.inside = shape.size() > 1;
        const auto [pen, rect] = PlaceText(canvas, overlay, "LA", shapes.at(shape[0]));
        for (const int32_t found : {pen.x, pen.y, rect.left, rect.top, rect.right, rect.bottom}) {
            int32_t expected = 0;
            cases >> expected;
            EXPECT_EQ(found, expected) << x << " " << y << " " << part << " " << shape;
        }
    }
    canvas.shape = {9, 9, true, {}}; // too small for it
    canvas.coordinates = {-50, 50};
    overlay.textStyle.inside = true;
    const OrnMinRenderPoint moved = PlaceText(canvas, overlay, "LA", {}).pen;
    EXPECT_TRUE(moved.x == 3 && moved.y == 7);
}

TEST_F(OverlayText, Lines) {
    const overlay::Font font = Loaded();
    const struct {
        const char *text;
        int32_t width;
        const char *marker;
        const char *expected;
    } cases[] = {{"A A A", 28, "- ", "A A A"},
                 {"A A A", 27, "- ", "A A\n- A"},
                 {"A A A", 16, "- ", "A\n- A\n- A"},
                 {"A  A", 12, "- ", "A\n- A"},
                 {"AAA", 12, "- ", "AA\n- A"},
                 {"A AAAA", 21, "- ", "A\n- AA\n- AA"},
                 {"A BAAA B", 19, "- ", "A\n- BA\n- A\n- A\n- B"},
                 {"LA", 9, "", "L\nA"},
                 {"\u00e9\u00e9\u00e9", 5, "", "\u00e9\u00e9\n\u00e9"},
                 {"   A", 12, "- ", "A"},
                 {"A\nA A\n\n", 10, "- ", "A\nA\n- A\n\n"},
                 {"\n A", 99, "- ", "\n A"},
                 {"", 99, "- ", ""}};
    for (const auto &[text, width, marker, expected] : cases)
        EXPECT_EQ(overlay::FitLines(text, {context.get(), font.get(), width, marker}), expected)
            << text << " in " << width;
}

// Of the font's ASCII, A is as the missing glyph in all but what a case says.
TEST_F(OverlayText, WhatTheFontLacks) {
    for (uint32_t c = '!'; c <= '~'; ++c)
        Add(c, 3, 3, 0, 3, 4);
    const std::string one = "the font lacks a character of the text: ";
    const auto told = [this](const std::string &text) {
        return overlay::GlyphGaps().NewIn(context.get(), Loaded(), 1, text);
    };
    const std::pair<std::string, std::string> cases[] = {
        {"!A~ \n\u00a0\u2000\u200a\u3000\ufffd\u25a1", ""},
        {"\u00e9", one + "\u00e9 (U+00E9)"},
        {"\t", one + "U+0009"},
        {"\x1f\x7f\u009f\u00a1\u1fff\u206f\u2070\ud7ff",
         "the font lacks 8 characters of the text: U+001F, U+007F, U+009F, \u00a1 (U+00A1), \u1fff "
         "(U+1FFF), U+206F, \u2070 (U+2070), \ud7ff (U+D7FF)"},
        {"\u200b\xED\xA0\x80", "the font lacks 2 characters of the text: U+200B, U+D800"},
        {"\u4e2d", one + "\u4e2d (U+4E2D)"},
        {"\U0001F600", one + "U+1F600"},
        {"\xF8\x88\x80\x80\x80", one + "U+200000"},
        {"\u00b1\u00b2\u00b3\u00b4\u00b5\u00b6\u00b7\u00b8\u00b9",
         "the font lacks 9 characters of the text: \u00b1 (U+00B1), \u00b2 (U+00B2), \u00b3 "
         "(U+00B3), "
         "\u00b4 (U+00B4), \u00b5 (U+00B5), \u00b6 (U+00B6), \u00b7 (U+00B7), \u00b8 (U+00B8), "
         "..."}};
    for (const auto &[text, expected] : cases)
        EXPECT_EQ(told(text), expected) << text;
    overlay::GlyphGaps gaps; // each is told once a line
    for (const auto &[line, expected] : {std::pair(1, 2), {1, 0}, {2, 2}, {1, 0}, {2, 0}})
        EXPECT_EQ(gaps.NewIn(context.get(), Loaded(), size_t(line), "\u00e9\u4e2d").empty(),
                  expected == 0);
    const cbf::Glyph missing = blocks.fallback;
    blocks.glyphs['A'] = missing; // stands for others, alone
    EXPECT_EQ(told("A"), "");
    for (const char other : {'!', '~'}) {
        blocks.glyphs.erase(uint32_t(other));
        EXPECT_EQ(told("A"), one + "A (U+0041)") << other;
        EXPECT_EQ(told({other}), one + other + (other == '!' ? " (U+0021)" : " (U+007E)"));
        blocks.glyphs[uint32_t(other)] = blocks.glyphs['B'];
    }
    for (const auto change : {&cbf::Glyph::bearingX, &cbf::Glyph::bearingY, &cbf::Glyph::advance}) {
        blocks.glyphs[0xE9] = missing;
        blocks.glyphs[0xE9].*change += 1;
        EXPECT_EQ(told("\u00e9"), "");
    }
    for (size_t pixel = 0; pixel < 4; ++pixel) {
        blocks.glyphs[0xE9] = missing;
        blocks.glyphs[0xE9].pixels[pixel] = 0;
        EXPECT_EQ(told("\u00e9"), "");
    }
}

TEST_F(OverlayText, Files) {
    const std::string path = Write("text", "first\r\n");
    overlay::TextFile file(path);
    EXPECT_EQ(file.Content(), "first");
    const std::string longest(65536, 'x');
    const std::pair<std::string, std::string> cases[] = {
        {"a\r\nb\r\n\n", "a\nb\n"}, {"\r", "\r"},      {"\n", ""},         {"\r\n\r\n", "\n"},
        {"a\rb\r\r\n", "a\rb\r"},   {"", ""},          {longest, longest}, {longest + "x", longest},
        {"same", "same"},           {"a\xff", "same"}, {"a\0"s, "same"},   {"next", "next"}};
    for (const auto &[content, expected] : cases) {
        Write("text", content);
        EXPECT_EQ(file.Content(), expected) << content.substr(0, 9);
        EXPECT_EQ(file.Content(), expected);
    }
    std::filesystem::remove(path);
    EXPECT_EQ(file.Content(), "next");
    std::filesystem::create_directory(path);
    EXPECT_EQ(file.Content(), "next");
    const auto refusal = [](const std::string &name) {
        return Refusal([&name] { overlay::TextFile none(name); });
    };
    EXPECT_EQ(refusal(path), path + ": is no regular file");
    std::filesystem::remove(path);
    EXPECT_EQ(refusal(path), path + ": No such file or directory");
    Write("text", longest + "x");
    EXPECT_EQ(refusal(path), path + ": has more than 65536 bytes");
    Write("text", "\xC3");
    EXPECT_EQ(refusal(path), path + ": is not UTF-8");
}

// The files of a set are those of the first folder that has any; the size that is nearest is taken.
TEST_F(OverlayText, SetsOfFonts) {
    const std::string fonts = "/orn-min-render/fonts/", home = folder / "home";
    for (const char *name : {"home", "near", "far"})
        std::filesystem::create_directories(folder.string() + "/" + name + fonts);
    std::istringstream files("set- set-7x set-x-24 xset-24 set--24 set-100000 set-12 set-8 set-008 "
                             "set-18 set-99999 set24 -3 set-u-22 set-u-26 set-v-21 set-v-26");
    for (std::string file; files >> file;)
        Write("near" + fonts + file + ".cbf", "");
    for (const std::string &name : {"set"s, "file"s, "near" + fonts + "set-23.cb",
                                    "far" + fonts + "set-24.cbf", "far" + fonts + "other-24.cbf"})
        Write(name, "");
    setenv("XDG_DATA_HOME", home.c_str(), 1);
    setenv("XDG_DATA_DIRS",
           ("near:" + (folder / "near").string() + "::" + folder.c_str() + "/far").c_str(), 1);
    // A name, a size, the frame's height, and the file that is taken, an N for those of near.
    std::istringstream cases(
        "set - 1080 N18  set 1 1080 N008  set 10 1080 N008  set 11 1080 N12 "
        "set 99999 1080 N99999  set 50% 20 N008  set 50% 21 N12  set 62.5% 24 N12 "
        "set 62.6% 24 N18  set 100000 1 N99999 "
        "set 10%+5 100 N12  set-x - 1080 Nx-24  ./set - 1080 ./set "
        "other 7 1080 far/orn-min-render/fonts/other-24.cbf "
        "file - 1080 file  .cbf - 1080 .cbf  set-u - 1 Nu-22  set-v - 1 Nv-26");
    int32_t height;
    for (std::string name, size, taken; cases >> name >> size >> height >> taken;) {
        std::optional<overlay::Place> wanted;
        if (size != "-")
            wanted = overlay::ParseSize(size);
        if (taken[0] == 'N')
            taken = "near" + fonts + "set-" + taken.substr(1) + ".cbf";
        const overlay::FontChoice choice(name, folder, wanted);
        EXPECT_EQ(choice.PathFor(height), folder / taken) << name << " " << size;
        EXPECT_EQ(choice.FollowsFrames(), size.find('%') != size.npos);
    }
    for (const char *none : {"none", "cbf", "xset-", "set-x-2", "SET"})
        EXPECT_EQ(Refusal([&] { overlay::FontChoice(none, folder, {}); })
                      .find(none + ": no such file, and no set of fonts: there is no "s + none +
                            "-SIZE.cbf in " + home + "/orn-min-render/fonts, " + folder.c_str() +
                            "/near/orn"),
                  0u);
    EXPECT_EQ(Refusal([&] { overlay::FontChoice("file", folder, overlay::ParseSize("9")); }),
              folder.string() + "/file: is one font, and has its own size: only sets take another");
    const std::string own = Write("home" + fonts + "set-40.cbf", ""); // the user's come first
    EXPECT_EQ(overlay::FontChoice("set", folder, {}).PathFor(9), own);
    unsetenv("XDG_DATA_HOME");
    unsetenv("XDG_DATA_DIRS");
}

// The two scripts of a row, of lines that end at a bar, draw the same.
TEST_F(OverlayText, Drawn) {
    const TempFile font(cbf::WriteFont(blocks).bytes);
    const auto drawn = [&font](std::string script, bool hasChroma) {
        std::replace(script.begin(), script.end(), '|', '\n');
        overlay::Engine engine({{}, true, {}});
        engine.SetFont(font.path);
        const overlay::Errors errors = engine.SetScript(script, "script");
        EXPECT_TRUE(errors.empty()) << script << ": " << errors[0].Message();
        engine.SetTracks({{"1,7,30,20,9,9\n1,8,34,20,9,9", "tracks"}}, {});
        engine.SetFrames({64, 48, hasChroma, {}});
        std::vector<uint8_t> bytes(64 * 72);
        engine.Draw({0, 64, 48, 64, bytes.data(), 0, hasChroma ? &bytes[64 * 48] : nullptr}, 0,
                    {0, 25});
        return bytes;
    };
    constexpr const char *same[][2] = {
        {"* label 9 9 white red \"BA\"|* fill text.left text.top text.right text.bottom blue",
         "* label 9 9 blue blue \"BA\""},
        {"* text 9 9 white \"A\"|* fill text.left text.top text.right text.bottom blue",
         "* fill 9 2 15 9 blue"},
        {"* text 30 10 white \"A\\nB\"", "* text 30 10 white \"A\"|* text 30 26 white \"B\""},
        {"* text 30 10 white down \"A\\nB\"",
         "* text 30 10 white down \"A\"|* text 14 10 white down \"B\""},
        {"* outlined 30 30 white red inverted \"A\\nB\"",
         "* outlined 30 30 white red inverted \"A\"|* outlined 30 14 white red inverted \"B\""},
        {"* paragraph 8 8 20 white red \"A A A\"", "* label 8 8 white red \"A A\\n- A\""},
        {"* paragraph 8 8 1%+0 white red plain \"AB\"", "* label 8 8 white red \"A\\nB\""},
        {"tracks label box.left box.top white red bottom \"{id}\"|tracks mask|* hline 1 60 19 cyan",
         "tracks mask|tracks label box.left box.top white red bottom \"{id}\"|* hline 1 60 19 "
         "cyan"},
        {"* label 32 30 white red avoid bottom \"A\"|* fill 32 29 40 47 blue",
         "* label 32 29 white red \"A\"|* fill 32 29 40 47 blue"},
        {"* mask 0 0 1 1", "* mask 0 0 1 1|tracks box box.left box.top box.right-1 box.bottom-1 id|"
                           "tracks label box.left box.top black id avoid bottom \"{id}\""},
        {"* outlined 0 0 white red inside \"A\"|* label -9 30 white red \"A\"",
         "* outlined 3 10 white red \"A\"|* label 0 30 white red \"A\""},
        {"* outlined 9 20 white red \"A\"",
         "* outlined 9 20 red red \"A\"|* text 9 20 white \"A\""},
    };
    for (const auto &[one, other] : same)
        for (const bool hasChroma : {false, true})
            EXPECT_EQ(drawn(one, hasChroma), drawn(other, hasChroma)) << one;
}

// Lines that are set by name are drawn upon the script, in the order in which the names came.
TEST_F(OverlayText, NamedLines) {
    const TempFile font(cbf::WriteFont(blocks).bytes);
    overlay::Engine engine({{}, true, {}});
    engine.SetFont(font.path);
    const auto told = [](const overlay::Errors &errors) {
        std::string all;
        for (const overlay::Error &error : errors)
            all += error.Message() + "|";
        return all;
    };
    std::vector<uint8_t> pixels(16 * 16);
    const auto shown = [&] { // of four columns; zeroes are what nothing is drawn into
        std::fill(pixels.begin(), pixels.end(), uint8_t{0});
        engine.Draw({0, 16, 16, 16, pixels.data(), 0, nullptr}, 0, {0, 25});
        return std::vector<int>(pixels.begin(), pixels.begin() + 4);
    };
    using Row = std::vector<int>;
    EXPECT_EQ(told(engine.SetScript("0 fill 0 0 4 1 #404040\n1- text 0 9 white \"x\"", "script")),
              "");
    EXPECT_EQ(told(engine.TakeNotes()),
              "script:2: the font lacks a character of the text: x (U+0078)|");
    EXPECT_TRUE(engine.Touches(0) == overlay::Planes::None && shown() == Row({0, 0, 0, 0}));
    engine.SetFrames({16, 16, false, {}});
    EXPECT_TRUE(engine.Touches(0) == overlay::Planes::LumaAndChroma);
    EXPECT_TRUE(engine.Touches(1) == overlay::Planes::Luma);
    const int dark = shown()[0];
    for (const char *line : {"set a * fill 1 0 4 1 #ffffff", "set b * fill 2 0 4 1 #000000",
                             "set c * fill 3 0 4 1 #ffffff", "set a * fill 1 0 3 1 #ffffff"})
        EXPECT_EQ(told(engine.Control(line, "input", 7)), "");
    const int white = shown()[3], black = shown()[2];
    EXPECT_EQ(shown(), Row({dark, white, black, white}));
    EXPECT_TRUE(dark > black && white > dark);
    EXPECT_EQ(told(engine.Control("clear b", "input", 7)), "");
    EXPECT_EQ(shown(), Row({dark, white, white, white}));
    const auto named = [&](size_t bytes) {
        return told(engine.Control("set " + std::string(bytes, 'n') + " 0 blob", "input", 8));
    };
    EXPECT_EQ(named(64), "input:8: unknown command 'blob'|");
    EXPECT_EQ(named(65), "input:8:5: the name has more than 64 bytes|");
    EXPECT_EQ(shown(), Row({dark, white, white, white}));
    engine.Control("set b * text 0 9 white \"{frame}y\"", "input", 9);
    shown();
    EXPECT_EQ(told(engine.TakeNotes()),
              "a control line: the font lacks 2 characters of the text: 0 (U+0030), y (U+0079)|");
    for (int i = 3; i < 1000; ++i) // with a, b and c there are 1000 then
        EXPECT_EQ(told(engine.Control("set " + std::to_string(i) + " 5 mask 0 0 1 1", "input", 1)),
                  "");
    EXPECT_EQ(told(engine.Control("set d * mask 0 0 1 1", "input", 2)),
              "input:2: there are 1000 names already|");
    EXPECT_EQ(told(engine.Control("set a 5 mask 0 0 1 1", "input", 3)), "");
    EXPECT_EQ(shown(), Row({dark, dark, dark, white}));
    engine.SetTracks({{"1,3,4,4,9,9\n1,3,4,4,9,9", "tracks"}}, {});
    EXPECT_EQ(told(engine.TakeNotes()), "tracks: frame 1 has two boxes of id 3|");
}
