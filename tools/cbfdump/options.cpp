// SPDX-License-Identifier: MIT
// Modes exclude each other; without any, the summary is shown.
#include "cbfdump/options.h"

#include "common/command_line.h"
#include "common/utf8.h"
#include "common/version.h"

#include <algorithm>

namespace cbfdump {

using tool::Failure;

namespace {

void ParseDirection(const std::string &text, Options &options) {
    static const char *const names[] = {"normal", "down", "up", "inverted"}; // by value
    const auto *name = std::find(std::begin(names), std::end(names), CLI::detail::to_lower(text));
    if (name == std::end(names))
        throw CLI::ValidationError("--direction",
                                   "expected normal, down, up or inverted, not '" + text + "'");
    options.direction = static_cast<int32_t>(name - std::begin(names));
}

void DeclareOptions(CLI::App &app, Options &options) {
    app.add_option("font", options.path, "CBF font")->required()->type_name("FONT");
    const std::vector<CLI::Option *> modes = {
        app.add_flag("--check", options.check,
                     "List everything that is wrong with the file, with its offset"),
        app.add_flag("--tables", options.tables, "List the codes of the three tables"),
        app.add_option("--glyph", options.character,
                       "Show a character's record and picture (A, U+0041 or fallback)")
            ->type_name("CHARACTER"),
        app.add_option("--text", options.text, "Show a text, as the library draws it")
            ->type_name("TEXT"),
        app.add_option("--sheet", options.sheet,
                       "Write a picture of all characters: .pgm, or .png through ffmpeg")
            ->type_name("FILE")};
    for (CLI::Option *mode : modes) {
        mode->group("Instead of the summary");
        if (mode->get_expected_min() > 0) // not a flag
            mode->check([](const std::string &value) { return value.empty() ? "is empty" : ""; });
        for (CLI::Option *other : modes)
            if (other != mode)
                mode->excludes(other);
    }
    CLI::Option *text = modes[3];
    app.add_option_function<std::string>(
           "--direction", [&options](const std::string &name) { ParseDirection(name, options); },
           "normal, down, up or inverted")
        ->type_name("DIRECTION")
        ->needs(text)
        ->group("For --text");
    app.add_flag("--outline", options.outline, "Draw the text with its outline")
        ->needs(text)
        ->group("For --text");
    app.set_version_flag("--version", tool::VersionText("cbfdump"));
}

Failure BadUsage(const std::string &text) {
    return Failure(tool::kBadUsage, text + " (--help tells more)");
}

// What the library would silently draw nothing of, or only a part.
void CheckText(const std::string &text) {
    for (size_t position = 0; position < text.size();) {
        const std::optional<tool::Utf8Character> character = tool::CharacterAt(text, position);
        if (!character)
            throw BadUsage("--text: is not UTF-8");
        position += character->bytes;
    }
}

void CheckSheetName(const std::string &path) {
    const size_t dot = path.rfind('.');
    const std::string extension = dot == std::string::npos ? "" : path.substr(dot);
    if (!path.empty() && extension != ".pgm" && extension != ".png")
        throw BadUsage("--sheet: '" + path + "' ends neither in .pgm nor in .png");
}

} // namespace

std::optional<Options> ParseOptions(int argc, char **argv) {
    Options options;
    CLI::App app("Tells what a CBF font holds, shows its glyphs, and checks it", "cbfdump");
    DeclareOptions(app, options);
    if (!tool::ParseCommandLine(app, argc, argv))
        return {};
    CheckText(options.text);
    CheckSheetName(options.sheet);
    return options;
}

} // namespace cbfdump
