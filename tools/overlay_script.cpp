// Parsing of scripts. A line is its frames, the name of a command, and the arguments that the table
// of commands lists for it, always in the order coordinates, colours, options, points or string.
#include "overlay_script.h"

#include <algorithm>
#include <limits>
#include <numeric>

namespace {

constexpr int64_t kLastFrame = std::numeric_limits<int64_t>::max();

// ---- The language ----

// Which options a command takes.
enum OptionSet : unsigned { kDash = 1, kHalf = 2, kAlign = 4, kInside = 8, kTurn = 16 };
constexpr unsigned kPlainText = kAlign | kInside | kTurn;

struct Option {
    std::string_view name;
    unsigned set;
    void (*apply)(Overlay &overlay);
};

constexpr Option kOptions[] = {
    {"dashed", kDash, [](Overlay &o) { o.style = OrnMinRenderLineDashed; }},
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
};

enum class Last { Nothing, Points, String, Bitmap, Picture };

// Kinds of coordinates, a letter each: x and y are places, w and h lengths, and n counts from 1 on.
struct Command {
    std::string_view name;
    std::string_view arguments; // as people read them
    std::string_view coordinates;
    size_t colours;
    unsigned options; // of OptionSet
    Last last;
    DrawFunction draw;
};

constexpr Command kCommands[] = {
    {"box", "L T R B COLOUR [dashed]", "xyxy", 1, kDash, Last::Nothing, DrawBox},
    {"fill", "L T R B COLOUR", "xyxy", 1, 0, Last::Nothing, DrawFill},
    {"hline", "X0 X1 Y COLOUR [dashed]", "xxy", 1, kDash, Last::Nothing, DrawHLine},
    {"vline", "X Y0 Y1 COLOUR [dashed]", "xyy", 1, kDash, Last::Nothing, DrawVLine},
    {"line", "X0 Y0 X1 Y1 COLOUR [dashed]", "xyxy", 1, kDash, Last::Nothing, DrawLine},
    {"polyline", "COLOUR [dashed] X,Y X,Y ...", "", 1, kDash, Last::Points, DrawPolyline},
    {"loop", "COLOUR [dashed] X,Y X,Y X,Y ...", "", 1, kDash, Last::Points, DrawLoop},
    {"polygon", "COLOUR X,Y X,Y X,Y ...", "", 1, 0, Last::Points, DrawPolygon},
    {"ellipse", "L T R B COLOUR", "xyxy", 1, 0, Last::Nothing, DrawEllipse},
    {"disc", "L T R B COLOUR", "xyxy", 1, 0, Last::Nothing, DrawDisc},
    {"roundbox", "L T R B RX RY COLOUR", "xyxywh", 1, 0, Last::Nothing, DrawRoundBox},
    {"roundfill", "L T R B RX RY COLOUR", "xyxywh", 1, 0, Last::Nothing, DrawRoundFill},
    {"bitmap", "L T R B COLOUR [half] \"file.pbm\"", "xyxy", 1, kHalf, Last::Bitmap, DrawBitmap},
    {"picture", "X Y WIDTH HEIGHT \"file.raw\"", "xynn", 0, 0, Last::Picture, DrawPicture},
    {"copy", "L T R B FROM_X FROM_Y", "xyxyxy", 0, 0, Last::Nothing, DrawCopy},
    {"text", "X Y COLOUR [ALIGN] [inside] [TURN] \"string\"", "xy", 1, kPlainText, Last::String,
     DrawText},
    {"outlined", "X Y COLOUR OUTLINE [ALIGN] [inside] [TURN] \"string\"", "xy", 2, kPlainText,
     Last::String, DrawOutlined},
    {"label", "X Y COLOUR BACKGROUND [ALIGN] [TURN] \"string\"", "xy", 2, kAlign | kTurn,
     Last::String, DrawLabel},
    {"paragraph", "X Y WIDTH COLOUR BACKGROUND [ALIGN] \"string\"", "xyw", 2, kAlign, Last::String,
     DrawParagraph},
    {"measure", "X Y [ALIGN] [inside] [TURN] \"string\"", "xy", 0, kPlainText, Last::String,
     DrawMeasure},
    {"trail", "FRAMES COLOUR [dashed]", "n", 1, kDash, Last::Nothing, DrawTrail},
};

// ---- Frames ----

int64_t ParseFrame(std::string_view word) {
    return static_cast<int64_t>(ParseNumber<uint32_t>(word, "frame"));
}

void TakeFrames(std::string_view &line, Overlay &overlay) {
    const std::string_view word = TakeWord(line);
    overlay.lastFrame = kLastFrame;
    overlay.perBox = word == "tracks";
    if (word == "*" || overlay.perBox)
        return;
    if (!IsDigit(word[0]) || word.find_first_not_of("0123456789-") != std::string_view::npos)
        throw Failure("bad frames " + Quoted(word) + ": expected *, N, N-M, N- or tracks");
    const size_t dash = word.find('-');
    overlay.firstFrame = ParseFrame(word.substr(0, dash));
    if (dash == std::string_view::npos)
        overlay.lastFrame = overlay.firstFrame;
    else if (dash + 1 < word.size())
        overlay.lastFrame = ParseFrame(word.substr(dash + 1));
    if (overlay.lastFrame < overlay.firstFrame)
        throw Failure("frame range reversed " + Quoted(word));
}

// ---- Arguments ----

const Command &TakeCommand(std::string_view &line) {
    const std::string_view name = TakeWord(line);
    if (name.empty())
        throw Failure("expected a command after the frames");
    const auto command = std::find_if(std::begin(kCommands), std::end(kCommands),
                                      [name](const Command &c) { return c.name == name; });
    if (command == std::end(kCommands))
        throw Failure("unknown command " + Quoted(name));
    return *command;
}

// "+N" counts from the coordinate before it, so there has to be one.
void AddPlace(std::string_view word, Axis axis, Overlay &overlay) {
    const Place place = ParsePlace(word, axis);
    const auto &places = overlay.places;
    const auto sameAxis = [axis](const Place &other) { return other.axis == axis; };
    if (place.source == Source::Before && std::none_of(places.begin(), places.end(), sameAxis))
        throw Failure("no coordinate before " + Quoted(word) + " to count from");
    if (place.source == Source::Box && !overlay.perBox)
        throw Failure(Quoted(word) + " has a meaning in lines of 'tracks' only");
    overlay.places.push_back(place);
}

void AddCount(std::string_view word, Overlay &overlay) {
    Place count;
    count.offset = ParseNumber<int32_t>(word, "int32");
    if (count.offset < 1 || count.offset > kMaxSide)
        throw Failure("bad number " + Quoted(word) + ": expected 1 to " + std::to_string(kMaxSide));
    overlay.places.push_back(count);
}

void AddCoordinate(std::string_view word, char kind, Overlay &overlay) {
    if (kind == 'n')
        AddCount(word, overlay);
    else if (kind == 'w' || kind == 'h')
        overlay.places.push_back(ParseLength(word, kind == 'w' ? Axis::X : Axis::Y));
    else
        AddPlace(word, kind == 'x' ? Axis::X : Axis::Y, overlay);
}

void TakeCoordinates(std::string_view &line, const Command &command, Overlay &overlay) {
    for (size_t i = 0; i < command.coordinates.size(); ++i) {
        const std::string_view word = TakeWord(line);
        if (word.empty())
            throw Failure("expected " + std::string(command.arguments) +
                          ", found the end of the line");
        AddCoordinate(word, command.coordinates[i], overlay);
    }
}

void TakeColours(std::string_view &line, size_t count, const ColourSpace &space, Overlay &overlay) {
    for (size_t i = 0; i < count; ++i) {
        const std::string_view word = TakeWord(line);
        overlay.paints[i].ofId = word == "id";
        if (!overlay.paints[i].ofId)
            overlay.paints[i].colour = ColourOf(ParseColour(word), space);
        else if (!overlay.perBox)
            throw Failure("colour 'id' has a meaning in lines of 'tracks' only");
    }
}

void TakeOptions(std::string_view &line, unsigned allowed, Overlay &overlay) {
    for (;;) {
        const std::string_view word = NextWord(line);
        const auto option =
            std::find_if(std::begin(kOptions), std::end(kOptions),
                         [&](const Option &o) { return o.name == word && (o.set & allowed) != 0; });
        if (option == std::end(kOptions))
            return;
        option->apply(overlay);
        TakeWord(line);
    }
}

void AddPoint(std::string_view word, Overlay &overlay) {
    const size_t comma = word.find(',');
    if (comma == std::string_view::npos)
        throw Failure("bad point " + Quoted(word) + ": expected X,Y");
    AddPlace(word.substr(0, comma), Axis::X, overlay);
    AddPlace(word.substr(comma + 1), Axis::Y, overlay);
}

void TakePoints(std::string_view &line, const Command &command, Overlay &overlay) {
    const size_t minCount = command.draw == DrawPolyline ? 2 : 3;
    while (!NextWord(line).empty())
        AddPoint(TakeWord(line), overlay);
    const size_t count = overlay.places.size() / 2;
    if (count < minCount)
        throw Failure("expected at least " + std::to_string(minCount) + " points, found " +
                      std::to_string(count));
}

// ---- Strings ----

char Unescaped(char letter) {
    switch (letter) {
    case '"':
    case '\\':
        return letter;
    case 'n':
        return '\n';
    default:
        throw Failure("unknown escape " + Quoted(std::string("\\") + letter) + " in the string");
    }
}

// The length of the sequence that a lead byte opens; 0 for a byte that can't lead one.
size_t Utf8Length(unsigned char lead) {
    if (lead < 0x80)
        return 1;
    if (lead < 0xC0 || lead >= 0xFE)
        return 0;
    return lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : lead < 0xF8 ? 4 : lead < 0xFC ? 5 : 6;
}

// Drawing would end silently at the first byte that is none, or at a zero.
bool IsDrawableUtf8(std::string_view text) {
    const auto follows = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
    while (!text.empty()) {
        const size_t length = Utf8Length(static_cast<unsigned char>(text[0]));
        if (text[0] == 0 || length == 0 || length > text.size() ||
            !std::all_of(text.begin() + 1, text.begin() + static_cast<ptrdiff_t>(length), follows))
            return false;
        text.remove_prefix(length);
    }
    return true;
}

std::string TakeQuoted(std::string_view &line) {
    line = WithoutBlanksBefore(line);
    if (line.empty() || line[0] != '"')
        throw Failure("expected a string in double quotes, found " + Found(NextWord(line)));
    std::string text;
    for (size_t i = 1; i < line.size(); ++i) {
        if (line[i] == '"') {
            line.remove_prefix(i + 1);
            return text;
        }
        const bool escaped = line[i] == '\\' && i + 1 < line.size();
        text += escaped ? Unescaped(line[++i]) : line[i];
    }
    throw Failure("unterminated string");
}

void TakeString(std::string_view &line, Overlay &overlay) {
    overlay.text = TakeQuoted(line);
    if (!IsDrawableUtf8(overlay.text))
        throw Failure("the string is not UTF-8");
    overlay.hasPlaceholders = overlay.text.find('{') != std::string::npos;
}

// The name of a file, which counts from the script's folder.
std::string TakePath(std::string_view &line, const ScriptSettings &settings) {
    return (settings.folder / TakeQuoted(line)).string();
}

void LoadBitmap(const std::string &path, Overlay &overlay) {
    const std::string content = ReadFile(path);
    try {
        overlay.bitmap = ParsePbm(content);
    } catch (const PbmError &error) {
        throw Failure(path + ": " + error.what());
    }
}

void OpenPicture(const std::string &path, const FrameShape &frames, Overlay &overlay) {
    FrameShape shape;
    shape.width = static_cast<int32_t>(overlay.places[2].offset);
    shape.height = static_cast<int32_t>(overlay.places[3].offset);
    shape.format = frames.format;
    overlay.clip = std::make_shared<Clip>(path, shape);
}

// ---- Lines ----

void RequireEnd(std::string_view line) {
    if (!NextWord(line).empty())
        throw Failure("unexpected " + Quoted(NextWord(line)) + " after the arguments");
}

void TakeArguments(std::string_view &line, const Command &command, const ScriptSettings &settings,
                   Overlay &overlay) {
    TakeCoordinates(line, command, overlay);
    TakeColours(line, command.colours, settings.colours, overlay);
    TakeOptions(line, command.options, overlay);
    if (command.last == Last::Points)
        TakePoints(line, command, overlay);
    if (command.last >= Last::String && WithoutBlanksBefore(line).substr(0, 1) != "\"")
        throw Failure("expected " + std::string(command.arguments) + ", found " +
                      Found(NextWord(line)) + " in place of the string");
    if (command.last == Last::String)
        TakeString(line, overlay);
    if (command.last == Last::Bitmap)
        LoadBitmap(TakePath(line, settings), overlay);
    if (command.last == Last::Picture)
        OpenPicture(TakePath(line, settings), settings.shape, overlay);
    RequireEnd(line);
}

void RequireInputs(const Command &command, const ScriptSettings &settings, const Overlay &overlay) {
    if (overlay.perBox && !settings.hasTracks)
        throw Failure("'tracks' needs tracked boxes: name their file by --tracks");
    if (command.draw == DrawTrail && !overlay.perBox)
        throw Failure("'trail' has a meaning in lines of 'tracks' only");
}

// What the script's font line has named, or the command line.
class FontInUse {
  public:
    FontInUse(const std::string &named, FontStore &all) : path(named), store(all) {
    }

