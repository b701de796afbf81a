// SPDX-License-Identifier: MIT
// Lines of scripts and of other files taken apart: conditions, arguments, colours, texts, classes.
#include "overlay/arguments.h"
#include "overlay/class_names.h"
#include "overlay/placeholders.h"
#include "overlay/words.h"
#include "support/cases.h"

#include <sstream>

using std::string;

static const overlay::TrackedBox kBoxes[] = {{1, 1, 0, 0, 0, 0, 0.25, "man"},
                                             {2, 2, 0, 0, 0, 0, 0.5, "bus"},
                                             {3, -1, 0, 0, 0, 0, 0.75, "red \"bus\\"},
                                             {4, 12, 0, 0, 0, 0, 0.5}};

// Which boxes meet the conditions, and the rest of the line.
TEST(OverlayWords, Conditions) {
    const auto meet = [](const string &line) {
        std::string_view rest = line;
        const auto conditions = overlay::TakeConditions(rest);
        string met;
        for (const overlay::TrackedBox &box : kBoxes)
            met += MeetsAll(conditions, box) ? std::to_string(box.frame) : "";
        return met + ";" + string(rest);
    };
    ExpectAll(meet, R"(=>1234;|fill=>1234;fill|class man=>1234;class man| class=bus=>2;|class=b=>;
class=man x=>1; x|class!=man,bus	x=>34;	x|class="red \"bus\\",bus  =>23;  |class=""=>4;
class=man,"bus" "x"=>12; "x"|conf=0.5=>24;|conf!=0.5=>13;|conf>=0.5=>234;|conf>0.5=>3;
conf<=0.5 y=>124; y|conf<0.5=>1;|id=2,12=>24;|id!=1	id!=2=>34;|id=-1=>3;|conf>=5e-1=>234;
conf>=0.5 class!=bus id=1,2,12 fill 0=>4; fill 0|class==>!expected the name of a class|class="a=>!unt
class=bus, man=>!expected the name|class="a"b c=>!expected a blank before 'b'|class="\=>!unt|class="\"=>!unt
class>bus=>!equal or not: = or !=|id<=1=>!equal or not: = or !=|class="\x"=>!unknown escape '\x'
id==>!bad number ''|id=1,=>!bad number ''|id=1.=>!bad number|id=9223372036854775808=>!out of id range
conf==>!bad confidence '': expected a number|conf>=0.5,0.6=>!bad|conf<1e999=>!bad|conf<inf=>!bad)");
}

