// cbfconv: makes a CBF font from outline fonts at one size, or from bitmap fonts.
//
// A font is published only after the library itself has loaded it from a temporary file and drawn
// every glyph of it, in every direction, exactly as it was read.
#include "cbf_writer.h"
#include "code_points.h"
#include "font_check.h"
#include "font_source.h"
#include "orn_min_render.h"
#include "output_file.h"
#include "progress.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <map>

namespace {

constexpr int kBadData = 1;
constexpr int kBadUsage = 2;

// What went wrong, and which exit code tells of it. The text is complete but for the program name.
struct Failure : std::runtime_error {
    Failure(int code, const std::string &text) : std::runtime_error(text), exitCode(code) {
    }
    int exitCode;
};

// ---- The command line ----

// One input font. What it is asked for may be more than it has.
struct Input {
    std::string path;
    int pixelSize = kNativeSize;
    CodePointSet wanted;
};

struct Options {
    std::vector<std::string> fonts, sizes, ranges, exclusions, texts;
    std::string output;
    std::string fallback;
    int letterSpacing = 0;
    int lineSpacing = 0;
    bool verbose = false;
};

const char kFooter[] =
    "-s, -r, -t and -x hold for the fonts that follow them; with a single font they may stand\n"
    "anywhere. Of several fonts the first that has a character provides it:\n"
    "  cbfconv -o mixed.cbf -s 16 DejaVuSans.ttf -r U+4E00-U+9FFF unifont.hex\n"
    "LIST is 'all' or single characters and ranges such as 0x20-0x7E,U+0400-U+04FF,176.\n"
    "Without -r and -t it is 0x20-0x7E.";

std::string VersionText() {
    return "cbfconv " + std::to_string(ORN_MIN_RENDER_VERSION_MAJOR) + "." +
           std::to_string(ORN_MIN_RENDER_VERSION_MINOR) + "." +
           std::to_string(ORN_MIN_RENDER_VERSION_PATCH);
}

// What each font is asked for by the options before it, in the order of the command line.
struct PerFont {
    CLI::Option *font, *size, *ranges, *text, *exclusions;
};

PerFont DeclareFontOptions(CLI::App *app, Options *options) {
    const auto declare = [&](const char *names, std::vector<std::string> *values,
                             const char *description, const char *type) {
        return app->add_option(names, *values, description)
            ->allow_extra_args(false)
            ->type_name(type);
    };
    PerFont perFont = {};
    perFont.font = app->add_option("font", options->fonts,
                                   "Fonts to convert: TTF, OTF, BDF, PCF (also .pcf.gz) or .hex")
                       ->required()
                       ->type_name("FONT");
    perFont.size =
        declare("-s,--size", &options->sizes,
                "Size in pixels (of the em square); 0, or none: a bitmap font's own", "PIXELS")
            ->check(CLI::Range(0, 1000).description(""));
    perFont.ranges = declare("-r,--ranges", &options->ranges,
                             "Characters; what the font lacks is left out", "LIST");
    perFont.text = declare("-t,--text", &options->texts,
                           "Every character of a UTF-8 file, besides those of -r", "FILE");
    perFont.exclusions =
        declare("-x,--exclude", &options->exclusions, "Characters to leave out", "LIST");
    return perFont;
}

void DeclareOptions(CLI::App *app, Options *options) {
    app->add_option("-o,--output", options->output, "CBF file to write")
        ->required()
        ->type_name("FILE");
    app->add_option("--fallback", options->fallback,
                    "Character shown for those that the font lacks, instead of the font's own sign "
                    "for that")
        ->type_name("CHARACTER");
    app->add_option("--letter-spacing", options->letterSpacing,
                    "Pixels to add to the advance of every glyph that has one")
        ->check(CLI::Range(-127, 127).description(""))
        ->type_name("PIXELS");
    app->add_option("--line-spacing", options->lineSpacing, "Pixels to add to the line height")
        ->check(CLI::Range(-1000, 1000).description(""))
        ->type_name("PIXELS");
    app->add_flag("-v,--verbose", options->verbose, "Tell what was written");
    app->set_version_flag("--version", VersionText());
    app->footer(kFooter);
}

// ---- What is wanted of each font ----

// Line feeds and other control characters are not drawn, nor is a byte order mark.
bool IsDrawn(uint32_t c) {
    return c >= 0x20 && (c < 0x7F || c >= 0xA0) && c != 0xFEFF;
}

std::string ReadTextFile(const std::string &path) {
    std::FILE *file = std::fopen(path.c_str(), "rb");
    if (!file)
        throw Failure(kBadData, path + ": " + std::strerror(errno));
    std::string text;
    for (int byte; (byte = std::getc(file)) != EOF;)
        text += static_cast<char>(byte);
    const int error = std::ferror(file) ? errno : 0; // of a directory, for example
    std::fclose(file);
    if (error)
        throw Failure(kBadData, path + ": " + std::strerror(error));
    return text;
}

void AddCharactersOf(const std::string &path, CodePointSet *set) {
    const std::string text = ReadTextFile(path);
    for (size_t position = 0; position < text.size();) {
        const size_t start = position;
        const std::optional<uint32_t> c = NextCharacter(text, &position);
        if (!c) {
            const auto end = text.begin() + static_cast<ptrdiff_t>(start);
            throw Failure(kBadData, path + ":" +
                                        std::to_string(1 + std::count(text.begin(), end, '\n')) +
                                        ": is not UTF-8 at offset " + std::to_string(start));
        }
        if (IsDrawn(*c))
            set->Set(*c, *c, true);
    }
}

void ChangeSet(CodePointSet *set, const char *option, const std::string &list, bool member) {
    try {
        set->Change(list, member);
    } catch (const std::invalid_argument &error) {
        throw Failure(kBadUsage, option + std::string(": ") + error.what());
    }
}

// The options in force at some place of the command line. A list replaces an earlier one once
// fonts have used that.
struct Asked {
    std::string size;
    std::vector<std::string> ranges, texts, exclusions;
    bool used = false;
};

Input MakeInput(const std::string &path, const Asked &asked) {
    Input input;
    input.path = path;
    if (!asked.size.empty())
        input.pixelSize = std::stoi(asked.size);
    for (const std::string &text : asked.texts)
        AddCharactersOf(text, &input.wanted);
    for (const std::string &list : asked.ranges)
        ChangeSet(&input.wanted, "-r", list, true);
    if (asked.texts.empty() && asked.ranges.empty())
        input.wanted.Set(0x20, 0x7E, true);
    for (const std::string &list : asked.exclusions)
        ChangeSet(&input.wanted, "-x", list, false);
    input.wanted.Set(0, 0, false); // never drawn, as the line feed
    input.wanted.Set('\n', '\n', false);
    return input;
}

// A new list of characters after a font starts afresh; the size stays.
void Ask(Asked *asked, const PerFont &options, const CLI::Option *option,
         const std::string &value) {
    if (option == options.size) {
        asked->size = value;
        return;
    }
    if (asked->used) {
        asked->ranges.clear();
        asked->texts.clear();
        asked->exclusions.clear();
        asked->used = false;
    }
    (option == options.ranges ? asked->ranges
     : option == options.text ? asked->texts
                              : asked->exclusions)
        .push_back(value);
}

std::vector<Input> ListInputs(const CLI::App &app, const PerFont &options) {
    std::map<const CLI::Option *, size_t> taken;
    std::vector<Input> inputs;
    const bool single = options.font->count() == 1;
    Asked asked;
    const CLI::Option *unused = nullptr;
    for (const CLI::Option *option : app.parse_order()) {
        const bool known = option == options.font || option == options.size ||
                           option == options.ranges || option == options.text ||
                           option == options.exclusions;
        if (!known)
            continue;
        const std::string &value = option->results().at(taken[option]++);
        unused = option == options.font ? nullptr : option;
        if (option != options.font) {
            Ask(&asked, options, option, value);
        } else if (!single) {
            inputs.push_back(MakeInput(value, asked));
            asked.used = true;
        }
    }
    if (single)
        inputs.push_back(MakeInput(options.font->results().front(), asked));
    else if (unused)
        throw Failure(kBadUsage, unused->get_name() + ": stands after the last font, and holds for "
                                                      "those that follow it");
    return inputs;
}

void CheckOutput(const std::vector<Input> &inputs, const std::string &output) {
    std::error_code ignored;
    for (const Input &input : inputs)
        if (std::filesystem::equivalent(input.path, output, ignored))
            throw Failure(kBadUsage, output + ": is a font to convert");
    CheckTarget(output);
}

// ---- Reading ----

struct MergedFont {
    cbf::Font font;
    std::map<uint32_t, size_t> origins; // of the glyphs: positions in the inputs
    std::vector<uint32_t> missing;      // asked for by number, and in no font
};

// Runs a call that throws FontError, and names the font.
template <typename Call> auto OfFont(const std::string &path, Call call) {
    try {
        return call();
    } catch (const FontSizeError &error) {
        throw Failure(kBadUsage, path + ": " + error.what());
    } catch (const FontError &error) {
        throw Failure(kBadData, path + ": " + error.what());
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
                   MergedFont *merged) {
    bool byNumber = false;
    for (size_t i = 0; i < inputs.size(); ++i) {
        if (!inputs[i].wanted.Has(codePoint))
            continue;
        byNumber |= !inputs[i].wanted.HoldsAll();
        auto glyph = OfFont(inputs[i].path, [&] { return sources[i]->Read(codePoint); });
        if (!glyph)
            continue;
        merged->font.glyphs.emplace_hint(merged->font.glyphs.end(), codePoint, std::move(*glyph));
        merged->origins.emplace_hint(merged->origins.end(), codePoint, i);
        return;
    }
    if (byNumber)
        merged->missing.push_back(codePoint);
}

cbf::Glyph ReadFallback(const std::string &character, const std::vector<Input> &inputs,
                        const Sources &sources) {
    if (character.empty())
        return OfFont(inputs[0].path, [&] { return sources[0]->Fallback(); });
    const std::optional<uint32_t> codePoint = ParseCharacter(character);
    if (!codePoint)
        throw Failure(kBadUsage, "--fallback: '" + character +
                                     "' is no single character, nor a number such as U+FFFD");
    for (size_t i = 0; i < inputs.size(); ++i)
        if (auto glyph = OfFont(inputs[i].path, [&] { return sources[i]->Read(*codePoint); }))
            return *glyph;
    throw Failure(kBadData, "--fallback: no font has " + CodePointName(*codePoint));
}

void AddSpacing(const Options &options, cbf::Font *font) {
    font->lineHeight += options.lineSpacing;
    const auto space = [&](cbf::Glyph *glyph) {
        if (glyph->advance != 0) // which marks over other glyphs keep
            glyph->advance += options.letterSpacing;
    };
    space(&font->fallback);
    for (auto &[codePoint, glyph] : font->glyphs)
        space(&glyph);
}

MergedFont ReadFonts(const Options &options, const std::vector<Input> &inputs, Progress *progress) {
    const Sources sources = OpenFonts(inputs);
    MergedFont merged;
    merged.font.fallback = ReadFallback(options.fallback, inputs, sources);
    for (const auto &source : sources)
        merged.font.lineHeight = std::max(merged.font.lineHeight, source->LineHeight());
    for (uint32_t c = 0; c <= kMaxCodePoint; ++c) {
        progress->Tell("reading", c, kMaxCodePoint);
        ReadCharacter(inputs, sources, c, &merged);
    }
    AddSpacing(options, &merged.font);
    return merged;
}

// ---- Writing ----

std::string ListPaths(const std::vector<Input> &inputs) {
    std::string list;
    for (const Input &input : inputs)
        list += (list.empty() ? "" : ", ") + input.path;
    return list;
}

// The input and the glyph that are to blame.
std::string DescribeFault(const cbf::Fault &fault, const std::vector<Input> &inputs,
                          const MergedFont &merged) {
    const cbf::Glyph &glyph =
        fault.inFallback ? merged.font.fallback : merged.font.glyphs.at(fault.codePoint);
    const std::string name = fault.inFallback ? "fallback glyph" : CodePointName(fault.codePoint);
    const size_t origin = fault.inFallback ? 0 : merged.origins.at(fault.codePoint);
    return inputs[origin].path + ": " + name + ": " + cbf::Reason(fault.problem) + " (" +
           std::to_string(glyph.width) + " x " + std::to_string(glyph.height) + ", advance " +
           std::to_string(glyph.advance) + ")";
}

void Publish(const std::string &path, const cbf::Bytes &bytes, const cbf::Font &font,
             Progress *progress) {
    OutputFile file(path);
    file.Write(bytes.data(), bytes.size());
    const std::string difference = FirstDifference(file.TemporaryPath(), font, progress);
    if (!difference.empty())
        throw Failure(kBadData, path + ": " + difference);
    file.Publish();
}

// ---- Telling ----

void Say(const std::string &text) {
    std::fprintf(stderr, "cbfconv: %s\n", text.c_str());
}

std::string ListMissing(const std::vector<uint32_t> &missing) {
    constexpr size_t kListed = 6;
    std::string list;
    for (size_t i = 0; i < std::min(missing.size(), kListed); ++i)
        list += (i ? ", " : "") + CodePointName(missing[i]);
    return list + (missing.size() > kListed ? ", ..." : "");
}

// An outline is 5 pixels wider and higher than its glyph, and has the same limit of 127.
constexpr int32_t kMaxOutlined = 122;

size_t CountWithoutOutline(const cbf::Font &font) {
    return static_cast<size_t>(
        std::count_if(font.glyphs.begin(), font.glyphs.end(), [](const auto &entry) {
            return std::max(entry.second.width, entry.second.height) > kMaxOutlined;
        }));
}

void TellOmissions(const std::vector<Input> &inputs, const MergedFont &merged) {
    const std::string paths = ListPaths(inputs);
    const size_t present = merged.font.glyphs.size();
    if (const size_t missing = merged.missing.size(); missing > 0)
        Say(paths + (inputs.size() > 1 ? ": have " : ": has ") + std::to_string(present) +
            " of the " + std::to_string(present + missing) + " characters, " +
            std::to_string(missing) + " missing: " + ListMissing(merged.missing));
    for (size_t i = 0; i < inputs.size(); ++i)
        if (std::none_of(merged.origins.begin(), merged.origins.end(),
                         [&](const auto &entry) { return entry.second == i; }))
            Say(inputs[i].path + ": provides no character");
    if (const size_t count = CountWithoutOutline(merged.font))
        Say(paths + ": " + std::to_string(count) +
            " glyphs are too large to be drawn with an outline");
}

// Of the glyphs' boxes at one bit a pixel, in rows of whole bytes.
size_t RawBytes(const cbf::Font &font) {
    size_t bytes = 0;
    for (const auto &[codePoint, glyph] : font.glyphs)
        bytes += static_cast<size_t>((glyph.width + 7) / 8 * glyph.height);
    return bytes;
}

// A table's entries are sorted, so the last is the longest.
uint32_t LongestCode(const cbf::Bytes &file, size_t table) {
    const auto half = [&](size_t i) { return uint32_t{file[i]} | uint32_t{file[i + 1]} << 8; };
    const size_t count = half(table) | half(table + 2) << 16;
    return count ? half(table + 4 * count + 2) : 0;
}

void TellResult(const std::string &output, const cbf::File &file, const cbf::Font &font) {
    const auto word = [&](size_t i) {
        return size_t{file.bytes[i]} | size_t{file.bytes[i + 1]} << 8 |
               size_t{file.bytes[i + 2]} << 16 | size_t{file.bytes[i + 3]} << 24;
    };
    const size_t glyphs = font.glyphs.size();
    const auto total = static_cast<double>(file.bytes.size());
    const size_t raw = RawBytes(font);
    std::printf("%s: %zu glyphs, %zu bytes, %.1f bytes a glyph\n", output.c_str(), glyphs,
                file.bytes.size(), total / static_cast<double>(glyphs));
    std::printf("  glyph data %zu (%zu records), index %zu, run tables %zu, header %zu\n",
                file.sizes.glyphData, file.records, file.sizes.index, file.sizes.runTables,
                file.sizes.header);
    std::printf("  longest codes: background %u bits, ink %u, delta %u\n",
                LongestCode(file.bytes, word(12)), LongestCode(file.bytes, word(16)),
                LongestCode(file.bytes, word(20) + 4));
    if (raw > 0)
        std::printf("  the bitmaps alone, one bit a pixel, take %zu bytes: the file is %.2f times "
                    "that\n",
                    raw, total / static_cast<double>(raw));
}

// ---- Converting ----

void Convert(const Options &options, const std::vector<Input> &inputs) {
    CheckOutput(inputs, options.output);
    MergedFont merged;
    cbf::File file;
    {
        Progress progress("cbfconv");
        merged = ReadFonts(options, inputs, &progress);
        if (merged.font.glyphs.empty())
            throw Failure(kBadData, ListPaths(inputs) + ": " +
                                        (inputs.size() > 1 ? "have" : "has") +
                                        " none of the characters");
        file = cbf::WriteFont(merged.font);
        if (file.fault.problem != cbf::Problem::None)
            throw Failure(kBadData, DescribeFault(file.fault, inputs, merged));
        Publish(options.output, file.bytes, merged.font, &progress);
    }
    TellOmissions(inputs, merged);
    if (options.verbose)
        TellResult(options.output, file, merged.font);
}

int Fail(int code, const std::string &text) {
    Say(text);
    return code;
}

} // namespace

int main(int argc, char **argv) {
    Options options;
    CLI::App app("Makes a CBF font for liborn_min_render from outline or bitmap fonts", "cbfconv");
    const PerFont perFont = DeclareFontOptions(&app, &options);
    DeclareOptions(&app, &options);
    try {
        app.parse(argc, argv);
        Convert(options, ListInputs(app, perFont));
    } catch (const CLI::Success &help) {
        return app.exit(help);
    } catch (const CLI::ParseError &error) {
        return Fail(kBadUsage, error.what() + std::string(" (--help tells more)"));
    } catch (const Failure &failure) {
        return Fail(failure.exitCode, failure.what());
    } catch (const std::invalid_argument &error) { // the output
        return Fail(kBadUsage, error.what());
    } catch (const std::exception &error) { // memory, mostly
        return Fail(kBadData, error.what());
    }
    return 0;
}
