// Parsing of scripts. A line is its frames, the name of a command, and the arguments that the table
// of commands lists for it, always in the order coordinates, colours, option, points or string.
// Functions named Take... remove what they return from the front of the line.
#include "overlay_script.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <limits>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <system_error>

namespace {

constexpr size_t kMaxErrors = 20;
constexpr size_t kMaxQuoted = 40; // of a wrong word: what is no script at all has very long ones
constexpr int64_t kLastFrame = std::numeric_limits<int64_t>::max();
constexpr std::string_view kBlanks = " \t\r"; // the last one: lines may end as on Windows

struct LineError : std::runtime_error {
    using runtime_error::runtime_error;
};

enum class Option { None, Dashed, Half };
enum class Last { Nothing, Points, String, Picture };

struct Command {
    std::string_view name;
    std::string_view arguments; // as people read them
    size_t coordinates;
    size_t colours;
    Option option;
    Last last;
    size_t minPoints;
    DrawFunction draw;
};

constexpr Command kCommands[] = {
    {"box", "L T R B COLOUR [dashed]", 4, 1, Option::Dashed, Last::Nothing, 0, DrawBox},
    {"fill", "L T R B COLOUR", 4, 1, Option::None, Last::Nothing, 0, DrawFill},
    {"hline", "X0 X1 Y COLOUR [dashed]", 3, 1, Option::Dashed, Last::Nothing, 0, DrawHLine},
    {"vline", "X Y0 Y1 COLOUR [dashed]", 3, 1, Option::Dashed, Last::Nothing, 0, DrawVLine},
    {"line", "X0 Y0 X1 Y1 COLOUR [dashed]", 4, 1, Option::Dashed, Last::Nothing, 0, DrawLine},
    {"polygon", "COLOUR X,Y X,Y X,Y ...", 0, 1, Option::None, Last::Points, 3, DrawPolygon},
    {"polyline", "COLOUR [dashed] X,Y X,Y ...", 0, 1, Option::Dashed, Last::Points, 2,
     DrawPolyline},
    {"loop", "COLOUR [dashed] X,Y X,Y X,Y ...", 0, 1, Option::Dashed, Last::Points, 3, DrawLoop},
    {"ellipse", "L T R B COLOUR", 4, 1, Option::None, Last::Nothing, 0, DrawEllipse},
    {"disc", "L T R B COLOUR", 4, 1, Option::None, Last::Nothing, 0, DrawDisc},
    {"roundbox", "L T R B RX RY COLOUR", 6, 1, Option::None, Last::Nothing, 0, DrawRoundBox},
    {"roundfill", "L T R B RX RY COLOUR", 6, 1, Option::None, Last::Nothing, 0, DrawRoundFill},
    {"bitmap", "L T R B COLOUR [half] \"file.pbm\"", 4, 1, Option::Half, Last::Picture, 0,
     DrawBitmap},
    {"copy", "L T R B FROM_X FROM_Y", 6, 0, Option::None, Last::Nothing, 0, DrawCopy},
    {"text", "X Y COLOUR \"string\"", 2, 1, Option::None, Last::String, 0, DrawText},
    {"outlined", "X Y COLOUR OUTLINE \"string\"", 2, 2, Option::None, Last::String, 0,
     DrawOutlined},
    {"label", "X Y COLOUR BACKGROUND \"string\"", 2, 2, Option::None, Last::String, 0, DrawLabel},
    {"paragraph", "X Y WIDTH COLOUR BACKGROUND \"string\"", 3, 2, Option::None, Last::String, 0,
     DrawParagraph},
};

struct NamedColour {
    std::string_view name;
    uint32_t rgb;
};

constexpr NamedColour kColours[] = {
    {"black", 0x000000},   {"white", 0xffffff}, {"grey", 0x808080}, {"gray", 0x808080},
    {"red", 0xff0000},     {"green", 0x00ff00}, {"blue", 0x0000ff}, {"yellow", 0xffff00},
    {"magenta", 0xff00ff}, {"cyan", 0x00ffff},  {"pink", 0xff80c0}, {"orange", 0xff8000},
    {"purple", 0x8000ff},  {"brown", 0x804000},
};

// ---- Words ----

std::string Quoted(std::string_view word) {
    std::string shown(word.substr(0, kMaxQuoted));
    const auto isControl = [](unsigned char c) { return c < ' ' || c == 127; };
    std::replace_if(shown.begin(), shown.end(), isControl, '?'); // they would command a terminal
    return "'" + shown + (word.size() > kMaxQuoted ? "...'" : "'");
}

// A wrong argument as a message ends in it: "expected a colour, found ...".
std::string Found(std::string_view word) {
    return word.empty() ? "the end of the line" : Quoted(word);
}

std::string_view WithoutBlanksBefore(std::string_view line) {
    return line.substr(std::min(line.find_first_not_of(kBlanks), line.size()));
}

// The next word without taking it; empty at the end of the line.
std::string_view NextWord(std::string_view line) {
    line = WithoutBlanksBefore(line);
    return line.substr(0, line.find_first_of(kBlanks));
}

std::string_view TakeWord(std::string_view &line) {
    const std::string_view word = NextWord(line);
    line = WithoutBlanksBefore(line);
    line.remove_prefix(word.size());
    return word;
}

bool StartsLikeNumber(std::string_view word) {
    return !word.empty() && (word[0] == '-' || (word[0] >= '0' && word[0] <= '9'));
}

template <typename Integer> Integer ParseNumber(std::string_view word, const char *typeName) {
    Integer number{};
    const char *end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, number);
    if (result.ptr != end || result.ec == std::errc::invalid_argument)
        throw LineError("bad number " + Quoted(word));
    if (result.ec == std::errc::result_out_of_range)
        throw LineError("number out of " + std::string(typeName) + " range " + Quoted(word));
    return number;
}