// The places among the arguments of commands, and their colours.
TEST(OverlayWords, Arguments) {
    std::ostringstream text;
    const auto take = [&text](std::string_view line, size_t) {
        overlay::Overlay overlay;
        overlay.perBox = overlay::NextWord(line) == "tracks";
        line.remove_prefix(overlay.perBox ? 7 : 0);
        const overlay::Command &command = overlay::FindCommand(overlay::TakeWord(line));
        overlay::TakeArguments(line, command, {"/dev", false, {}, {}}, overlay);
        for (const overlay::Place &place : overlay.places)
            text << "xy"[place.axis == overlay::Axis::Y] << place.share << "," << place.offset
                 << " ";
        text << std::hex << overlay.paints[0].rgb << std::dec;
    };
    const auto taken = [&](const string &script) {
        overlay::Errors errors;
        text.str("");
        overlay::ParseLines(script, "", errors, take);
        return errors.empty() ? text.str() : throw overlay::Failure(errors[0].Message());
    };
    ExpectAll(taken, "text 1 2 red \"\xC2\"=>!the string is not UTF-8");
    ExpectAll(taken, R"(# 1=>| # 1=>|	=>|fill 1 2 3=>!expected a number, found the end
fill 1 2 +3 +4 #09afAF=>x0,1 y0,2 x0,3 y0,4 9afaf|vline 1 2 +3 red # c=>x0,1 y0,2 y0,3 ff0000
hline 1 2 +3 red=>!:1: '+3' counts from|fill +1 2 3 4 red=>!'+1' counts from
roundfill 1 2 3 4 5 50% red #=>x0,1 y0,2 x0,3 y0,4 x0,5 y0.5,0 ff0000|fill 1 2 3 4=>!expected a colour
fill box.left 2 3 4 red=>!:1:6: 'box.left' works only in|fill 1 2 3 4 red #123456=>!unexpected '#12
tracks trail 1 red=>x0,1 ff0000|tracks trail 65535 red=>x0,65535 ff0000|tracks trail 0 red=>!1 to 65535
tracks trail 65536 red=>!bad number|fill 1 2 3 4 #g00000=>!bad colour|fill 1 2 3 4 id=>!:1:14: colour
polyline red 1,2=>!expected at least 2 points, found 1|loop red 1,2 3,4 #5=>!at least 3 points, found 2
loop red 1,2 3=>!bad point '3': expected X,Y|text 1 2 red=>!found the end of the line; usage: text X Y
paragraph 1 2 0 red red ""=>!bad width '0'|paragraph 1 2 0% red red ""=>!bad width '0%': expected more
paragraph 1 2 -1 red red ""=>!bad width '-1'|paragraph 1 2 1 red red ""=>x0,1 y0,2 x0,1 ff0000
paragraph 1 2 1%-9 red red ""=>x0,1 y0,2 x0.01,-9 ff0000|text 1 2 red "{a"=>!:1:15: '{' without '}'
paragraph 1 2 -1%+9 red red ""=>x0,1 y0,2 x-0.01,9 ff0000|loop red thick 3 dashed 1,2=>!two pixels thick
tracks mask #=>x0,0 y0,0 x0,0 y0,0 0|tracks mask red=>x0,0 y0,0 x0,0 y0,0 ff0000|mask red=>!bad x coord
tracks mask 1 2 3 4=>x0,1 y0,2 x0,3 y0,4 0|tracks mask 1 2 3=>!bad colour '1'|mask=>!found the end
tracks mosaic 3%=>x0,0 y0,0 x0,0 y0,0 y0.03,0 0|tracks mosaic 1 2 3 4=>!found the end of the line
picture 1 2 0 7 "null"=>!bad number '0'|picture 1 2 2 3 "null"=>!its 0 bytes are no whole frames of 6
picture 1 2 5% 3 "null"=>!N% is for|picture 1 2 3 5% "null"=>!N% is for|fill 1 2 auto 3 red=>!bad x coord
picture 1 2 auto 3 "null"=>!'auto' is for|picture 1 2 3 auto "null"=>!'auto' is for|ellipse thick=>!bad x
text 1 2 red "ä\"\\{}"=>!:1:20: unknown value '{}' in the text|text 1 2 red "{id}"=>!'{id}' works only
text 1 2 red "a{clock:%T%Qx}"=>!:1:16: the clock knows no '%Q'|text 1 2 red "{fps:}"=>!takes nothing
text 1 2 red "{file}"=>!'{file}' needs a name|ellipse 1 2 3 4 red thick=>!expected a size
box 1 2 3 4 red half=>!unexpected 'half'|box 1 2 3 4 red left=>!'left'|box 1 2 3 4 red inside=>!'inside'
box 1 2 3 4 red up=>!unexpected 'up'|box 1 2 3 4 red avoid=>!'avoid'|box 1 2 3 4 red plain=>!'plain'
bitmap 1 2 3 4 red dashed ""=>!found 'dashed'|label 1 2 red red half ""=>!found 'half'
ellipse 1 2 3 4 red dashed=>!unexpected 'dashed'|polygon red 1,2 3,4=>!at least 3 points, found 2)");
}

