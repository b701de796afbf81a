// SPDX-License-Identifier: MIT
// Files of tracks in all formats, whole and as they arrive.
#include "overlay/track_stream.h"

#include <algorithm>
#include <cstring>
#include <gtest/gtest.h>
#include <sstream>

using overlay::Errors;
using overlay::TrackedBox;
using overlay::TrackFormat;
using overlay::TrackSettings;

static std::string TextOf(const TrackedBox &box) {
    char text[200];
    std::snprintf(text, sizeof text, "%lld:%lld %g,%g-%g,%g %g", static_cast<long long>(box.frame),
                  static_cast<long long>(box.id), box.left, box.top, box.right, box.bottom,
                  box.confidence);
    return text + (box.className.empty() ? "" : " " + box.className) + "\n";
}

static std::string TextOf(const Errors &errors) {
    std::string text;
    for (const overlay::Error &error : errors)
        text += error.Message() + "\n";
    return text;
}

// All boxes, and then what is wrong.
static std::string Parsed(const std::string &file, const TrackSettings &settings = {}) {
    Errors errors;
    std::string text;
    for (const TrackedBox &box : overlay::ParseTracks({{file, "f"}}, settings, {}, errors).boxes)
        text += TextOf(box);
    return text + TextOf(errors);
}

// Files and what they give, or how that begins when no bar, which stands for a line feed, ends it.
TEST(Tracks, FilesOfAllFormats) {
    std::istringstream cases(
        R"(1,3,2,4,10,20,0.5|1,3,2,4,10,20,1,7,0.9 > 0:3 2,4-12,24 0.5|0:3 2,4-12,24 1 bus|
1,3,2,4,10,20,1,7,8,9|1,3,2,4,10,20,1,-1,-1 > 0:3 2,4-12,24 1|0:3 2,4-12,24 1|
frame,id,left,top,width,height,confidence|1,3,2,4,10,20,0.5 > 0:3 2,4-12,24 0.5|
frame,id,x,y,w,h|1,3,2,4,10,20 > 0:3 2,4-12,24 1|
{"frame": 12, "boxes": [{"id": 3, "class": "person", "conf": 0.91, "box": [2, 4, 12, 24]}]} > 11:3 2,4-12,24 0.91 person|
|{"frame":1,"boxes":[{"class":7,"box":[0,0,0,0]}]} > 0:-1 0,0-0,0 1 bus|
1 7 0.5 0.5 0.25 0.5|2 8 0.5 0.5 1 1 0.5 3 > 0:-1 0.375,0.25-0.625,0.75 1 bus|1:3 0,0-1,1 0.5 8|
 [{"image_id": 2, "category_id": 7, "bbox": [2, 4, 10, 20], "score": 0.5}] > 1:-1 2,4-12,24 0.5 bus|
0,3,2,4,10,20 > f:1: bad frame '0': the first one is 1, unless first frame is given|
1,1.5,2,4,10,20|1,1,2,4,-1,20 > f:1: bad id '1.5': expected a whole number|f:2: bad width '-1': expected 0 or more|
1,1,inf,4,1,20|1,1,nan,4,1,2|1,1,1e308,3,1e308,5 > f:1: bad left 'inf': expected a number|f:2: bad left 'nan'
{"frame": 1, "boxes": [{"box": [3, 2, 1, 4]}]} > f:1: bad right '1': it lies left of the left edge|
[1 > f: result 1: expected an object with "image_id"|f: the file is no JSON from byte 3 on|
1,1,1e12,-1e12,0,0 > 0:1 1e+12,-1e+12-1e+12,-1e+12 1|
1,1,1000000000001,0,0,0 > f:1: bad left '1000000000001': expected a number from -1e12 to 1e12|
4294967295,-4294967295,0,0,0,0 > 4294967294:-4294967295 0,0-0,0 1|
1,1,0,0,1,1,1,7|1,1,0,0,1,1,1,0|1,1,0,0,1,1,1,7,1,1,1 > 0:1 0,0-1,1 1 bus|0:1 0,0-1,1 1 0|0:1 0,0-1,1 1|
1,1,0,0,1,1,|1,1,0,0,1,1,2e12 > f:1: bad confidence '': expected a number|f:2: bad confidence '2000000000000'
1,1,0,0,1|1,1,0,0,1,1,high > f:1: expected frame,id,left,top,width,height and perhaps confidence, found 5 values|f:2: bad confidence 'high'
1 7 -2 2 2 0 0.5 3 9 > f:1: expected frame class x y width height and perhaps confidence and id, found 9
7 0 -2.5 1 1 > f:1: bad y '-2.5': expected a part of 1, the frame's width or height, not pixels|
1 > f:1: expected frame class x y width height and perhaps confidence and id, found 1 value|
7 -2 2 2 0|1 7 0 0 1 1|1 7 0 0 1 1 1 0 > 0:-1 -3,2--1,2 1 bus|0:-1 -0.5,-0.5-0.5,0.5 1 bus|0:0 -0.5,
{"frame":1,"boxes":[{"box":[0,1,0,1],"id":null}]}|{"frame":1e999} > 0:-1 0,1-0,1 1|f:2: the line holds a
{"frame":1,"boxes":{}}|{"frame":1,"boxes":[{"box":[0,1,2]}]}|{"frame":1,"boxes":[{"box":[0,2,0,1]}]} > f:1: bad "boxes": expected an array|f:2: bad "box": expected four numbers|f:3: bad bot
{"frame":1,"boxes":[{"box":[0,0,0,0],"class":"\u0000"}]} > f:1: the name of the class is not UTF-8|
[{"image_id":1,"bbox":[0,0,1,1],"track_id":3,"more":{"a":[1,{}]}},[[1]]] > 0:3 0,0-1,1 1|f: result 2: expected
FRAME_ID,X1,Y_MIN,XMAX,BBOX_HEIGHT|1,2,3,4,5 > 0:-1 2,3-4,8 1|
frame,x1,left,top,w,bottom,|1,9,2,3,4,5,0.5,8,8 > 0:-1 2,3-6,5 1|
frame,left,top,right,w,bottom,h|1,2,3,10,99,20,99|1,2,3,,4,,5 > 0:-1 2,3-10,20 1|0:-1 2,3-6,8 1|
frame,left,top,w,h,id,score|1,2,3,4,5|1,2,3,4,5,0,0.5 > 0:-1 2,3-6,8 1|0:0 2,3-6,8 0.5|
frame,left,top,w,h,class,cls|1,2,3,4,5,7,8|1,2,3,4,5,,7 > 0:-1 2,3-6,8 1 bus|0:-1 2,3-6,8 1 bus|
frame_no,a,top,w,h > f:1: the first row has to name the columns frame, left, top, right or width, and bottom
frame_no,left,top,w,a > f:1: the first row
class,frame,x1,y1,w,h| a	,1,2,3,4,5|"a,b" ,1,2,3,4,5 > 0:-1 2,3-6,8 1 a|0:-1 2,3-6,8 1 a,b|
class,frame,x1,y1,w,h|"a"b,1,2,3,4,5|a"b,1,2,3,4,5|"",1,2,3,4,5 > 0:-1 2,3-6,8 1 ab|0:-1 2,3-6,8 1 a"b|0:-1 2,3-6,8 1|
class,frame,x1,y1,w,h|"a"" > f:2: a quote)");
    TrackSettings settings;
    settings.classes[7] = "bus";
    for (std::string line; std::getline(cases, line);) {
        std::replace(line.begin(), line.end(), '|', '\n');
        const size_t end = line.find(" > ");
        const std::string expected = line.substr(end + 3);
        const size_t most = expected.back() == '\n' ? expected.npos : expected.size();
        EXPECT_EQ(Parsed(line.substr(0, end), settings).substr(0, most), expected);
    }
    const std::string row = "2,3,4,5" + std::string(60, ',') + "1,x";
    EXPECT_EQ(Parsed("left,top,w,h" + std::string(60, ',') + "frame,id\n" + row),
              "0:-1 2,3-6,8 1\n");
    EXPECT_EQ(Parsed("left,top,w,h" + std::string(61, ',') + "frame").substr(0, 13),
              "f:1: the firs");
    EXPECT_THROW(overlay::FieldsBetweenCommas({"\"a\"", 2}), overlay::Failure);
}

TEST(Tracks, SettingsHold) {
    TrackSettings settings;
    settings.firstFrame = 5;
    settings.minConfidence = 0.5;
    EXPECT_EQ(Parsed("3,1,0,0,1,1\n5,2,0,0,1,1,0.5\n5,3,0,0,1,1,0.4", settings),
              "-2:1 0,0-1,1 1\n0:2 0,0-1,1 0.5\n");
    EXPECT_EQ(Parsed("{\"frame\":5,\"boxes\":[{\"box\":[0,0,1,1],\"conf\":0.4},"
                     "{\"box\":[0,0,1,2],\"conf\":0.5}]}",
                     settings),
              "0:-1 0,0-1,2 0.5\n");
    const char *const formats[][3] = {{"csv", "1,2\n3,4", "f:1: the first row has"},
                                      {"yolo", "1,2", "f:1: expected frame class"},
                                      {"mot", "7", "f:1: expected frame,id,"},
                                      {"jsonl", "7", "f:1: expected an object with"},
                                      {"coco", "{}", "f: expected an array"},
                                      {"coco", "7", "f: expected an array"},
                                      {"coco", " []", ""}};
    for (const auto &[format, file, told] : formats) {
        settings.format = overlay::TrackFormatOf(format).value();
        EXPECT_EQ(Parsed(file, settings).substr(0, std::strlen(told)), told);
    }
    EXPECT_FALSE(overlay::TrackFormatOf("json"));
    for (const auto &[count, lines] : {std::pair(19, 19), {20, 21}, {30, 21}}) {
        std::string file = "[1";
        for (int i = 1; i < count; ++i)
            file += ",1";
        const std::string told = Parsed(file + "]", settings);
        EXPECT_EQ(std::count(told.begin(), told.end(), '\n'), lines) << told;
        EXPECT_EQ(told.find("too many errors") != told.npos, lines > 20);
    }
}

TEST(Tracks, FilesOfYoloAreOfOneFrameEach) {
    Errors errors;
    const auto parsed = overlay::ParseTracks(
        {{"0 0.5 0.5 1 1 0.75\n", "one", 3}, {"0 0.5 0.5 1 1 0.25 9", "other", 7}}, {}, {}, errors);
    EXPECT_TRUE(parsed.inShares && errors.empty());
    EXPECT_EQ(TextOf(parsed.boxes.at(0)) + TextOf(parsed.boxes.at(1)),
              "2:-1 0,0-1,1 0.75 0\n6:9 0,0-1,1 0.25 0\n");
    overlay::ParseTracks({{"0 0 0 1\n0 0 0 1 1 1 1 1", "wrong", 3}}, {}, {}, errors);
    EXPECT_EQ(TextOf(errors), "wrong:1: expected class x y width height and perhaps confidence and "
                              "id, found 4 values\nwrong:2: expected class x y width height and "
                              "perhaps confidence and id, found 8 values\n");
}

// What a stream gives for a frame as soon as it has it.
static std::string Taken(overlay::TrackStream &stream, int64_t upTo) {
    std::string text;
    while (const auto frame = stream.Take(upTo))
        for (const TrackedBox &box : frame->boxes)
            text += TextOf(box);
    return text;
}

TEST(TrackStream, AFrameIsThereWhenALaterOneBegins) {
    overlay::TrackStream stream({}, {}, "f", {100, 100, false, {}});
    EXPECT_EQ(TextOf(stream.Feed("1,1,0,0,1,1\n1,2,0,0,")), "");
    EXPECT_FALSE(stream.Has(0));
    EXPECT_EQ(TextOf(stream.Feed("1,1\n4,1,0,0,1,1\n")), "");
    EXPECT_TRUE(stream.Has(2) && !stream.Has(3));
    EXPECT_EQ(Taken(stream, 9), "0:1 0,0-1,1 1\n0:2 0,0-1,1 1\n");
    EXPECT_EQ(TextOf(stream.Feed("3,1,0,0,1,1\n5,1,0,0,blob,1\n5,1,0,0,1,1")),
              "f:4: the row comes too late: rows must be sorted by frame, and a later frame has "
              "come already\nf:5: bad width 'blob': expected a number\n");
    EXPECT_EQ(TextOf(stream.End()), "");
    EXPECT_TRUE(stream.Has(INT64_MAX / 2));
    EXPECT_EQ(Taken(stream, 9), "3:1 0,0-1,1 1\n4:1 0,0-1,1 1\n");
    EXPECT_EQ(stream.Waiting(), 0u);
}

TEST(TrackStream, JsonLinesAreWholeFramesAndYoloIsScaled) {
    overlay::TrackStream json({}, {}, "f", {100, 100, false, {}});
    json.Feed("{\"frame\": 3, \"boxes\": []}\n");
    EXPECT_TRUE(json.Has(2) && !json.Has(3));
    EXPECT_NE(TextOf(json.Feed("{\"frame\": 3, \"boxes\": []}\n")), "");
    overlay::TrackStream yolo({}, {}, "f", {200, 100, false, {}});
    yolo.Feed("1 0 0.5 0.5 0.5 0.5\n");
    yolo.End();
    EXPECT_EQ(Taken(yolo, 0), "0:-1 50,25-150,75 1 0\n");
}

TEST(TrackStream, TheNewestIsWhatWasSaidLast) {
    overlay::TrackStream stream({}, {}, "f", {100, 100, false, {}});
    stream.Feed("1,1,0,0,1,1\n2,1,0,0,1,1\n5,1,7,0,1,1\n");
    EXPECT_EQ(stream.TakeNewest()->number, 1);
    EXPECT_FALSE(stream.TakeNewest());
    stream.Pause();
    EXPECT_EQ(TextOf(stream.TakeNewest()->boxes.at(0)), "4:1 7,0-8,1 1\n");
    stream.Feed("5,2,0,0,1,1\n");
    stream.Pause();
    EXPECT_EQ(stream.TakeNewest()->boxes.size(), 2u);
    const std::string most = "6,1,0,0,1,1" + std::string((1 << 20) - 11, ' ');
    EXPECT_EQ(TextOf(stream.Feed(most)), "");
    EXPECT_EQ(TextOf(stream.Feed("\n\n" + most + " ")), "");
    EXPECT_EQ(TextOf(stream.Feed(" \n7\n")).substr(0, 74),
              "f:7: the line has more than 1048576 bytes\nf:8: expected frame,id,left,top,");
    EXPECT_EQ(TextOf(stream.Feed(most + most)), "");
    EXPECT_EQ(TextOf(stream.End()), "f:9: the line has more than 1048576 bytes\n");
}

TEST(TrackStream, RowsThatComeBefore) {
    TrackSettings settings;
    settings.maxGap = 3;
    overlay::TrackStream sorted(settings, {}, "f", {100, 100, false, {}});
    EXPECT_FALSE(sorted.Has(0));
    EXPECT_EQ(
        TextOf(sorted.Feed("5,1,0,0,1,1\n3,1,0,0,1,1\n5,0,0,0,1,1\n7,0,2,0,1,1\n")).substr(0, 20),
        "f:2: the row comes t");
    EXPECT_EQ(sorted.Waiting(), 4u); // one was made
    overlay::TrackStream any(settings, {}, "f", {100, 100, false, {}});
    any.AllowAnyOrder();
    EXPECT_EQ(TextOf(any.Feed("5,1,0,0,1,1\n6,-1,0,0,1,1\n2,1,0,0,1,1\n2,-1,0,0,1,1\n")), "");
    EXPECT_FALSE(any.TakeNewest() || any.Has(0) || any.Waiting() != 2);
    any.Feed("5,1,6,0,1,1\n5,-1,0,0,1,1\n9,1,0,0,1,1\n");
    EXPECT_FALSE(any.Take(0));
    EXPECT_EQ(Taken(any, 1), "1:1 0,0-1,1 1\n1:-1 0,0-1,1 1\n");
    EXPECT_EQ(Taken(any, 9), "2:1 2,0-3,1 1\n3:1 4,0-5,1 1\n4:1 6,0-7,1 1\n4:-1 0,0-1,1 1\n");
    EXPECT_EQ(any.Waiting(), 1u);
    any.Pause();
    EXPECT_EQ(any.TakeNewest()->number, 8);
    any.Feed("9,2,0,0,1,1\n12,2,0,0,1,1\n13,2,0,0,1,1\n");
    EXPECT_EQ(any.Waiting(), 6u);
    EXPECT_TRUE(any.TakeNewest()->number == 11 && any.Waiting() == 2);
}

// Boxes of a frame, and ids that gaps are filled for: those that are known go on when no more fit.
TEST(TrackStream, HasLimits) {
    TrackSettings settings;
    settings.maxGap = 2;
    overlay::TrackStream stream(settings, {}, "f", {100, 100, false, {}});
    std::string rows;
    for (int id = 0; id < 65537; ++id)
        rows += "1," + std::to_string(id) + ",0,0,1,1\n";
    EXPECT_EQ(TextOf(stream.Feed(rows)), "f:65537: the frame has more than 65536 boxes\n");
    stream.Feed("2,65535,0,0,1,1\n2,65536,0,0,1,1\n4,65535,0,0,1,1\n4,65536,0,0,1,1\n");
    EXPECT_EQ(stream.Waiting(), 65536u + 5);
    overlay::TrackStream coco({}, {}, "f", {100, 100, false, {}});
    EXPECT_EQ(TextOf(coco.Feed("\n\n[\n")).substr(0, 30), "f:3: COCO results are one arra");
}