int32_t ParseCoordinate(std::string_view word) {
    return ParseNumber<int32_t>(word, "int32");
}

// ---- Frames ----

int64_t ParseFrame(std::string_view word) {
    return static_cast<int64_t>(ParseNumber<uint32_t>(word, "frame"));
}

void TakeFrames(std::string_view &line, Overlay &overlay) {
    const std::string_view word = TakeWord(line);
    overlay.lastFrame = kLastFrame;
    if (word == "*")
        return;
    if (!StartsLikeNumber(word) || word[0] == '-')
        throw LineError("bad frames " + Quoted(word) + ": expected *, N, N-M or N-");
    const size_t dash = word.find('-');
    overlay.firstFrame = ParseFrame(word.substr(0, dash));
    if (dash == std::string_view::npos)
        overlay.lastFrame = overlay.firstFrame;
    else if (dash + 1 < word.size())
        overlay.lastFrame = ParseFrame(word.substr(dash + 1));
    if (overlay.lastFrame < overlay.firstFrame)
        throw LineError("frame range reversed " + Quoted(word));
}

// ---- Arguments ----

const Command &TakeCommand(std::string_view &line) {
    const std::string_view name = TakeWord(line);
    if (name.empty())
        throw LineError("expected a command after the frames");
    const auto command = std::find_if(std::begin(kCommands), std::end(kCommands),
                                      [name](const Command &c) { return c.name == name; });
    if (command == std::end(kCommands))
        throw LineError("unknown command " + Quoted(name));
    return *command;
}

void TakeCoordinates(std::string_view &line, size_t count, Overlay &overlay) {
    for (size_t i = 0; i < count; ++i) {
        const std::string_view word = TakeWord(line);
        if (!StartsLikeNumber(word))
            throw LineError("expected " + std::to_string(count) + " coordinates, found " +
                            std::to_string(i) + (word.empty() ? "" : " and then " + Quoted(word)));
        overlay.coordinates[i] = ParseCoordinate(word);
    }
}

uint32_t ParseHexColour(std::string_view word) {
    uint32_t rgb = 0;
    const char *end = word.data() + word.size();
    const auto result = std::from_chars(word.data() + 1, end, rgb, 16);
    if (word.size() != 7 || result.ptr != end)
        throw LineError("bad colour " + Quoted(word) + ": expected #rrggbb");
    return rgb;
}

uint32_t ParseColour(std::string_view word) {
    if (word.empty() || word[0] == '"')
        throw LineError("expected a colour, found " + Found(word));
    if (word[0] == '#')
        return ParseHexColour(word);
    for (const NamedColour &colour : kColours)
        if (colour.name == word)
            return colour.rgb;
    throw LineError("bad colour " + Quoted(word) + ": no such name");
}

void TakeColours(std::string_view &line, size_t count, Overlay &overlay) {
    for (size_t i = 0; i < count; ++i) {
        const uint32_t rgb = ParseColour(TakeWord(line));
        const uint8_t bytes[] = {static_cast<uint8_t>(rgb >> 16), static_cast<uint8_t>(rgb >> 8),
                                 static_cast<uint8_t>(rgb)};
        OrnMinRenderRGB2YUV(&overlay.colours[i].y, bytes);
    }
}

void TakeOption(std::string_view &line, Option option, Overlay &overlay) {
    const std::string_view word = NextWord(line);
    if (option == Option::Dashed && word == "dashed")
        overlay.style = OrnMinRenderLineDashed;
    else if (option == Option::Half && word == "half")
        overlay.halfTransparent = true;
    else
        return;
    TakeWord(line);
}

