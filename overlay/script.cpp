// SPDX-License-Identifier: MIT
// A line is its frames, the name of a command, and the arguments that the table of commands lists
// for it; or it names the font of the lines after it.
#include "script.h"

#include "arguments.h"
#include "box_condition.h"
#include "commands.h"
#include "words.h"

#include <algorithm>
#include <limits>

namespace overlay {

namespace {

constexpr double kUsualTextShare = 0.025; // of the frame's height
constexpr int64_t kLastFrame = std::numeric_limits<int64_t>::max();

// What shows tracked boxes when the script says nothing of them: outlines, and labels with a font.
constexpr std::string_view kTrackBoxes = "tracks box box.left box.top box.right-1 box.bottom-1 id";
constexpr std::string_view kTrackLabels = "tracks label box.left box.top black id bottom \"{id}\"";

int64_t ParseFrame(std::string_view word) {
    return static_cast<int64_t>(ParseNumber<uint32_t>(word, "frame"));
}

void TakeFrames(std::string_view &line, Overlay &overlay) {
    const std::string_view word = TakeWord(line);
    overlay.frames.last = kLastFrame;
    overlay.perBox = word == "tracks";
    if (overlay.perBox)
        overlay.conditions = TakeConditions(line);
    if (word == "*" || overlay.perBox)
        return;
    if (!IsDigit(word[0]) || word.find_first_not_of("0123456789-") != std::string_view::npos)
        throw Failure("bad frames " + Quoted(word) + ": expected *, N, N-M, N- or tracks");
    const size_t dash = word.find('-');
    overlay.frames.first = ParseFrame(word.substr(0, dash));
    if (dash == std::string_view::npos)
        overlay.frames.last = overlay.frames.first;
    else if (dash + 1 < word.size())
        overlay.frames.last = ParseFrame(word.substr(dash + 1));
    if (overlay.frames.last < overlay.frames.first)
        throw Failure("frame range reversed " + Quoted(word));
}

void RequireInputs(const Command &command, const ScriptInputs &inputs, const Overlay &overlay) {
    if (overlay.perBox && !inputs.hasTracks)
        throw Failure("'tracks' needs tracked boxes: name their file by " + inputs.names.tracks);
    if ((command.traits & kTracksOnly) != 0 && !overlay.perBox)
        throw Failure(Quoted(command.name) + " works only in lines that begin with 'tracks'");
}

// Places that count from a text wait for one; without any, they would wait for ever.
void RequireTextBefore(const Overlay &overlay, const std::vector<Overlay> &before) {
    const auto countsFromText = [](const Place &place) { return place.source == Source::Text; };
    const auto isText = [](const Overlay &other) { return other.font != nullptr; };
    if (std::any_of(overlay.places.begin(), overlay.places.end(), countsFromText) &&
        std::none_of(before.begin(), before.end(), isText))
        throw Failure("text.left and the like count from a text before them, and there is none");
}

// Reads line after line; what a font line says holds for those after it.
class ScriptReader {
  public:
    explicit ScriptReader(const ScriptInputs &all) : inputs(all), fonts(all.fonts), font(all.font) {
    }

    void TakeFontLine(std::string_view line);
    Overlay TakeOverlayLine(std::string_view line);

    // The font of texts for which none is named. False when it isn't installed.
    bool TakeUsualFont();

    // All is read.
    ParsedScript With(std::vector<Overlay> overlays) && {
        return {std::move(overlays), std::move(font), std::move(fonts)};
    }

  private:
    void GiveFont(const Command &command, Overlay &overlay);

    const ScriptInputs &inputs;
    FontStore fonts;
    FontChoice font;
    bool fontBroken = false; // one error tells of it
};

void ScriptReader::TakeFontLine(std::string_view line) {
    TakeWord(line);
    fontBroken = true;
    const std::string name = TakeName(line);
    std::optional<Place> size;
    if (!IsEnd(line))
        size = ParseSize(TakeWord(line));
    RequireEnd(line);
    font = FontChoice(name, inputs.files.folder, size);
    fonts.Get(font.PathFor(inputs.frameHeight), OrnMinRenderTextDirection::Normal);
    fontBroken = false;
}

void ScriptReader::GiveFont(const Command &command, Overlay &overlay) {
    if (fontBroken)
        return;
    if (!font && !TakeUsualFont())
        throw Failure(Quoted(command.name) + " needs a font: name one by " + inputs.names.font +
                      " or in a line before, or install the package orn-min-render-fonts");
    overlay.fontChoice = font;
    overlay.font = fonts.Get(font.PathFor(inputs.frameHeight), overlay.textStyle.direction);
}

bool ScriptReader::TakeUsualFont() {
    try {
        Place size;
        size.share = kUsualTextShare;
        font = FontChoice(kUsualFontSet, {}, size);
        return true;
    } catch (const FileFailure &) {
        return false;
    }
}

Overlay ScriptReader::TakeOverlayLine(std::string_view line) {
    Overlay overlay;
    TakeFrames(line, overlay);
    const std::string_view name = TakeWord(line);
    if (name.empty())
        throw Failure("expected a command after the frames");
    const Command &command = FindCommand(name);
    overlay.draw = command.draw;
    overlay.planes = (command.traits & kLumaAlone) != 0 ? Planes::Luma : Planes::LumaAndChroma;
    overlay.textStyle.inside = (command.traits & kKeptInside) != 0;
    overlay.textStyle.avoids = overlay.perBox && (command.traits & kAvoidsInTracks) != 0;
    TakeArguments(line, command, inputs.files, overlay);
    RequireInputs(command, inputs, overlay);
    if (command.last == Last::String)
        GiveFont(command, overlay);
    return overlay;
}

} // namespace

ParsedScript ParseScript(std::string_view content, const std::string &file,
                         const ScriptInputs &inputs, Errors &errors) {
    std::vector<Overlay> overlays;
    ScriptReader reader(inputs);
    ParseLines(content, file, errors, [&](std::string_view line, size_t number) {
        if (NextWord(line) == "font")
            return reader.TakeFontLine(line);
        Overlay overlay = reader.TakeOverlayLine(line);
        overlay.line = number;
        if (errors.empty()) // else the text may stand in a line that is wrong
            RequireTextBefore(overlay, overlays);
        overlays.push_back(std::move(overlay));
    });
    const auto isPerBox = [](const Overlay &overlay) { return overlay.perBox; };
    if (!inputs.hasTracks || !errors.empty() ||
        std::any_of(overlays.begin(), overlays.end(), isPerBox))
        return std::move(reader).With(std::move(overlays));
    ScriptReader shown(inputs);
    overlays.push_back(shown.TakeOverlayLine(kTrackBoxes));
    if (inputs.font || shown.TakeUsualFont())
        overlays.push_back(shown.TakeOverlayLine(kTrackLabels));
    return std::move(reader).With(std::move(overlays));
}

ParsedScript ParseLine(std::string_view line, const ScriptInputs &inputs) {
    if (NextWord(line) == "font")
        throw Failure("a font line stands in a script only");
    ScriptReader reader(inputs);
    std::vector<Overlay> overlays;
    overlays.push_back(reader.TakeOverlayLine(line));
    return std::move(reader).With(std::move(overlays));
}

} // namespace overlay
