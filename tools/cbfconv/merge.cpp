// SPDX-License-Identifier: MIT
// Characters are asked for in ascending order, from each font in the order of the command line.
#include "cbfconv/merge.h"

#include "cbf/code_points.h"
#include "cbf/glyph_record.h"
#include "cbfconv/glyph_box.h"
#include "common/failure.h"

#include <algorithm>

namespace cbfconv {

using tool::Failure;

namespace {

const char kFallbackName[] = "fallback glyph";

// Runs a call that throws FontError, and names the font.
template <typename Call> auto OfFont(const std::string &path, Call call) {
    try {
        return call();
    } catch (const FontChoiceError &error) {
        throw Failure(tool::kBadUsage, path + ": " + error.what());
    } catch (const FontError &error) {
        throw Failure(tool::kBadData, path + ": " + error.what());
    }
}

// Runs a call that throws GlyphError, and names the glyph.
template <typename Call> auto OfGlyph(const std::string &name, Call call) {
    try {
        return call();
    } catch (const GlyphError &error) {
        throw FontError(name + ": " + error.what());
    }
}

// Glyphs that don't fit are refused as they come, before there are thousands of them in memory.
void CheckFits(const cbf::Glyph &glyph) {
    const cbf::Problem problem = cbf::CheckGlyph(glyph);
    if (problem != cbf::Problem::None)
        throw GlyphError(cbf::Reason(problem), SizesOf(glyph));
    if (cbf::OutlineWraps(glyph))
        throw GlyphError("reaches further than 125 pixels from the pen, so that its outline would "
                         "be drawn elsewhere",
                         SizesOf(glyph));
}

std::optional<cbf::Glyph> ReadFitting(FontSource &source, uint32_t codePoint) {
    std::optional<cbf::Glyph> glyph = source.Read(codePoint);
    if (glyph)
        CheckFits(*glyph);
    return glyph;
}

using Sources = std::vector<std::unique_ptr<FontSource>>;

Sources OpenFonts(const std::vector<Input> &inputs) {
    Sources sources;
    for (const Input &input : inputs)
        sources.push_back(OfFont(input.path, [&] { return OpenFont(input.path, input.choice); }));
    return sources;
}

// What was asked for by name must fit; what "all" asks for need not, unless strict.
bool MayLeaveOut(const Options &options, size_t input) {
    return options.inputs[input].wanted.HoldsAll() && !options.strict;
}

// The glyph as one input has it; none where it may be left out, which sets the reason.
std::optional<cbf::Glyph> ReadOrLeaveOut(const Options &options, FontSource &source, size_t input,
                                         uint32_t codePoint, std::string &reason) {
    const std::string name = cbf::CodePointName(codePoint);
    return OfFont(options.inputs[input].path, [&]() -> std::optional<cbf::Glyph> {
        try {
            return ReadFitting(source, codePoint);
        } catch (const GlyphError &error) {
            if (!MayLeaveOut(options, input))
                throw FontError(name + ": " + error.what());
            reason = error.reason;
            return {};
        }
    });
}

void ReadCharacter(const Options &options, const Sources &sources, uint32_t codePoint,
                   MergedFont &merged) {
    bool byNumber = false;
    std::string reason;
    for (size_t i = 0; i < sources.size(); ++i) {
        if (!options.inputs[i].wanted.Has(codePoint))
            continue;
        byNumber |= !options.inputs[i].wanted.HoldsAll();
        auto glyph = ReadOrLeaveOut(options, *sources[i], i, codePoint, reason);
        if (!glyph)
            continue;
        merged.font.glyphs.emplace_hint(merged.font.glyphs.end(), codePoint, std::move(*glyph));
        merged.origins.emplace_hint(merged.origins.end(), codePoint, i);
        return;
    }
    if (!reason.empty())
        merged.leftOut[reason].push_back(codePoint);
    else if (byNumber)
        merged.missing.push_back(codePoint);
}

void ReadFallback(const std::string &character, const std::vector<Input> &inputs,
                  const Sources &sources, MergedFont &merged) {
    if (character.empty()) {
        OfFont(inputs[0].path, [&] {
            OfGlyph(kFallbackName, [&] {
                merged.font.fallback = sources[0]->Fallback();
                CheckFits(merged.font.fallback);
            });
        });
        return;
    }
    const std::optional<uint32_t> codePoint = cbf::ParseCharacter(character);
    if (!codePoint)
        throw Failure(tool::kBadUsage, "--fallback: '" + character +
                                           "' is no single character, nor a number such as U+FFFD");
    for (size_t i = 0; i < inputs.size(); ++i)
        if (auto glyph = OfFont(inputs[i].path, [&] {
                return OfGlyph(kFallbackName, [&] { return ReadFitting(*sources[i], *codePoint); });
            })) {
            merged.font.fallback = std::move(*glyph);
            merged.fallbackOrigin = i;
            return;
        }
    throw Failure(tool::kBadData, "--fallback: no font has " + cbf::CodePointName(*codePoint));
}

void AddSpacing(const Options &options, cbf::Font &font) {
    font.lineHeight += options.lineSpacing;
    const auto space = [&](cbf::Glyph &glyph) {
        if (glyph.advance != 0) // which marks over other glyphs keep
            glyph.advance += options.letterSpacing;
    };
    space(font.fallback);
    for (auto &[codePoint, glyph] : font.glyphs)
        space(glyph);
}

// Takes out the character that keeps the font from being written; false where it has to stay.
bool LeaveOut(const Options &options, const cbf::Fault &fault, MergedFont &merged) {
    if (fault.inFallback || fault.problem == cbf::Problem::FileSize ||
        !MayLeaveOut(options, merged.origins.at(fault.codePoint)))
        return false;
    merged.leftOut[cbf::Reason(fault.problem)].push_back(fault.codePoint);
    merged.font.glyphs.erase(fault.codePoint);
    merged.origins.erase(fault.codePoint);
    return true;
}

// The input and the glyph that keep the font from being written.
std::string Blame(const cbf::Fault &fault, const std::vector<Input> &inputs,
                  const MergedFont &merged) {
    const size_t origin =
        fault.inFallback ? merged.fallbackOrigin : merged.origins.at(fault.codePoint);
    const std::string name =
        fault.inFallback ? "fallback glyph" : cbf::CodePointName(fault.codePoint);
    const cbf::Glyph &glyph =
        fault.inFallback ? merged.font.fallback : merged.font.glyphs.at(fault.codePoint);
    return inputs[origin].path + ": " + name + ": " + cbf::Reason(fault.problem) + SizesOf(glyph);
}

} // namespace

MergedFont ReadFonts(const Options &options, tool::Progress &progress) {
    const std::vector<Input> &inputs = options.inputs;
    const Sources sources = OpenFonts(inputs);
    MergedFont merged;
    ReadFallback(options.fallback, inputs, sources, merged);
    for (const auto &source : sources)
        merged.font.lineHeight = std::max(merged.font.lineHeight, source->LineHeight());
    uint32_t end = 0;
    for (const Input &input : inputs)
        end = std::max(end, input.wanted.End());
    for (uint32_t c = 0; c < end; ++c) {
        progress.Tell("reading", c, end);
        ReadCharacter(options, sources, c, merged);
    }
    AddSpacing(options, merged.font);
    return merged;
}

cbf::File MakeFile(const Options &options, MergedFont &merged) {
    while (!merged.font.glyphs.empty()) {
        cbf::File file = cbf::WriteFont(merged.font);
        if (file.fault.problem == cbf::Problem::None)
            return file;
        if (!LeaveOut(options, file.fault, merged))
            throw Failure(tool::kBadData, Blame(file.fault, options.inputs, merged));
    }
    return {};
}

} // namespace cbfconv
