// SPDX-License-Identifier: MIT
// Parts that scripts, tracks and messages share: frames of lines, lines of streams, words, files.
#include "overlay/line_splitter.h"
#include "overlay/notes.h"
#include "overlay/script.h"

#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

TEST(Parts, FramesOfScriptLines) {
    std::istringstream cases(R"(* fill 0 0 1 1 red > 0-9223372036854775807
0 fill 0 0 1 1 red > 0-0
7- fill 0 0 1 1 red > 7-9223372036854775807
7-7 fill 0 0 1 1 red > 7-7
4294967294-4294967295 fill 0 0 1 1 red > 4294967294-4294967295
8-7 fill 0 0 1 1 red > s:1: frame range reversed '8-7'
1-4294967296 fill 0 0 1 1 red > s:1: number out of frame range '4294967296'
5-6-7 fill 0 0 1 1 red > s:1: bad number '6-7'
-5 fill 0 0 1 1 red > s:1: bad frames '-5': expected *, N, N-M, N- or tracks
5x fill 0 0 1 1 red > s:1: bad frames '5x': expected *, N, N-M, N- or tracks
tracks fill 0 0 1 1 red > s:1: 'tracks' needs tracked boxes: name their file by tracks
* trail 5 red > s:1: 'trail' has a meaning in lines of 'tracks' only
* fill text.left 0 1 1 red > s:1: no text in the lines before to count from
* > s:1: expected a command after the frames
font > s:1: expected a string in double quotes, found the end of the line)");
    for (std::string line; std::getline(cases, line);) {
        overlay::Errors errors;
        const size_t end = line.find(" > ");
        const auto overlays = overlay::ParseScript(line.substr(0, end), "s", {}, errors).overlays;
        std::ostringstream told;
        if (!overlays.empty())
            told << overlays[0].frames.first << "-" << overlays[0].frames.last;
        for (const overlay::Error &error : errors)
            told << error.Message();
        EXPECT_EQ(told.str(), line.substr(end + 3));
    }
}

TEST(Parts, LinesOfPieces) {
    const char *const cases[][3] = {
        {"ab\ncd", "", "1ab 2cd "}, {"abcd\n", "", "1abcd "},        {"abcde\n", "", "1! "},
        {"\n", "\n", "1 2 "},       {"abc", "d", "1abcd "},          {"abc", "de", "1! "},
        {"abcde", "", "1! "},       {"abcde", "f\nok\n", "1! 2ok "}, {"", "", ""}};
    for (const auto &[first, second, expected] : cases) {
        overlay::LineSplitter splitter(4);
        std::ostringstream text;
        const auto take = [&text](std::string_view line, size_t number, bool isTooLong) {
            text << number << (isTooLong ? "!" : line) << " ";
        };
        splitter.Feed(first, take);
        splitter.Feed(second, take);
        splitter.End(take);
        EXPECT_EQ(text.str(), expected);
    }
}

TEST(Parts, WordsInMessages) {
    const std::string most = "0123456789012345678901234567890123456789";
    const std::pair<std::string, std::string> words[] = {
        {most, most},
        {most + "0", most + "..."},
        {most.substr(1) + "é", most.substr(1) + "..."},
        {most.substr(2) + "é", most.substr(2) + "é"},
        {"\x1F \x7E\x7F\x80\xC3\x80", "? ~?\x80\xC3\x80"},
        {"\xC2\x80\xC2\x9F\xC2\xA0\xC2", "??\xC2\xA0\xC2"},
        {std::string(41, '\x80'), "..."}};
    for (const auto &[word, shown] : words)
        EXPECT_EQ(overlay::Quoted(word), "'" + shown + "'");
    const overlay::Error errors[] = {{"f", 1, "r", 1}, {"f", 0, "r"}};
    EXPECT_EQ(errors[0].Message() + errors[1].Message(), "f:1:1: rf: r");
    overlay::Notes notes;
    for (int count = 0; count < 23; ++count)
        notes.Add("f", 7, "n");
    const overlay::Errors told = notes.Take();
    ASSERT_EQ(told.size(), 21u);
    EXPECT_EQ(told[19].Message() + told[20].Message(),
              "f:7: nf: there is more to note, which is not told");
    notes.Add("f", 7, "n");
    EXPECT_TRUE(notes.Take().empty());
    notes.Forget();
    notes.Add("f", 7, "n");
    EXPECT_EQ(notes.Take().size(), 1u);
}

TEST(Parts, StillsHaveLimits) {
    const std::string path = testing::TempDir() + "orn_limit.png";
    const auto decode = [](std::string_view, int32_t, int32_t) {
        return overlay::Pixels{1, 1, {1, 2, 3, 4}};
    };
    for (const size_t bytes : {1u << 26, (1u << 26) + 1}) {
        std::ofstream(path).close();
        std::filesystem::resize_file(path, bytes);
        overlay::StillFile still(path, {}, {}, decode);
        EXPECT_EQ(still.Scaled(), nullptr);
        try {
            still.ScaleFor(1);
        } catch (const overlay::FileFailure &failure) {
            EXPECT_EQ(failure.reason, "has more than 67108864 bytes");
        }
        EXPECT_EQ(still.Scaled() != nullptr, bytes == 1 << 26);
    }
    std::filesystem::remove(path);
    for (const auto &[name, is] : {std::pair("a.JPG", true),
                                   {"b/a.jpeG", true},
                                   {"AZ.PNG", true},
                                   {"a.raw", false},
                                   {".png/a", false},
                                   {"a.png0", false}})
        EXPECT_EQ(overlay::IsStill(name), is) << name;
}
