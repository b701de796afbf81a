// cbfdump: tells what a CBF font holds, shows its glyphs, and says what is wrong with a bad one.
#include "cbf_reader.h"
#include "code_points.h"
#include "font_picture.h"
#include "orn_min_render.h"
#include "output_file.h"
#include "unicode_blocks.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>
#include <set>

namespace {

constexpr int kBadData = 1;
constexpr int kBadUsage = 2;

// What went wrong with a file. The text is complete but for the program name.
struct Failure : std::runtime_error {
    using runtime_error::runtime_error;
};

// ---- The command line ----

struct Options {
    std::string path;
    std::string character; // of the modes, empty or false ones are not asked for
    std::string text;
    std::string sheet;
    int32_t direction = OrnMinRenderTextDirection::Normal;
    bool outline = false;
    bool tables = false;
    bool check = false;
};

std::string VersionText() {
    return "cbfdump " + std::to_string(ORN_MIN_RENDER_VERSION_MAJOR) + "." +
           std::to_string(ORN_MIN_RENDER_VERSION_MINOR) + "." +
           std::to_string(ORN_MIN_RENDER_VERSION_PATCH);
}

void ParseDirection(const std::string &text, Options *options) {
    static const char *const names[] = {"normal", "down", "up", "inverted"}; // by value
    const auto *name = std::find(std::begin(names), std::end(names), CLI::detail::to_lower(text));
    if (name == std::end(names))
        throw CLI::ValidationError("--direction",
                                   "expected normal, down, up or inverted, not '" + text + "'");
    options->direction = static_cast<int32_t>(name - std::begin(names));
}

void DeclareOptions(CLI::App *app, Options *options) {
    app->add_option("font", options->path, "CBF font")->required()->type_name("FONT");
    const std::vector<CLI::Option *> modes = {
        app->add_flag("--check", options->check,
                      "Say everything that is wrong with the file, and at which offset"),
        app->add_flag("--tables", options->tables, "List the codes of the three tables"),
        app->add_option("--glyph", options->character,
                        "Show a character's record and picture (A, U+0041 or fallback)")
            ->type_name("CHARACTER"),
        app->add_option("--text", options->text, "Show a text, as the library draws it")
            ->type_name("TEXT"),
        app->add_option("--sheet", options->sheet,
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
    app->add_option_function<std::string>(
           "--direction", [=](const std::string &name) { ParseDirection(name, options); },
           "normal, down, up or inverted")
        ->type_name("DIRECTION")
        ->needs(text)
        ->group("For --text");
    app->add_flag("--outline", options->outline, "With outline")->needs(text)->group("For --text");
    app->set_version_flag("--version", VersionText());
}

// What the library would silently draw nothing of, or only a part.
void CheckText(const std::string &text) {
    for (size_t position = 0; position < text.size();)
        if (!NextCharacter(text, &position))
            throw CLI::ValidationError("--text", "is not UTF-8");
}

void CheckSheetName(const std::string &path) {
    const size_t dot = path.rfind('.');
    const std::string extension = dot == std::string::npos ? "" : path.substr(dot);
    if (!path.empty() && extension != ".pgm" && extension != ".png")
        throw CLI::ValidationError("--sheet", "'" + path + "' ends neither in .pgm nor in .png");
}

// ---- Loading ----

cbf::Bytes ReadFile(const std::string &path) {
    std::FILE *file = std::fopen(path.c_str(), "rb");
    if (!file)
        throw Failure(path + ": " + std::strerror(errno));
    cbf::Bytes bytes;
    uint8_t block[65536];
    while (const size_t count = std::fread(block, 1, sizeof block, file))
        bytes.insert(bytes.end(), block, block + count);
    const int error = std::ferror(file) ? errno : 0;
    std::fclose(file);
    if (error)
        throw Failure(path + ": " + std::strerror(error));
    return bytes;
}

using Font = std::unique_ptr<OrnMinRenderFont, decltype(&OrnMinRenderDestroyFont)>;

Font LoadFont(const std::string &path) {
    Font font(OrnMinRenderLoadCbfFont(path.c_str()), OrnMinRenderDestroyFont);
    if (!font)
        throw Failure(path + ": the library does not load it");
    return font;
}

// ---- Totals ----

struct GlyphTotals {
    size_t records = 0;
    size_t codedBytes = 0;
    size_t paddingBits = 0;
    size_t runs = 0;
    int32_t ascent = 0;  // rows of ink above the baseline
    int32_t descent = 0; // and below
    int32_t minAdvance = INT32_MAX;
    int32_t maxAdvance = INT32_MIN;
    int32_t maxWidth = 0;
    int32_t maxHeight = 0;
    size_t withoutOutline = 0;
};

// An outline is 5 pixels wider and higher than its glyph, and has the same limit of 127.
constexpr int32_t kMaxOutlined = 122;

void AddGlyph(GlyphTotals *totals, const cbf::StoredGlyph &stored) {
    const cbf::Glyph &glyph = stored.glyph;
    ++totals->records;
    totals->codedBytes += stored.codedBytes;
    totals->paddingBits += stored.paddingBits;
    totals->runs += stored.runs;
    totals->ascent = std::max(totals->ascent, glyph.bearingY);
    totals->descent = std::max(totals->descent, glyph.height - glyph.bearingY);
    totals->minAdvance = std::min(totals->minAdvance, glyph.advance);
    totals->maxAdvance = std::max(totals->maxAdvance, glyph.advance);
    totals->maxWidth = std::max(totals->maxWidth, glyph.width);
    totals->maxHeight = std::max(totals->maxHeight, glyph.height);
    totals->withoutOutline += std::max(glyph.width, glyph.height) > kMaxOutlined;
}

GlyphTotals SumGlyphs(const cbf::Bytes &file, const cbf::FontFile &font) {
    std::set<uint32_t> offsets = {0};
    for (const auto &[codePoint, offset] : font.records)
        offsets.insert(offset);
    GlyphTotals totals;
    for (const uint32_t offset : offsets)
        if (const cbf::StoredGlyph stored = cbf::ReadGlyph(file, font, offset); stored.whole)
            AddGlyph(&totals, stored);
    return totals;
}

// ---- Checking ----

int Check(const std::string &path, const cbf::Bytes &file, const cbf::FontFile &font) {
    for (const cbf::Complaint &complaint : font.complaints)
        std::printf("%s: offset %llu: %s\n", path.c_str(),
                    static_cast<unsigned long long>(complaint.offset), complaint.text.c_str());
    if (!font.complaints.empty())
        return kBadData;
    std::printf("%s: sound, %zu characters", path.c_str(), font.records.size());
    if (const size_t count = SumGlyphs(file, font).withoutOutline)
        std::printf(", %zu glyphs too large to be drawn with an outline", count);
    std::printf("\n");
    return 0;
}

// ---- The summary ----

void PrintMetrics(const std::string &path, const cbf::Bytes &file, const cbf::FontFile &font,
                  const GlyphTotals &totals) {
    std::printf("%s: %zu bytes, %zu characters in %zu glyph records, %.1f bytes a character\n",
                path.c_str(), file.size(), font.records.size(), totals.records,
                static_cast<double>(file.size()) /
                    static_cast<double>(std::max<size_t>(font.records.size(), 1)));
    std::printf("  header word   0x%08X\n", font.headerWord);
    std::printf("  line height   %d\n", font.lineHeight);
    std::printf("  ink           %d rows above the baseline, %d below\n", totals.ascent,
                totals.descent);
    if (totals.records > 0)
        std::printf("  largest box   %d wide, %d high\n  advances      %d to %d\n", totals.maxWidth,
                    totals.maxHeight, totals.minAdvance, totals.maxAdvance);
}

void PrintSection(const char *name, uint64_t offset, uint64_t size, size_t fileSize,
                  const std::string &contents) {
    std::printf("  %8llu %9llu %5.1f %%  %s%*s%s\n", static_cast<unsigned long long>(offset),
                static_cast<unsigned long long>(size),
                100 * static_cast<double>(size) / static_cast<double>(fileSize), name,
                contents.empty() ? 0 : static_cast<int>(18 - std::strlen(name)), "",
                contents.c_str());
}

std::string DescribeTable(const cbf::Table &table) {
    if (!table.usable)
        return "unusable";
    if (table.codes.empty())
        return "empty";
    return std::to_string(table.codes.size()) + " codes of " +
           std::to_string(table.codes.front().length) + " to " +
           std::to_string(table.codes.back().length) + " bits";
}

void PrintSections(const cbf::Bytes &file, const cbf::FontFile &font, const GlyphTotals &totals) {
    const auto tableBytes = [&](size_t i) { return 4 + 4 * font.tables[i].codes.size(); };
    const auto print = [&](const char *name, uint64_t offset, uint64_t size,
                           const std::string &contents) {
        PrintSection(name, offset, size, file.size(), contents);
    };
    std::printf("\n    offset     bytes   share  section\n");
    print("header", 0, 28, "");
    print("background table", font.tables[cbf::kBackground].offset, tableBytes(cbf::kBackground),
          DescribeTable(font.tables[cbf::kBackground]));
    print("ink table", font.tables[cbf::kInk].offset, tableBytes(cbf::kInk),
          DescribeTable(font.tables[cbf::kInk]));
    print("index", font.indexOffset, 4, std::to_string(font.slots) + " slots");
    print("  delta table", font.tables[cbf::kDelta].offset, tableBytes(cbf::kDelta),
          DescribeTable(font.tables[cbf::kDelta]));
    const uint64_t recordsStart = font.tables[cbf::kDelta].offset + tableBytes(cbf::kDelta);
    if (font.indexEnd > recordsStart)
        print("  index records", recordsStart, font.indexEnd - recordsStart,
              std::to_string(font.indexRecords));
    print("glyph data", font.dataOffset, font.dataSize,
          "heads " + std::to_string(8 * totals.records) + ", " + std::to_string(totals.runs) +
              " runs " + std::to_string(totals.codedBytes) + ", of which padding " +
              std::to_string(totals.paddingBits / 8));
}

void PrintCoverage(const cbf::FontFile &font) {
    std::printf("\ncharacters  block\n");
    for (auto entry = font.records.begin(); entry != font.records.end();) {
        const UnicodeBlock *block = FindUnicodeBlock(entry->first);
        size_t count = 0;
        for (; entry != font.records.end() && FindUnicodeBlock(entry->first) == block; ++entry)
            ++count;
        if (block)
            std::printf("%6zu of %5u  %s (%s-%s)\n", count, block->last - block->first + 1,
                        block->name, CodePointName(block->first).c_str(),
                        CodePointName(block->last).c_str());
        else
            std::printf("%6zu           outside all blocks\n", count);
    }
}

void PrintTable(const char *title, const cbf::Table &table, bool isSigned) {
    std::printf("%s, offset %llu: %s\n", title, static_cast<unsigned long long>(table.offset),
                DescribeTable(table).c_str());
    uint32_t length = 0;
    for (const cbf::Code &code : table.codes) {
        if (code.length != length)
            std::printf("%s  %2u bits:", length ? "\n" : "", code.length);
        length = code.length;
        if (isSigned && code.symbol == 0xFFFF)
            std::printf(" end");
        else
            std::printf(" %d", isSigned ? static_cast<int16_t>(code.symbol) : code.symbol);
    }
    std::printf("\n");
}

// ---- Pictures ----

void PrintPicture(const Picture &picture) {
    for (int32_t y = 0; y < picture.height; ++y) {
        std::string row;
        for (int32_t x = 0; x < picture.width; ++x) {
            const uint8_t luma = picture.luma[static_cast<size_t>(y * picture.width + x)];
            row += luma == kInkLuma ? '#' : luma == kOutlineLuma ? '+' : '.';
        }
        std::printf("%s\n", row.c_str());
    }
}

uint32_t FindRecord(const Options &options, const cbf::FontFile &font) {
    if (options.character == "fallback")
        return 0;
    const std::optional<uint32_t> codePoint = ParseCharacter(options.character);
    if (!codePoint)
        throw CLI::ValidationError("--glyph", "'" + options.character +
                                                  "' is no single character, nor a number such as "
                                                  "U+0041, nor 'fallback'");
    const auto record = font.records.find(*codePoint);
    if (record == font.records.end())
        throw Failure(options.path + ": has no glyph of its own for " + CodePointName(*codePoint));
    return record->second;
}

// From the record itself, as the format says, so that it can be held against the library's picture.
void PrintGlyph(const Options &options, const cbf::Bytes &file, const cbf::FontFile &font) {
    const uint32_t offset = FindRecord(options, font);
    const cbf::StoredGlyph stored = cbf::ReadGlyph(file, font, offset);
    const cbf::Glyph &glyph = stored.glyph;
    for (const cbf::Complaint &complaint : stored.complaints)
        std::fprintf(stderr, "cbfdump: %s: %s: %s\n", options.path.c_str(),
                     options.character.c_str(), complaint.text.c_str());
    std::printf("record at %u of the glyph data, %llu of the file: %zu runs in %zu bytes\n", offset,
                static_cast<unsigned long long>(font.dataOffset + offset), stored.runs,
                stored.codedBytes);
    std::printf("box %d x %d, left column %d, top row %d above the pen, advance %d\n", glyph.width,
                glyph.height, glyph.bearingX, glyph.bearingY, glyph.advance);
    size_t pixel = 0;
    while (pixel < glyph.pixels.size()) {
        std::string row;
        for (int32_t x = 0; x < glyph.width; ++x)
            row += glyph.pixels[pixel++] ? '#' : '.';
        std::printf("%s\n", row.c_str());
    }
}

// ---- Running ----

void Summarise(const Options &options, const cbf::Bytes &file, const cbf::FontFile &font) {
    const GlyphTotals totals = SumGlyphs(file, font);
    PrintMetrics(options.path, file, font, totals);
    PrintSections(file, font, totals);
    PrintCoverage(font);
    if (!font.complaints.empty())
        std::fprintf(stderr, "cbfdump: %s: has faults; --check lists them\n", options.path.c_str());
}

int Run(const Options &options) {
    CheckText(options.text);
    CheckSheetName(options.sheet);
    const cbf::Bytes file = ReadFile(options.path);
    const cbf::FontFile font = cbf::ReadFont(file);
    if (options.check)
        return Check(options.path, file, font);
    if (!font.loads)
        throw Failure(options.path + ": " + font.complaints.front().text);
    if (options.tables) {
        PrintTable("background runs", font.tables[cbf::kBackground], false);
        PrintTable("ink runs", font.tables[cbf::kInk], false);
        PrintTable("deltas", font.tables[cbf::kDelta], true);
    } else if (!options.character.empty()) {
        PrintGlyph(options, file, font);
    } else if (!options.text.empty()) {
        PrintPicture(DrawText(LoadFont(options.path).get(), options.direction, options.text,
                              options.outline));
    } else if (!options.sheet.empty()) {
        WritePicture(DrawSheet(LoadFont(options.path).get(), file, font), options.sheet);
    } else {
        Summarise(options, file, font);
    }
    return 0;
}

int Fail(int code, const std::string &text) {
    std::fprintf(stderr, "cbfdump: %s\n", text.c_str());
    return code;
}

} // namespace

int main(int argc, char **argv) {
    Options options;
    CLI::App app("Tells what a CBF font holds, shows its glyphs, and checks it", "cbfdump");
    DeclareOptions(&app, &options);
    try {
        app.parse(argc, argv);
        const int code = Run(options);
        if (std::fflush(stdout) != 0)
            return Fail(kBadData, std::string("standard output: ") + std::strerror(errno));
        return code;
    } catch (const CLI::Success &help) {
        return app.exit(help);
    } catch (const CLI::ParseError &error) {
        return Fail(kBadUsage, error.what() + std::string(" (--help tells more)"));
    } catch (const std::invalid_argument &error) { // the output
        return Fail(kBadUsage, error.what());
    } catch (const std::exception &error) {
        return Fail(kBadData, error.what());
    }
}
