// SPDX-License-Identifier: MIT
// Options before a font hold for it and those after, so the order of the command line is gone
// through once more after it has been parsed.
#include "cbfconv/options.h"

#include "common/command_line.h"
#include "common/input_file.h"
#include "common/version.h"

#include <algorithm>
#include <map>

#include <unistd.h>

namespace cbfconv {

using tool::Failure;

namespace {

// ---- The command line ----

// What stands there for the fonts, in the order of each option.
struct CommandLine {
    std::vector<std::string> fonts, sizes, faces, instances, ranges, exclusions, texts;
};

const char kFooter[] =
    "-s, --face, --instance, -r, -t and -x hold for the fonts that follow them; with a single font "
    "they may stand\n"
    "anywhere. If several fonts have a character, the first of them provides it:\n"
    "  cbfconv -o mixed.cbf -s 16 DejaVuSans.ttf -r U+4E00-U+9FFF unifont.hex\n"
    "LIST is 'all' or single characters and ranges such as 0x20-0x7E,U+0400-U+04FF,176.\n"
    "Without -r and -t it is 0x20-0x7E.";

// What each font is asked for by the options before it, in the order of the command line.
struct PerFont {
    CLI::Option *font, *size, *face, *instance, *ranges, *text, *exclusions;
};

PerFont DeclareFontOptions(CLI::App &app, CommandLine &line) {
    const auto declare = [&](const char *names, std::vector<std::string> &values,
                             const char *description, const char *type) {
        return app.add_option(names, values, description)->allow_extra_args(false)->type_name(type);
    };
    PerFont perFont = {};
    perFont.font =
        app.add_option("font", line.fonts,
                       "Fonts to convert: TTF, OTF, TTC, BDF, PCF (also .pcf.gz) or .hex")
            ->required()
            ->type_name("FONT");
    perFont.size =
        declare("-s,--size", line.sizes,
                "Size of the em square in pixels; 0 or none for bitmap fonts, which have their own",
                "PIXELS");
    perFont.face = declare("--face", line.faces,
                           "Font of a collection (.ttc), by number from 0 or by name", "FACE");
    perFont.instance = declare("--instance", line.instances,
                               "Instance of a variable font, by name or by values such as "
                               "wght=700,wdth=90; 'default': as it comes",
                               "INSTANCE");
    perFont.ranges =
        declare("-r,--ranges", line.ranges, "Characters to take, where the font has them", "LIST");
    perFont.text = declare("-t,--text", line.texts,
                           "Every character of a UTF-8 file, besides those of -r", "FILE");
    perFont.exclusions =
        declare("-x,--exclude", line.exclusions, "Characters to leave out", "LIST");
    return perFont;
}

void DeclareOptions(CLI::App &app, Options &options) {
    app.add_option("-o,--output", options.output, "CBF file to write; -: standard output")
        ->required()
        ->type_name("FILE");
    app.add_option("--fallback", options.fallback,
                   "Character to show for those that the font lacks, instead of the font's own "
                   "sign for them")
        ->type_name("CHARACTER");
    tool::AddInteger(app, "--letter-spacing", options.letterSpacing, -127, 127,
                     "Pixels to add to the advance of every glyph that has one")
        ->type_name("PIXELS");
    tool::AddInteger(app, "--line-spacing", options.lineSpacing, -1000, 1000,
                     "Pixels to add to the line height")
        ->type_name("PIXELS");
    app.add_flag("--strict", options.strict,
                 "Write nothing if '-r all' finds a character that a CBF font can't hold");
    app.add_flag("-v,--verbose", options.verbose, "Tell how many glyphs and bytes were written");
    app.set_version_flag("--version", tool::VersionText("cbfconv"));
    app.footer(kFooter);
}

std::string StandardOutput() {
    if (isatty(STDOUT_FILENO))
        throw Failure(tool::kBadUsage, "-o -: standard output is a terminal, which can't show a "
                                       "font; name a file, or pass it on with '|' or '>'");
    return kStandardOutput;
}

// ---- What is wanted of each font ----

// Line feeds and other control characters are not drawn, nor is a byte order mark.
bool IsDrawn(uint32_t c) {
    return c >= 0x20 && (c < 0x7F || c >= 0xA0) && c != 0xFEFF;
}

void AddCharactersOf(const std::string &path, CodePointSet &set) {
    const std::string text = tool::ReadText(path);
    for (size_t position = 0; position < text.size();) {
        const std::optional<tool::Utf8Character> character = tool::CharacterAt(text, position);
        if (!character) {
            const auto end = text.begin() + static_cast<ptrdiff_t>(position);
            throw Failure(tool::kBadData,
                          path + ":" + std::to_string(1 + std::count(text.begin(), end, '\n')) +
                              ": is not UTF-8 at offset " + std::to_string(position));
        }
        if (IsDrawn(character->codePoint))
            set.Set(character->codePoint, character->codePoint, true);
        position += character->bytes;
    }
}

void ChangeSet(CodePointSet &set, const char *option, const std::string &list, bool member) {
    try {
        set.Change(list, member);
    } catch (const std::invalid_argument &error) {
        throw Failure(tool::kBadUsage, option + std::string(": ") + error.what());
    }
}

// The options in force at some place of the command line. A list replaces an earlier one once
// fonts have used that.
struct Asked {
    FontChoice choice;
    std::vector<std::string> ranges, texts, exclusions;
    bool used = false;
};

Input MakeInput(const std::string &path, const Asked &asked) {
    Input input;
    input.path = path;
    input.choice = asked.choice;
    for (const std::string &text : asked.texts)
        AddCharactersOf(text, input.wanted);
    for (const std::string &list : asked.ranges)
        ChangeSet(input.wanted, "-r", list, true);
    if (asked.texts.empty() && asked.ranges.empty())
        input.wanted.Set(0x20, 0x7E, true);
    for (const std::string &list : asked.exclusions)
        ChangeSet(input.wanted, "-x", list, false);
    input.wanted.Set(0, 0, false); // never drawn, as the line feed
    input.wanted.Set('\n', '\n', false);
    return input;
}

// A new list of characters after a font starts afresh.
void AskForCharacters(Asked &asked, const PerFont &options, const CLI::Option *option,
                      const std::string &value) {
    if (asked.used) {
        asked.ranges.clear();
        asked.texts.clear();
        asked.exclusions.clear();
        asked.used = false;
    }
    (option == options.ranges ? asked.ranges
     : option == options.text ? asked.texts
                              : asked.exclusions)
        .push_back(value);
}

void Ask(Asked &asked, const PerFont &options, const CLI::Option *option,
         const std::string &value) {
    if (option == options.size)
        asked.choice.pixelSize = static_cast<int>(tool::IntegerBetween("--size", value, 0, 1000));
    else if (option == options.face)
        asked.choice.face = value;
    else if (option == options.instance)
        asked.choice.instance = value;
    else
        AskForCharacters(asked, options, option, value);
}

std::vector<Input> ListInputs(const CLI::App &app, const PerFont &options) {
    std::map<const CLI::Option *, size_t> taken;
    std::vector<Input> inputs;
    const bool single = options.font->count() == 1;
    Asked asked;
    const CLI::Option *unused = nullptr;
    for (const CLI::Option *option : app.parse_order()) {
        const CLI::Option *const known[] = {options.font,      options.size,   options.face,
                                            options.instance,  options.ranges, options.text,
                                            options.exclusions};
        if (std::find(std::begin(known), std::end(known), option) == std::end(known))
            continue;
        const std::string &value = option->results().at(taken[option]++);
        unused = option == options.font ? nullptr : option;
        if (option != options.font) {
            Ask(asked, options, option, value);
        } else if (!single) {
            inputs.push_back(MakeInput(value, asked));
            asked.used = true;
        }
    }
    if (single)
        inputs.push_back(MakeInput(options.font->results().front(), asked));
    else if (unused)
        throw Failure(tool::kBadUsage, unused->get_name() +
                                           ": stands after the last font, and holds for "
                                           "those that follow it");
    return inputs;
}

} // namespace

std::optional<Options> ParseOptions(int argc, char **argv) {
    Options options;
    CommandLine line;
    CLI::App app("Makes a CBF font for liborn_min_render from outline or bitmap fonts", "cbfconv");
    const PerFont perFont = DeclareFontOptions(app, line);
    DeclareOptions(app, options);
    if (!tool::ParseCommandLine(app, argc, argv))
        return {};
    if (options.output == "-")
        options.output = StandardOutput();
    options.inputs = ListInputs(app, perFont);
    options.files = line.fonts;
    options.files.insert(options.files.end(), line.texts.begin(), line.texts.end());
    return options;
}

} // namespace cbfconv
