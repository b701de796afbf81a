// SPDX-License-Identifier: MIT
// One table says which values there are.
#include "placeholders.h"

#include <algorithm>
#include <cinttypes>
#include <iterator>

namespace overlay {

namespace {

std::string FrameNumber(const Canvas &canvas, const TextPiece &) {
    return std::to_string(canvas.frameNumber);
}

// Hours may grow past two digits; tenths are cut, as on a clock. Multiplied first, times that frame
// rates express exactly come out exactly.
std::string FilmTime(const Canvas &canvas, const TextPiece &) {
    constexpr double kMaxTenths = 9e15; // that a double counts one by one
    const double exact = static_cast<double>(canvas.time.ticks) * 10 / canvas.time.ticksPerSecond;
    const auto tenths = static_cast<int64_t>(std::max(0.0, std::min(kMaxTenths, exact)));
    char text[64];
    std::snprintf(text, sizeof text, "%02" PRId64 ":%02" PRId64 ":%02" PRId64 ".%" PRId64,
                  tenths / 36000, tenths / 600 % 60, tenths / 10 % 60, tenths % 10);
    return text;
}

std::string Clock(const Canvas &canvas, const TextPiece &piece) {
    return FormatClock(piece.argument, canvas.clockTime, canvas.clock.utc);
}

std::string File(const Canvas &, const TextPiece &piece) {
    return piece.file->Content();
}

std::string Rate(const Canvas &canvas, const TextPiece &) {
    char text[32];
    std::snprintf(text, sizeof text, "%.1f", canvas.frameRate.PerSecond());
    return text;
}

std::string Id(const Canvas &canvas, const TextPiece &) {
    return std::to_string(canvas.box->id);
}

std::string Confidence(const Canvas &canvas, const TextPiece &) {
    char text[400]; // the largest double has 309 digits
    std::snprintf(text, sizeof text, "%.2f", canvas.box->confidence);
    return text;
}

std::string ClassName(const Canvas &canvas, const TextPiece &) {
    return canvas.box->className;
}

enum class Argument { None, ClockFormat, FileName };

struct Placeholder {
    std::string_view name;
    bool ofBox; // means something only where a tracked box is drawn
    Argument argument;
    std::string (*value)(const Canvas &canvas, const TextPiece &piece);
};

constexpr Placeholder kPlaceholders[] = {
    {"frame", false, Argument::None, FrameNumber},  {"time", false, Argument::None, FilmTime},
    {"clock", false, Argument::ClockFormat, Clock}, {"file", false, Argument::FileName, File},
    {"fps", false, Argument::None, Rate},           {"id", true, Argument::None, Id},
    {"conf", true, Argument::None, Confidence},     {"class", true, Argument::None, ClassName},
};

constexpr std::string_view kUsualClock = "%F %T";

// Throws Failure.
const Placeholder &FindPlaceholder(std::string_view name, bool perBox) {
    const auto found = std::find_if(std::begin(kPlaceholders), std::end(kPlaceholders),
                                    [name](const Placeholder &p) { return p.name == name; });
    const std::string shown = Quoted("{" + std::string(name) + "}");
    if (found == std::end(kPlaceholders))
        throw Failure("unknown value " + shown + " in the text; a brace by itself is written {{");
    if (found->ofBox && !perBox)
        throw Failure(shown + " works only in lines that begin with 'tracks'");
    return *found;
}

// What stands between braces.
TextPiece PieceOf(std::string_view inside, bool perBox, const std::filesystem::path &folder) {
    const size_t colon = std::min(inside.find(':'), inside.size());
    const Placeholder &placeholder = FindPlaceholder(inside.substr(0, colon), perBox);
    TextPiece piece;
    piece.value = placeholder.value;
    piece.argument = inside.substr(std::min(colon + 1, inside.size()));
    if (placeholder.argument == Argument::None && colon < inside.size())
        throw Failure(Quoted("{" + std::string(placeholder.name) + "}") +
                      " takes nothing after a colon");
    if (placeholder.argument == Argument::ClockFormat && piece.argument.empty())
        piece.argument = kUsualClock;
    if (placeholder.argument == Argument::ClockFormat && WrongConversion(piece.argument))
        throw Failure("the clock knows no " +
                      Quoted(piece.argument.substr(*WrongConversion(piece.argument), 2)));
    if (placeholder.argument == Argument::FileName && piece.argument.empty())
        throw Failure("'{file}' needs a name, as in {file:score.txt}");
    if (placeholder.argument == Argument::FileName)
        piece.file = std::make_shared<TextFile>((folder / piece.argument).string());
    return piece;
}

// Takes the piece that begins with a brace from the front of the text.
TextPiece TakeValue(std::string_view &text, bool perBox, const std::filesystem::path &folder) {
    const size_t end = text.find('}');
    if (end == std::string_view::npos)
        throw Failure("'{' without '}' after it; a brace by itself is written {{");
    const std::string_view inside = text.substr(1, end - 1);
    text.remove_prefix(end + 1);
    return PieceOf(inside, perBox, folder);
}

// Takes what stands before the next value.
TextPiece TakePlain(std::string_view &text) {
    TextPiece piece;
    while (!text.empty() && (text[0] != '{' || text.substr(0, 2) == "{{")) {
        piece.argument += text[0];
        text.remove_prefix(text[0] == '{' ? 2 : 1);
    }
    return piece;
}

} // namespace

std::vector<TextPiece> ParseText(std::string_view text, bool perBox,
                                 const std::filesystem::path &folder) {
    std::vector<TextPiece> pieces;
    const size_t size = text.size();
    while (!text.empty()) {
        const size_t position = size - text.size();
        try {
            const bool plain = text[0] != '{' || text.substr(0, 2) == "{{";
            pieces.push_back(plain ? TakePlain(text) : TakeValue(text, perBox, folder));
        } catch (const Failure &failure) {
            throw TextFailure(failure.what(), position);
        }
    }
    return pieces;
}

bool Changes(const Overlay &overlay) {
    return std::any_of(overlay.text.begin(), overlay.text.end(),
                       [](const TextPiece &piece) { return piece.value != nullptr; });
}

std::string FixedPartsOf(const Overlay &overlay) {
    std::string fixed;
    for (const TextPiece &piece : overlay.text)
        if (!piece.value)
            fixed += piece.argument;
    return fixed;
}

std::string TextOf(const Canvas &canvas, const Overlay &overlay) {
    std::string shown;
    for (const TextPiece &piece : overlay.text)
        shown += piece.value ? piece.value(canvas, piece) : piece.argument;
    return shown;
}

} // namespace overlay
