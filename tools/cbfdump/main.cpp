// SPDX-License-Identifier: MIT
// cbfdump: tells what a CBF font holds, shows its glyphs, and says what is wrong with a bad one.
#include "cbf/check.h"
#include "cbfdump/options.h"
#include "cbfdump/picture_file.h"
#include "cbfdump/sheet.h"
#include "cbfdump/show.h"
#include "cbfdump/summary.h"
#include "cbfdump/tables.h"
#include "common/failure.h"
#include "common/input_file.h"
#include "common/output_file.h"
#include "common/program.h"
#include "common/shown.h"
#include "common/streams.h"

#include <memory>

namespace cbfdump {

using Font = std::unique_ptr<OrnMinRenderFont, decltype(&OrnMinRenderDestroyFont)>;

static Font LoadFont(const std::string &path) {
    Font font(OrnMinRenderLoadCbfFont(path.c_str()), OrnMinRenderDestroyFont);
    if (!font)
        throw tool::Failure(tool::kBadData, path + ": the library does not load it");
    return font;
}

static int Check(const std::string &path, const cbf::View &file, const cbf::FontFile &font) {
    const cbf::Complaints complaints = cbf::CheckFont(file, font);
    const std::string name = tool::Shown(path);
    std::string text;
    for (const std::string &line : complaints.Lines())
        text += name + ": " + line + "\n";
    if (complaints.Empty()) {
        text = name + ": sound, " + std::to_string(font.index.entries.size()) + " characters";
        if (const size_t count = CountWithoutOutline(file, font))
            text += ", " + std::to_string(count) + " glyphs too large to be drawn with an outline";
        text += "\n";
    }
    tool::WriteOutput(text);
    return complaints.Empty() ? 0 : tool::kBadData;
}

static std::string Show(const Options &options, const cbf::View &file, const cbf::FontFile &font) {
    if (options.tables)
        return ListTables(font);
    if (!options.character.empty())
        return ShowGlyph(options, file, font);
    if (!options.text.empty())
        return ShowPicture(DrawText(LoadFont(options.path).get(), options.direction, options.text,
                                    options.outline));
    return Summarise(options.path, file, font);
}

static int Run(int argc, char **argv) {
    const std::optional<Options> parsed = ParseOptions(argc, argv);
    if (!parsed)
        return 0;
    const Options &options = *parsed;
    if (!options.sheet.empty())
        tool::CheckTarget(options.sheet, {options.path});
    const cbf::Bytes file = tool::ReadData(options.path);
    const cbf::FontFile font = cbf::ReadFont(file);
    if (options.check)
        return Check(options.path, file, font);
    if (!font.loads)
        throw tool::Failure(tool::kBadData, options.path + ": " + font.complaints.First());
    if (options.sheet.empty())
        tool::WriteOutput(Show(options, file, font));
    else
        WritePicture(DrawSheet(LoadFont(options.path).get(), file, font), options.sheet);
    const bool summary = !options.tables && options.character.empty() && options.text.empty() &&
                         options.sheet.empty();
    if (summary && !cbf::CheckFont(file, font).Empty())
        tool::Say("cbfdump", options.path + ": has faults; --check lists them");
    return 0;
}

} // namespace cbfdump

int main(int argc, char **argv) {
    return tool::RunProgram("cbfdump", argc, argv, cbfdump::Run);
}