    void TakeLine(std::string_view line, const ScriptSettings &settings) {
        TakeWord(line);
        broken = true;
        path = TakePath(line, settings);
        store.Get(path, OrnMinRenderTextDirection::Normal);
        RequireEnd(line);
        broken = false;
    }

    void Give(Overlay &overlay, const Command &command) {
        if (path.empty())
            throw Failure(Quoted(command.name) +
                          " needs a font: name one by --font or in a line before");
        if (!broken)
            overlay.font = store.Get(path, overlay.textStyle.direction);
    }

  private:
    std::string path;
    bool broken = false; // one error tells of it
    FontStore &store;
};

Overlay ParseLine(std::string_view line, const ScriptSettings &settings, FontInUse &font) {
    Overlay overlay;
    TakeFrames(line, overlay);
    const Command &command = TakeCommand(line);
    overlay.draw = command.draw;
    overlay.textStyle.inside = command.draw == DrawLabel || command.draw == DrawParagraph;
    TakeArguments(line, command, settings, overlay);
    RequireInputs(command, settings, overlay);
    if (command.last == Last::String)
        font.Give(overlay, command);
    return overlay;
}

// Places that count from a text wait for one; without any, they would wait for ever.
void RequireTextBefore(const Overlay &overlay, const std::vector<Overlay> &before) {
    const auto countsFromText = [](const Place &place) { return place.source == Source::Text; };
    const auto isText = [](const Overlay &other) { return other.font != nullptr; };
    if (std::any_of(overlay.places.begin(), overlay.places.end(), countsFromText) &&
        std::none_of(before.begin(), before.end(), isText))
        throw Failure("no text in the lines before to count from");
}

} // namespace

