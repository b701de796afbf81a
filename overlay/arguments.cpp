// SPDX-License-Identifier: MIT
// Each kind of argument is checked as it is taken, so that the message names the word.
#include "arguments.h"

#include "colour.h"
#include "placeholders.h"
#include "words.h"

#include <algorithm>

namespace overlay {

namespace {

constexpr size_t kBoxPlaces = 4;
constexpr int32_t kMaxCount = 65535; // of frames, or of pixels on the side of a frame
constexpr int32_t kLeastHeight = 1;  // what is too large for such frames, is so for all

// "+N" counts from the coordinate before it, so there has to be one.
void AddPlace(std::string_view word, Axis axis, Overlay &overlay) {
    const Place place = ParsePlace(word, axis);
    const auto &places = overlay.places;
    const auto sameAxis = [axis](const Place &other) { return other.axis == axis; };
    if (place.source == Source::Before && std::none_of(places.begin(), places.end(), sameAxis))
        throw Failure(Quoted(word) + " counts from the coordinate before it, and there is none");
    if (place.source == Source::Box && !overlay.perBox)
        throw PlacedFailure(Quoted(word) + " works only in lines that begin with 'tracks'",
                            word.data());
    overlay.places.push_back(place);
}

void AddCount(std::string_view word, Overlay &overlay) {
    Place count;
    count.offset = ParseNumber<int32_t>(word, "int32");
    if (count.offset < 1 || count.offset > kMaxCount)
        throw Failure("bad number " + Quoted(word) + ": expected 1 to " +
                      std::to_string(kMaxCount));
    overlay.places.push_back(count);
}

// A share of the frame is known only with the frame.
void AddWidth(std::string_view word, Overlay &overlay) {
    const Place width = ParseLength(word, Axis::X);
    if (width.share <= 0 && width.offset <= 0)
        throw Failure("bad width " + Quoted(word) + ": expected more than 0");
    overlay.places.push_back(width);
}

void AddCoordinate(std::string_view word, char kind, Overlay &overlay) {
    if (kind == 'a' && word == "auto")
        overlay.places.emplace_back(); // 0, which no other size is
    else if (kind == 'a' && word.find('%') != std::string_view::npos)
        overlay.places.push_back(ParseSize(word));
    else if (kind == 'n' || kind == 'a')
        AddCount(word, overlay);
    else if (kind == 's')
        overlay.places.push_back(ParseSize(word));
    else if (kind == 'W')
        AddWidth(word, overlay);
    else if (kind == 'w' || kind == 'h')
        overlay.places.push_back(ParseLength(word, kind == 'w' ? Axis::X : Axis::Y));
    else
        AddPlace(word, kind == 'x' ? Axis::X : Axis::Y, overlay);
}

size_t WordsIn(std::string_view line) {
    size_t count = 0;
    for (; !IsEnd(line); ++count)
        TakeWord(line);
    return count;
}

// Fewer words than places would take leave them all out.
bool LeavesOutBox(std::string_view line, const Command &command, const Overlay &overlay) {
    return (command.traits & kBoxUnasked) != 0 && overlay.perBox && WordsIn(line) < kBoxPlaces;
}

void TakeCoordinates(std::string_view &line, const Command &command, Overlay &overlay) {
    size_t given = 0;
    if (LeavesOutBox(line, command, overlay))
        for (const char *edge : {"box.left", "box.top", "box.right", "box.bottom"})
            AddCoordinate(edge, command.coordinates[given++], overlay);
    for (size_t i = given; i < command.coordinates.size(); ++i) {
        const std::string_view word = TakeWord(line);
        if (word.empty())
            throw Failure("expected a number, found the end of the line");
        AddCoordinate(word, command.coordinates[i], overlay);
    }
}

void TakeColours(std::string_view &line, const Command &command, Overlay &overlay) {
    if ((command.traits & kBlackUnasked) != 0 && IsEnd(line))
        return;
    for (size_t i = 0; i < command.colours; ++i) {
        const std::string_view word = TakeWord(line);
        Paint &paint = overlay.paints[i];
        paint.own = word == "id" ? Own::Id : word == "class" ? Own::Class : Own::Nothing;
        if (paint.own == Own::Nothing)
            paint.rgb = ParseColour(word);
        else if (!overlay.perBox)
            throw PlacedFailure("colour " + Quoted(word) +
                                    " works only in lines that begin with 'tracks'",
                                word.data());
    }
}

void TakeOptions(std::string_view &line, OptionSets sets, Overlay &overlay) {
    while (TakeOption(line, sets, overlay)) {
    }
    if (overlay.thickness && overlay.style == OrnMinRenderLineDashed)
        throw Failure("dashed lines are two pixels thick: leave out 'dashed' or 'thick'");
}

void AddPoint(std::string_view word, Overlay &overlay) {
    const size_t comma = word.find(',');
    if (comma == std::string_view::npos)
        throw Failure("bad point " + Quoted(word) + ": expected X,Y");
    AddPlace(word.substr(0, comma), Axis::X, overlay);
    AddPlace(word.substr(comma + 1), Axis::Y, overlay);
}

void TakePoints(std::string_view &line, const Command &command, Overlay &overlay) {
    while (!IsEnd(line))
        AddPoint(TakeWord(line), overlay);
    const size_t count = overlay.places.size() / 2;
    if (count < command.minPoints)
        throw Failure("expected at least " + std::to_string(command.minPoints) + " points, found " +
                      std::to_string(count));
}

void TakeText(std::string_view &line, const ScriptFiles &files, Overlay &overlay) {
    const std::string_view quoted = WithoutBlanksBefore(line);
    const std::string text = TakeQuoted(line);
    if (!IsDrawableUtf8(text))
        throw Failure("the string is not UTF-8");
    try {
        overlay.text = ParseText(text, overlay.perBox, files.folder);
    } catch (const TextFailure &failure) {
        throw PlacedFailure(failure.what(), PlaceInQuoted(quoted, failure.position));
    }
}

void TakePicture(std::string_view &line, const ScriptFiles &files, Overlay &overlay) {
    const std::string path = TakePath(line, files);
    const Place &width = overlay.places[2];
    const Place &height = overlay.places[3];
    if (IsStill(path)) {
        overlay.still = std::make_unique<StillFile>(path, width, height, files.decodePicture);
        overlay.still->ScaleFor(files.frameHeight.value_or(kLeastHeight));
        return;
    }
    if (width.share > 0 || height.share > 0)
        throw Failure("N% is for files named .png, .jpg or .jpeg: raw frames need both sizes in "
                      "pixels");
    if (width.offset == 0 || height.offset == 0)
        throw Failure("'auto' is for files named .png, .jpg or .jpeg: raw frames need both sizes");
    overlay.picture = std::make_unique<Picture>(path, static_cast<int32_t>(width.offset),
                                                static_cast<int32_t>(height.offset));
    if (files.hasChroma)
        overlay.picture->Open(*files.hasChroma);
}

// All but a string.
void TakeWords(std::string_view &line, const Command &command, Overlay &overlay) {
    TakeCoordinates(line, command, overlay);
    TakeColours(line, command, overlay);
    TakeOptions(line, command.options, overlay);
    if (command.last == Last::Points)
        TakePoints(line, command, overlay);
    if (command.last >= Last::String && WithoutBlanksBefore(line).substr(0, 1) != "\"")
        throw Failure("expected a string in double quotes, found " + Found(NextWord(line)));
}

void TakeString(std::string_view &line, const Command &command, const ScriptFiles &files,
                Overlay &overlay) {
    if (command.last == Last::String)
        TakeText(line, files, overlay);
    if (command.last == Last::Bitmap)
        overlay.bitmap = LoadBitmap(TakePath(line, files));
    if (command.last == Last::Picture)
        TakePicture(line, files, overlay);
}

// A wrong word may well be one too many or the one after one too few.
template <typename Take> void TellingUsage(const Command &command, Take take) {
    try {
        take();
    } catch (const PlacedFailure &) {
        throw; // of a word that is in its place
    } catch (const Failure &failure) {
        throw Failure(std::string(failure.what()) + "; usage: " + std::string(command.name) + " " +
                      std::string(command.arguments));
    }
}

} // namespace

// A comment may follow the last argument. What looks like a colour is one too many.
bool IsEnd(std::string_view line) {
    const std::string_view word = NextWord(line);
    return word.empty() || (word[0] == '#' && !IsHexColour(word));
}

std::string TakeName(std::string_view &line) {
    const std::string name = TakeQuoted(line);
    if (name.empty() || name.find('\0') != std::string::npos) // the system would read up to a zero
        throw Failure("expected the name of a file, found " + Quoted(name));
    return name;
}

std::string TakePath(std::string_view &line, const ScriptFiles &files) {
    return (files.folder / TakeName(line)).string();
}

void RequireEnd(std::string_view line) {
    if (!IsEnd(line))
        throw Failure("unexpected " + Quoted(NextWord(line)) + " after the arguments");
}

void TakeArguments(std::string_view &line, const Command &command, const ScriptFiles &files,
                   Overlay &overlay) {
    TellingUsage(command, [&] { TakeWords(line, command, overlay); });
    TakeString(line, command, files, overlay);
    TellingUsage(command, [&] { RequireEnd(line); });
}

} // namespace overlay
