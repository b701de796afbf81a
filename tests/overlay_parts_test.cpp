// SPDX-License-Identifier: MIT
// Frames of script lines, and the wording of messages.
#include "overlay/notes.h"
#include "overlay/script.h"

#include <gtest/gtest.h>
#include <sstream>

TEST(Parts, FramesOfScriptLines) {
    std::istringstream cases(R"(* fill 0 0 1 1 red > 0-9223372036854775807
0 fill 0 0 1 1 red > 0-0
7- fill 0 0 1 1 red > 7-9223372036854775807
4294967294-4294967295 fill 0 0 1 1 red > 4294967294-4294967295
8-7 fill 0 0 1 1 red > s:1: frame range reversed '8-7'
1-4294967296 fill 0 0 1 1 red > s:1: number out of frame range '4294967296'
5-6-7 fill 0 0 1 1 red > s:1: bad number '6-7'
5x fill 0 0 1 1 red > s:1: bad frames '5x': expected *, N, N-M, N- or tracks
tracks fill 0 0 1 1 red > s:1: 'tracks' needs tracked boxes: name their file by tracks
* trail 5 red > s:1: 'trail' works only in lines that begin with 'tracks'
* fill text.left 0 1 1 red > s:1: text.left and the like count from a text before them, and there is none
* > s:1: expected a command after the frames)");
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

TEST(Parts, WordsInMessages) {
    const std::string most = "0123456789012345678901234567890123456789";
    const std::pair<std::string, std::string> words[] = {
        {most, most},
        {most + "0", most + "..."},
        {most.substr(2) + "é", most.substr(2) + "é"},
        {"\x1F \x7E\x7F\x80\xC3\x80", "? ~?\x80\xC3\x80"},
        {"\xC2\x80\xC2\x9F\xC2\xA0\xC2", "??\xC2\xA0\xC2"},
        {"\xC2\x85", "?"},
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
    notes.Forget();
    notes.Add("f", 7, "n");
    EXPECT_EQ(notes.Take().size(), 1u);
}

TEST(Parts, NamesOfStills) {
    for (const char *const name : {"a.JPG", "b/a.jpeG", "AZ.PNG"})
        EXPECT_TRUE(overlay::IsStill(name)) << name;
    for (const char *const name : {"a.raw", ".png/a", "a.png0", "png"})
        EXPECT_FALSE(overlay::IsStill(name)) << name;
}