Script ParseScript(std::string_view content, const ScriptSettings &settings, FontStore &fonts) {
    Script script;
    FontInUse font(settings.fontPath, fonts);
    ParseLines(content, script.errors, [&](std::string_view line) {
        if (NextWord(line) == "font")
            return font.TakeLine(line, settings);
        Overlay overlay = ParseLine(line, settings, font);
        if (script.errors.list.empty()) // else the text may stand in a line that is wrong
            RequireTextBefore(overlay, script.overlays);
        script.overlays.push_back(std::move(overlay));
    });
    return script;
}

std::string_view TrackScript(bool hasFont) {
    constexpr std::string_view kLines = "tracks box box.left box.top box.right-1 box.bottom-1 id\n"
                                        "tracks label box.left box.top black id bottom \"{id}\"\n";
    return hasFont ? kLines : kLines.substr(0, kLines.find('\n'));
}

std::string ScriptHelp() {
    std::string help =
        "Script: one overlay a line, as FRAMES COMMAND ARGUMENTS. # begins a line of comment.\n"
        "FRAMES: * (all), 12, 10-50 (both included), 10- (to the end), or tracks (for\n"
        "each box of --tracks).\n"
        "COMMAND ARGUMENTS:\n";
    for (const Command &command : kCommands)
        help.append("  ").append(command.name).append(" ").append(command.arguments).append("\n");
    help += "A line font \"file.cbf\" names the font of the lines after it.\n"
            "Coordinates: 12, 50%, right-20, center, bottom-5%, +80 (from the one before), "
            "text.right+4\n"
            "(of the last text), box.top (of the tracked box).\n"
            "ALIGN: what lies at X Y: left, center or right; top, middle or bottom.\n"
            "TURN: down, up or inverted.\n"
            "COLOUR: #rrggbb, id (the tracked box's own) or";
    return help + ColourNames() +
           ".\nString: \\\" \\\\ \\n, and {frame} {time} {id} {conf} for their values.\n"
           "man orn-overlay tells all.";
}

Timeline::Timeline(const std::vector<Overlay> &list) : overlays(list), byStart(list.size()) {
    std::iota(byStart.begin(), byStart.end(), size_t{0});
    std::stable_sort(byStart.begin(), byStart.end(), [this](size_t a, size_t b) {
        return overlays[a].firstFrame < overlays[b].firstFrame;
    });
}

const std::vector<size_t> &Timeline::Advance(int64_t frame) {
    const auto isOver = [this, frame](size_t i) { return overlays[i].lastFrame < frame; };
    active.erase(std::remove_if(active.begin(), active.end(), isOver), active.end());
    Start(frame);
    return active;
}

// All that start now have the same first frame, so they come in the order of the list.
void Timeline::Start(int64_t frame) {
    const auto oldCount = static_cast<ptrdiff_t>(active.size());
    while (nextStart < byStart.size() && overlays[byStart[nextStart]].firstFrame <= frame)
        active.push_back(byStart[nextStart++]);
    std::inplace_merge(active.begin(), active.begin() + oldCount, active.end());
}
