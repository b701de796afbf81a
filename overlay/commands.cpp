// SPDX-License-Identifier: MIT
// A command is a row here and a function that draws it; an option is a row here and a member of
// Overlay that it sets.
#include "commands.h"

#include "colour.h"
#include "draw_pictures.h"
#include "draw_privacy.h"
#include "draw_shapes.h"
#include "draw_text.h"
#include "words.h"

#include <algorithm>
#include <iterator>

namespace overlay {

namespace {

enum OptionSet : OptionSets {
    kDash = 1,
    kHalf = 2,
    kAlign = 4,
    kInside = 8,
    kTurn = 16,
    kLines = 32,
    kThick = 64,
    kMove = 128
};
constexpr OptionSets kStroke = kDash | kThick;
constexpr OptionSets kPlainText = kAlign | kInside | kTurn;

struct Option {
    std::string_view name;
    OptionSet set;
    void (*apply)(Overlay &overlay);
    void (*take)(Overlay &overlay, std::string_view word) = nullptr; // the word after it, too
};

constexpr Option kOptions[] = {
    {"dashed", kDash, [](Overlay &o) { o.style = OrnMinRenderLineDashed; }},
    {"thick", kThick, nullptr,
     [](Overlay &o, std::string_view size) { o.thickness = ParseSize(size); }},
    {"half", kHalf, [](Overlay &o) { o.halfTransparent = true; }},
    {"left", kAlign, [](Overlay &o) { o.textStyle.horizontal = Edge::Start; }},
    {"center", kAlign, [](Overlay &o) { o.textStyle.horizontal = Edge::Middle; }},
    {"centre", kAlign, [](Overlay &o) { o.textStyle.horizontal = Edge::Middle; }},
    {"right", kAlign, [](Overlay &o) { o.textStyle.horizontal = Edge::End; }},
    {"top", kAlign, [](Overlay &o) { o.textStyle.vertical = Edge::Start; }},
    {"middle", kAlign, [](Overlay &o) { o.textStyle.vertical = Edge::Middle; }},
    {"bottom", kAlign, [](Overlay &o) { o.textStyle.vertical = Edge::End; }},
    {"inside", kInside, [](Overlay &o) { o.textStyle.inside = true; }},
    {"down", kTurn, [](Overlay &o) { o.textStyle.direction = OrnMinRenderTextDirection::Down; }},
    {"up", kTurn, [](Overlay &o) { o.textStyle.direction = OrnMinRenderTextDirection::Up; }},
    {"inverted", kTurn,
     [](Overlay &o) { o.textStyle.direction = OrnMinRenderTextDirection::Inverted; }},
    {"avoid", kMove, [](Overlay &o) { o.textStyle.avoids = true; }},
    {"fixed", kMove, [](Overlay &o) { o.textStyle.avoids = false; }},
    {"plain", kLines, [](Overlay &o) { o.textStyle.hasMarkers = false; }},
};

constexpr Command kCommands[] = {
    {"box", "L T R B COLOUR [thick N] [dashed]", "xyxy", 1, kStroke, DrawBox},
    {"fill", "L T R B COLOUR", "xyxy", 1, 0, DrawFill},
    {"hline", "X0 X1 Y COLOUR [thick N] [dashed]", "xxy", 1, kStroke, DrawHLine},
    {"vline", "X Y0 Y1 COLOUR [thick N] [dashed]", "xyy", 1, kStroke, DrawVLine},
    {"line", "X0 Y0 X1 Y1 COLOUR [thick N] [dashed]", "xyxy", 1, kStroke, DrawLine},
    {"polyline", "COLOUR [thick N] [dashed] X,Y X,Y ...", "", 1, kStroke, DrawPolyline,
     Last::Points, 0, 2},
    {"loop", "COLOUR [thick N] [dashed] X,Y X,Y X,Y ...", "", 1, kStroke, DrawLoop, Last::Points, 0,
     3},
    {"polygon", "COLOUR X,Y X,Y X,Y ...", "", 1, 0, DrawPolygon, Last::Points, 0, 3},
    {"ellipse", "L T R B COLOUR [thick N]", "xyxy", 1, kThick, DrawEllipse},
    {"disc", "L T R B COLOUR", "xyxy", 1, 0, DrawDisc},
    {"roundbox", "L T R B RX RY COLOUR [thick N]", "xyxywh", 1, kThick, DrawRoundBox},
    {"roundfill", "L T R B RX RY COLOUR", "xyxywh", 1, 0, DrawRoundFill},
    {"bitmap", "L T R B COLOUR [half] \"file.pbm\"", "xyxy", 1, kHalf, DrawBitmap, Last::Bitmap},
    {"picture", "X Y WIDTH HEIGHT \"file.png\"", "xyaa", 0, 0, DrawPicture, Last::Picture},
    {"copy", "L T R B FROM_X FROM_Y", "xyxyxy", 0, 0, DrawCopy},
    {"text", "X Y COLOUR [ALIGN] [inside] [TURN] \"string\"", "xy", 1, kPlainText, DrawText,
     Last::String, kLumaAlone},
    {"outlined", "X Y COLOUR OUTLINE [ALIGN] [inside] [TURN] \"string\"", "xy", 2, kPlainText,
     DrawOutlined, Last::String, kLumaAlone},
    {"label", "X Y COLOUR BACKGROUND [ALIGN] [TURN] [avoid|fixed] \"string\"", "xy", 2,
     kAlign | kTurn | kMove, DrawLabel, Last::String, kKeptInside | kAvoidsInTracks},
    {"paragraph", "X Y WIDTH COLOUR BACKGROUND [ALIGN] [plain] \"string\"", "xyW", 2,
     kAlign | kLines, DrawParagraph, Last::String, kKeptInside},
    {"measure", "X Y [ALIGN] [inside] [TURN] \"string\"", "xy", 0, kPlainText, DrawMeasure,
     Last::String, kLumaAlone},
    {"mask", "L T R B [COLOUR]", "xyxy", 1, 0, DrawMask, Last::Nothing,
     kBoxUnasked | kBlackUnasked},
    {"mosaic", "L T R B SIZE", "xyxys", 0, 0, DrawMosaic, Last::Nothing, kBoxUnasked},
    {"trail", "FRAMES COLOUR [thick N] [dashed]", "n", 1, kStroke, DrawTrail, Last::Nothing,
     kTracksOnly},
};

// With their arguments, one a line.
std::string CommandList() {
    std::string list;
    for (const Command &command : kCommands)
        list.append("  ").append(command.name).append(" ").append(command.arguments).append("\n");
    return list;
}

} // namespace

const Command &FindCommand(std::string_view name) {
    const auto command = std::find_if(std::begin(kCommands), std::end(kCommands),
                                      [name](const Command &c) { return c.name == name; });
    if (command == std::end(kCommands))
        throw Failure("unknown command " + Quoted(name));
    return *command;
}

bool TakeOption(std::string_view &line, OptionSets sets, Overlay &overlay) {
    const std::string_view word = NextWord(line);
    const auto option =
        std::find_if(std::begin(kOptions), std::end(kOptions), [word, sets](const Option &o) {
            return o.name == word && (o.set & sets) != 0;
        });
    if (option == std::end(kOptions))
        return false;
    TakeWord(line);
    if (option->take)
        option->take(overlay, TakeWord(line));
    else
        option->apply(overlay);
    return true;
}

std::string ScriptHelp(const InputNames &names) {
    const std::string frames =
        "Script: one overlay a line, as FRAMES COMMAND ARGUMENTS. # begins a comment.\n"
        "FRAMES: * (all), 12, 10-50 (both included), 10- (to the end), or tracks (for\n"
        "each box of " +
        names.tracks +
        "), or tracks class=car,bus conf>=0.5 (for some of them).\n"
        "COMMAND ARGUMENTS:\n";
    const std::string words =
        "A line font \"file.cbf\", or font \"sans\" 2.5% with the name of an installed set and a "
        "size\n"
        "(N, or N% of the frame's height), names the font of the lines after it.\n"
        "Coordinates: 12, 50%, right-20, center, bottom-5%, +80 (from the one before), "
        "text.right+4\n"
        "(of the last text), box.top (of the tracked box).\n"
        "ALIGN: what lies at X Y: left, center or right; top, middle or bottom.\n"
        "TURN: down, up or inverted.\n"
        "avoid: the label takes the place where it covers least of other labels and boxes. Labels\n"
        "of tracks do so unless they are fixed.\n"
        "N, SIZE: pixels, or N% of the frame's height. mask and mosaic of tracks may leave out "
        "L T R B.\n"
        "WIDTH, HEIGHT of a picture: N, or auto, which keeps its shape.\n"
        "COLOUR: #rrggbb, id or class (the tracked box's own) or";
    return frames + CommandList() + words + ColourNames() +
           ".\nString: \\\" \\\\ \\n, and for their values {frame} {time} {fps}\n"
           "{clock:%F %T} {file:name.txt}, of the tracked box {id} {conf} {class}. {{ is a brace.";
}

} // namespace overlay
