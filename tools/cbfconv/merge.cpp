// SPDX-License-Identifier: MIT
#include "cbfconv/merge.h"

#include "cbf/code_points.h"
#include "common/failure.h"

#include <algorithm>

namespace cbfconv {

using tool::Failure;

namespace {

// Runs a call that throws FontError, and names the font.
template <typename Call> auto OfFont(const std::string &path, Call call) {
    try {
        return call();
    } catch (const FontSizeError &error) {
        throw Failure(tool::kBadUsage, path + ": " + error.what());
    } catch (const FontError &error) {
        throw Failure(tool::kBadData, path + ": " + error.what());
    }
}

using Sources = std::vector<std::unique_ptr<FontSource>>;

Sources OpenFonts(const std::vector<Input> &inputs) {
    Sources sources;
    for (const Input &input : inputs)
        sources.push_back(
            OfFont(input.path, [&] { return OpenFont(input.path, input.pixelSize); }));
    return sources;
}

void ReadCharacter(const std::vector<Input> &inputs, const Sources &sources, uint32_t codePoint,
                   MergedFont &merged) {
    bool byNumber = false;
    for (size_t i = 0; i < inputs.size(); ++i) {
        if (!inputs[i].wanted.Has(codePoint))
            continue;
        byNumber |= !inputs[i].wanted.HoldsAll();
        auto glyph = OfFont(inputs[i].path, [&] { return sources[i]->Read(codePoint); });
        if (!glyph)
            continue;
        merged.font.glyphs.emplace_hint(merged.font.glyphs.end(), codePoint, std::move(*glyph));
        merged.origins.emplace_hint(merged.origins.end(), codePoint, i);
        return;
    }
    if (byNumber)
        merged.missing.push_back(codePoint);
}

cbf::Glyph ReadFallback(const std::string &character, const std::vector<Input> &inputs,
                        const Sources &sources) {
    if (character.empty())
        return OfFont(inputs[0].path, [&] { return sources[0]->Fallback(); });
    const std::optional<uint32_t> codePoint = cbf::ParseCharacter(character);
    if (!codePoint)
        throw Failure(tool::kBadUsage, "--fallback: '" + character +
                                           "' is no single character, nor a number such as U+FFFD");
    for (size_t i = 0; i < inputs.size(); ++i)
        if (auto glyph = OfFont(inputs[i].path, [&] { return sources[i]->Read(*codePoint); }))
            return *glyph;
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

} // namespace

MergedFont ReadFonts(const Options &options, tool::Progress &progress) {
    const std::vector<Input> &inputs = options.inputs;
    const Sources sources = OpenFonts(inputs);
    MergedFont merged;
    merged.font.fallback = ReadFallback(options.fallback, inputs, sources);
    for (const auto &source : sources)
        merged.font.lineHeight = std::max(merged.font.lineHeight, source->LineHeight());
    for (uint32_t c = 0; c <= tool::kMaxCodePoint; ++c) {
        progress.Tell("reading", c, tool::kMaxCodePoint);
        ReadCharacter(inputs, sources, c, merged);
    }
    AddSpacing(options, merged.font);
    return merged;
}

} // namespace cbfconv