TEST(OverlayWords, ValuesAndColoursOfBoxes) {
    overlay::Canvas canvas;
    overlay::TrackedBox box = kBoxes[1];
    canvas.box = &box;
    canvas.frameNumber = 7;
    canvas.clock.utc = true;
    canvas.frameRate.Add(0);
    canvas.frameRate.Add(80000000);
    const auto shown = [&canvas](const string &text) {
        overlay::Overlay overlay;
        overlay.text = overlay::ParseText(text, true, "");
        return (Changes(overlay) ? FixedPartsOf(overlay) + "~" : "") + TextOf(canvas, overlay);
    };
    ExpectAll(shown, R"(=>|ab }{{c}{{=>ab }{c}{|a{frame}{frame}b=>ab~a77b|{{{frame}}=>{}~{7}
{fps}=>~12.5|{clock}=>~1970-01-01 00:00:00|{clock:}=>~1970-01-01 00:00:00|{clock:%H}=>~00
{id}/{class}=>/~2/bus)");
    const auto time = [&](const string &ticks) {
        canvas.time = {std::stoll(ticks), 100};
        return shown("{time}");
    };
    ExpectAll(time, R"(-5=>~00:00:00.0|9=>~00:00:00.0|19=>~00:00:00.1|5999=>~00:00:59.9
6000=>~00:01:00.0|359999=>~00:59:59.9|360000=>~01:00:00.0|36000000=>~100:00:00.0)");

    for (size_t i = 0; i < canvas.palette.size(); ++i)
        canvas.palette[i].y = static_cast<uint8_t>(i);
    const auto colour = [&](const string &id) {
        box.id = std::stoll(id);
        return std::to_string(ColourFor(canvas, {0, overlay::Own::Id, {}}).y);
    };
    ExpectAll(colour, "1=>0|24=>23|25=>0|0=>23|-1=>22|-9223372036854775808=>15");
    for (int i = 0; i < 10002; ++i)
        canvas.classColours.Add(std::to_string(i % 10001));
    for (const auto &[name, place] : {std::pair("0", 0u), {"1", 1}, {"9999", 9999}, {"10000", 0}})
        EXPECT_EQ(canvas.classColours.Of(name), place);
}

// At most twenty errors are told, and once that there are more, also of several files.
TEST(OverlayWords, NamesOfClasses) {
    overlay::Errors errors;
    const auto names = overlay::ParseClassNames(
        "\xEF\xBB\xBFman\n\n# c\r bus \r\n7: a\n2 :c: d\ne: f\n3\n4294967295:\nh", "", errors);
    string text;
    for (const auto &[number, name] : names)
        text += std::to_string(number) + "=" + name + " ";
    EXPECT_EQ(text, "0=man 1=bus 2=c: d 3=e: f 4=3 7=a 4294967295= 4294967296=h ");
    EXPECT_EQ(overlay::NameOfClass(names, 7) + overlay::NameOfClass(names, 6), "a6");
    string wrong = "4294967296: a\r\nb\xC2";
    for (const size_t told : {2u, 5u, 8u, 11u, 14u, 17u, 20u, 21u, 21u}) {
        overlay::ParseClassNames(wrong, "f", errors);
        EXPECT_EQ(errors.size(), told);
        wrong = "\xFF\n\xFF\n\xFF\n";
    }
    EXPECT_EQ(errors[20].Message(), "f: too many errors, the rest is not checked");
    EXPECT_EQ(errors[1].Message(), "f:2: the name of the class is not UTF-8");
}

// How many bytes can lead so many others. After 0x80 alone, some would be a zero.
TEST(OverlayWords, Utf8) {
    constexpr int expected[][3] = {{127, 127, 127}, {31, 32, 0}, {15, 16, 0}, {7, 8, 0},
                                   {3, 4, 0},       {1, 2, 0},   {0, 0, 0}};
    for (size_t others = 0; others < std::size(expected); ++others)
        for (size_t last = 0; last < 3; ++last) {
            int count = 0;
            for (int lead = 0; lead < 256; ++lead)
                count += overlay::IsDrawableUtf8(string(1, static_cast<char>(lead)) +
                                                 string(others, "\x80\xBF\xC0"[last]));
            EXPECT_EQ(count, expected[others][last]) << others;
        }
}

// As the standards' tables have red, green and blue: limited range, then full.
TEST(OverlayWords, Colours) {
    using namespace overlay;
    const auto yuv = [](const string &text) {
        const ColourSpace space{text[0] == 'l' ? Range::Limited : Range::Full,
                                text[1] == '7' ? Matrix::Bt709 : Matrix::Bt601};
        const OrnMinRenderColour c = ColourOf(ParseColour(text.substr(2)), space);
        return std::to_string(c.y) + " " + std::to_string(c.u) + " " + std::to_string(c.v);
    };
    ExpectAll(yuv, R"(l7red=>63 102 240|l7lime=>173 42 26|l7blue=>32 240 118|l6red=>81 90 240
l6lime=>145 54 34|l6blue=>41 240 110|f7red=>54 99 255|f7lime=>182 30 12|f7white=>255 128 128)");
}
