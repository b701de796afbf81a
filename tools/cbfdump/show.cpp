// SPDX-License-Identifier: MIT
// Rows of text, made in memory, so that a result is written whole or not at all.
#include "cbfdump/show.h"

#include "cbf/code_points.h"
#include "cbf/glyph_reader.h"
#include "common/failure.h"
#include "common/streams.h"
#include "common/text.h"

namespace cbfdump {

std::string ShowPicture(const Picture &picture) {
    std::string text;
    for (int32_t y = 0; y < picture.height; ++y) {
        for (int32_t x = 0; x < picture.width; ++x) {
            const uint8_t luma = picture.luma[static_cast<size_t>(y * picture.width + x)];
            text += luma == kInkLuma ? '#' : luma == kOutlineLuma ? '+' : '.';
        }
        text += '\n';
    }
    return text;
}

static uint32_t FindRecord(const Options &options, const cbf::FontFile &font) {
    if (options.character == "fallback")
        return 0;
    const std::optional<uint32_t> codePoint = cbf::ParseCharacter(options.character);
    if (!codePoint)
        throw tool::Failure(tool::kBadUsage,
                            "--glyph: '" + options.character +
                                "' is no single character, nor a number such as U+0041, nor "
                                "'fallback' (--help tells more)");
    const std::optional<uint32_t> offset = cbf::FindOffset(font.index, *codePoint);
    if (!offset)
        throw tool::Failure(tool::kBadData, options.path + ": has no glyph of its own for " +
                                                cbf::CodePointName(*codePoint));
    return *offset;
}

std::string ShowGlyph(const Options &options, const cbf::View &file, const cbf::FontFile &font) {
    const uint32_t offset = FindRecord(options, font);
    const cbf::StoredGlyph stored = cbf::ReadGlyph(file, font, offset);
    if (!stored.whole)
        throw tool::Failure(tool::kBadData, options.path + ": " + options.character +
                                                ": its record lies outside the glyph data");
    for (const std::string &line : stored.complaints.Lines())
        tool::Say("cbfdump", options.path + ": " + options.character + ": " + line);
    const cbf::Glyph &glyph = stored.glyph;
    std::string text = tool::Format(
        "record at %u of the glyph data, %llu of the file: %zu runs in %zu bytes\n", offset,
        static_cast<unsigned long long>(font.dataOffset + offset), stored.runs, stored.codedBytes);
    text += tool::Format("box %d x %d, left column %d, top row %d above the pen, advance %d\n",
                         glyph.width, glyph.height, glyph.bearingX, glyph.bearingY, glyph.advance);
    for (size_t pixel = 0; pixel < glyph.pixels.size();) {
        for (int32_t x = 0; x < glyph.width; ++x)
            text += glyph.pixels[pixel++] ? '#' : '.';
        text += '\n';
    }
    return text;
}

} // namespace cbfdump