OrnMinRenderPoint ParsePoint(std::string_view word) {
    const size_t comma = word.find(',');
    if (comma == std::string_view::npos || comma + 1 == word.size())
        throw LineError("bad point " + Quoted(word) + ": expected X,Y");
    return {ParseCoordinate(word.substr(0, comma)), ParseCoordinate(word.substr(comma + 1))};
}

void TakePoints(std::string_view &line, size_t minCount, Overlay &overlay) {
    while (!NextWord(line).empty())
        overlay.points.push_back(ParsePoint(TakeWord(line)));
    if (overlay.points.size() < minCount)
        throw LineError("expected at least " + std::to_string(minCount) + " points, found " +
                        std::to_string(overlay.points.size()));
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
        throw LineError("unknown escape " + Quoted(std::string("\\") + letter) + " in the string");
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
        throw LineError("expected a string in double quotes, found " + Found(NextWord(line)));
    std::string text;
    for (size_t i = 1; i < line.size(); ++i) {
        if (line[i] == '"') {
            line.remove_prefix(i + 1);
            return text;
        }
        const bool escaped = line[i] == '\\' && i + 1 < line.size();
        text += escaped ? Unescaped(line[++i]) : line[i];
    }
    throw LineError("unterminated string");
}

void TakeString(std::string_view &line, Overlay &overlay) {
    overlay.text = TakeQuoted(line);
    if (!IsDrawableUtf8(overlay.text))
        throw LineError("the string is not UTF-8");
    overlay.hasPlaceholders = overlay.text.find(kFramePlaceholder) != std::string::npos ||
                              overlay.text.find(kTimePlaceholder) != std::string::npos;
}

void TakePicture(std::string_view &line, Overlay &overlay) {
    const std::string path = TakeQuoted(line);
    try {
        overlay.bitmap = ParsePbm(ReadFile(path));
    } catch (const PbmError &error) {
        throw LineError(path + ": " + error.what());
    } catch (const std::system_error &error) {
        throw LineError(path + ": " + error.code().message());
    }
}

// ---- Lines ----

void TakeArguments(std::string_view &line, const Command &command, Overlay &overlay) {
    TakeCoordinates(line, command.coordinates, overlay);
    TakeColours(line, command.colours, overlay);
    TakeOption(line, command.option, overlay);
    if (command.last == Last::Points)
        TakePoints(line, command.minPoints, overlay);
    if (command.last == Last::String)
        TakeString(line, overlay);
    if (command.last == Last::Picture)
        TakePicture(line, overlay);
    if (!NextWord(line).empty())
        throw LineError("unexpected " + Quoted(NextWord(line)) + " after the arguments");
}

Overlay ParseLine(std::string_view line, bool hasFont) {
    Overlay overlay;
    TakeFrames(line, overlay);
    const Command &command = TakeCommand(line);
    overlay.draw = command.draw;
    TakeArguments(line, command, overlay);
    if (command.last == Last::String && !hasFont)
        throw LineError(Quoted(command.name) + " needs a font: name one by --font");
    return overlay;
}

bool IsEmptyOrComment(std::string_view line) {
    const std::string_view word = NextWord(line);
    return word.empty() || word[0] == '#';
}

std::string_view TakeLine(std::string_view &content) {
    const std::string_view line = content.substr(0, content.find('\n'));
    content.remove_prefix(std::min(line.size() + 1, content.size()));
    return line;
}

} // namespace

std::string ReadFile(const std::string &path) {
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> file(std::fopen(path.c_str(), "rb"),
                                                                std::fclose);
    std::string content;
    char part[65536];
    while (const size_t count = file ? std::fread(part, 1, sizeof part, file.get()) : 0)
        content.append(part, count);
    if (!file || std::ferror(file.get()))
        throw std::system_error(errno, std::generic_category());
    return content;
}

Script ParseScript(std::string_view content, bool hasFont) {
    Script script;
    for (size_t lineNumber = 1; !content.empty() && script.complete; ++lineNumber) {
        const std::string_view line = TakeLine(content);
        if (IsEmptyOrComment(line))
            continue;
        try {
            script.overlays.push_back(ParseLine(line, hasFont));
        } catch (const LineError &error) {
            script.errors.push_back({lineNumber, error.what()});
            script.complete = script.errors.size() < kMaxErrors;
        }
    }
    return script;
}

std::string ScriptHelp() {
    std::string help = "Script: one overlay a line, as FRAMES COMMAND ARGUMENTS.\n"
                       "FRAMES: * (all), 12, 10-50 (both included), 10- (to the end).\n"
                       "COMMAND ARGUMENTS:\n";
    for (const Command &command : kCommands)
        help.append("  ").append(command.name).append(" ").append(command.arguments).append("\n");
    help += "COLOUR: #rrggbb or";
    for (const NamedColour &colour : kColours)
        help.append(" ").append(colour.name);
    return help + ".\nString: \\\" \\\\ \\n, and {frame} and {time} for each frame's own.";
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
