// cbfconv: makes a CBF font from an outline font at one size, or from a bitmap font.
//
// A font is published only after the library itself has loaded it from a temporary file and drawn
// every glyph of it exactly as it was read.
#include "cbf_writer.h"
#include "font_source.h"
#include "orn_min_render.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <memory>

#include <unistd.h>

namespace {

constexpr int kBadData = 1;
constexpr int kBadUsage = 2;

// What went wrong, and which exit code tells of it. The text is complete but for the program name.
struct Failure : std::runtime_error {
    Failure(int code, const std::string &text) : std::runtime_error(text), exitCode(code) {
    }
    int exitCode;
};

struct Options {
    std::string input;
    std::string output;
    std::string ranges = "0x20-0x7E";
    int pixelSize = kNativeSize;
    bool verbose = false;
};

// ---- The command line ----

constexpr uint32_t kMaxCodePoint = 0x10FFFF;

// "0x41", "U+41" or "65"
bool ParseCodePoint(const std::string &text, uint32_t *codePoint) {
    const std::string prefix = CLI::detail::to_lower(text.substr(0, 2));
    const bool hex = prefix == "0x" || prefix == "u+";
    const char *first = text.data() + (hex ? 2 : 0);
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(first, end, *codePoint, hex ? 16 : 10);
    return error == std::errc() && stop == end && *codePoint <= kMaxCodePoint;
}

CodePointRange ParseRange(const std::string &text) {
    const size_t dash = text.find('-');
    const std::string last = dash == std::string::npos ? text : text.substr(dash + 1);
    CodePointRange range = {};
    if (!ParseCodePoint(text.substr(0, dash), &range.first) || !ParseCodePoint(last, &range.last))
        throw Failure(kBadUsage, "-r: '" + text +
                                     "' is no range of characters such as 0x20-0x7E, "
                                     "U+0400-U+04FF or 176, up to U+10FFFF");
    if (range.first > range.last)
        throw Failure(kBadUsage, "-r: '" + text + "' runs backwards");
    return range;
}

std::vector<CodePointRange> ParseRanges(const std::string &text) {
    std::vector<CodePointRange> ranges;
    for (size_t first = 0; first <= text.size();) {
        const size_t comma = std::min(text.find(',', first), text.size());
        ranges.push_back(ParseRange(text.substr(first, comma - first)));
        first = comma + 1;
    }
    return ranges;
}

std::string VersionText() {
    return "cbfconv " + std::to_string(ORN_MIN_RENDER_VERSION_MAJOR) + "." +
           std::to_string(ORN_MIN_RENDER_VERSION_MINOR) + "." +
           std::to_string(ORN_MIN_RENDER_VERSION_PATCH);
}

void DeclareOptions(CLI::App *app, Options *options) {
    app->add_option("font", options->input, "Font to convert: TTF, OTF, BDF or PCF (also .pcf.gz)")
        ->required()
        ->type_name("FONT");
    app->add_option("-o,--output", options->output, "CBF file to write")
        ->required()
        ->type_name("FILE");
    app->add_option("-s,--size", options->pixelSize,
                    "Size in pixels (of the em square); a bitmap font has its own")
        ->check(CLI::Range(1, 1000))
        ->type_name("PIXELS");
    app->add_option("-r,--ranges", options->ranges,
                    "Characters, as 0x20-0x7E,U+0400-U+04FF,176; what the font lacks is left out")
        ->capture_default_str()
        ->type_name("LIST");
    app->add_flag("-v,--verbose", options->verbose, "Tell what was written");
    app->set_version_flag("--version", VersionText());
}

// ---- Checking a font through the library ----

struct DestroyFont {
    void operator()(OrnMinRenderFont *font) const {
        OrnMinRenderDestroyFont(font);
    }
};
using LoadedFont = std::unique_ptr<OrnMinRenderFont, DestroyFont>;

// No glyph reaches further than 127 pixels from the pen.
constexpr int32_t kFrameSide = 256;
constexpr OrnMinRenderPoint kPen = {kFrameSide / 2, kFrameSide / 2};
constexpr uint8_t kInk = 255;
using Frame = std::vector<uint8_t>;

Frame EmptyFrame() {
    return Frame(size_t{kFrameSide} * kFrameSide, 0);
}

std::string Utf8(uint32_t c) {
    const auto tail = [](uint32_t bits) { return static_cast<char>(0x80 | (bits & 0x3F)); };
    if (c < 0x80)
        return {static_cast<char>(c)};
    if (c < 0x800)
        return {static_cast<char>(0xC0 | c >> 6), tail(c)};
    if (c < 0x10000)
        return {static_cast<char>(0xE0 | c >> 12), tail(c >> 6), tail(c)};
    return {static_cast<char>(0xF0 | c >> 18), tail(c >> 12), tail(c >> 6), tail(c)};
}

Frame ExpectedFrame(const cbf::Glyph &glyph) {
    Frame frame = EmptyFrame();
    size_t pixel = 0;
    for (int32_t y = 0; y < glyph.height; ++y)
        for (int32_t x = 0; x < glyph.width; ++x)
            if (glyph.pixels[pixel++])
                frame[static_cast<size_t>((kPen.y - glyph.bearingY + y) * kFrameSide + kPen.x +
                                          glyph.bearingX + x)] = kInk;
    return frame;
}

bool DrawsAs(OrnMinRenderFont *font, const std::string &text, const cbf::Glyph &glyph) {
    Frame frame = EmptyFrame();
    OrnMinRenderImage image = {};
    image.width = image.height = kFrameSide;
    image.stride = kFrameSide;
    image.yPlane = frame.data();
    OrnMinRenderPoint pen = kPen;
    OrnMinRenderDrawTextY8(nullptr, &image, font, text.c_str(), &pen, 0, kInk);
    return pen.x == kPen.x + glyph.advance && pen.y == kPen.y && frame == ExpectedFrame(glyph);
}

// The measured rectangle holds the pen besides the glyph's box.
bool MeasuresAs(const OrnMinRenderFont *font, const std::string &text, const cbf::Glyph &glyph) {
    OrnMinRenderPoint pen = kPen;
    OrnMinRenderRect rect = {};
    OrnMinRenderGetTextRect(nullptr, font, text.c_str(), &pen, 0, &rect);
    const int32_t left = kPen.x + glyph.bearingX;
    const int32_t top = kPen.y - glyph.bearingY;
    return pen.x == kPen.x + glyph.advance && pen.y == kPen.y &&
           rect.left == std::min(kPen.x, left) && rect.top == std::min(kPen.y, top) &&
           rect.right == std::max(kPen.x, left + glyph.width) &&
           rect.bottom == std::max(kPen.y, top + glyph.height);
}

bool BreaksLinesAs(const OrnMinRenderFont *font, int32_t lineHeight) {
    OrnMinRenderPoint pen = kPen;
    OrnMinRenderRect rect = {};
    OrnMinRenderGetTextRect(nullptr, font, "\n", &pen, 0, &rect);
    return pen.x == 0 && pen.y == kPen.y + lineHeight;
}

// Compares every glyph, and the fallback glyph at every gap between them and past their end.
void VerifyFont(const std::string &path, const cbf::Font &wanted) {
    const LoadedFont font(OrnMinRenderLoadCbfFont(path.c_str()));
    if (!font)
        throw FontError("the converted font does not load");
    if (!BreaksLinesAs(font.get(), wanted.lineHeight))
        throw FontError("the converted font has a wrong line height");
    const uint32_t end = wanted.glyphs.rbegin()->first + 1;
    for (uint32_t c = 1; c <= end; ++c) {
        const auto own = wanted.glyphs.find(c);
        const bool hasOwn = own != wanted.glyphs.end();
        const cbf::Glyph &glyph = hasOwn ? own->second : wanted.fallback;
        const std::string text = Utf8(c);
        // Gaps are only measured: drawing would cache a copy of the fallback glyph for each.
        const bool same =
            c == '\n' || (MeasuresAs(font.get(), text, glyph) &&
                          ((!hasOwn && c != end) || DrawsAs(font.get(), text, glyph)));
        if (!same)
            throw FontError(CodePointName(c) + ": is not drawn as it was read");
    }
}

// ---- Writing ----

// Keeps the signals that would end the program, and leave a temporary file, until it is gone.
class SignalsHeld {
  public:
    SignalsHeld() {
        sigset_t ending;
        sigemptyset(&ending);
        for (const int number : {SIGHUP, SIGINT, SIGTERM})
            sigaddset(&ending, number);
        sigprocmask(SIG_BLOCK, &ending, &before);
    }
    ~SignalsHeld() {
        sigprocmask(SIG_SETMASK, &before, nullptr);
    }
    SignalsHeld(const SignalsHeld &) = delete;
    SignalsHeld &operator=(const SignalsHeld &) = delete;

  private:
    sigset_t before;
};

// Also after the file has been renamed, when there is nothing left to remove.
struct RemovedAtExit {
    explicit RemovedAtExit(const std::string &filePath) : path(filePath) {
    }
    ~RemovedAtExit() {
        unlink(path.c_str());
    }
    RemovedAtExit(const RemovedAtExit &) = delete;
    RemovedAtExit &operator=(const RemovedAtExit &) = delete;

    const std::string path;
};

// Such a target would be replaced rather than written to.
void CheckTarget(const Options &options) {
    std::error_code ignored;
    if (std::filesystem::equivalent(options.input, options.output, ignored))
        throw Failure(kBadUsage, options.output + ": is the font to convert");
    const auto status = std::filesystem::status(options.output, ignored);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status))
        throw Failure(kBadUsage, options.output + ": is not a regular file");
}

void WriteAndClose(std::FILE *file, const cbf::Bytes &bytes, const std::string &target) {
    const bool written = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
    const int writeError = errno;
    const bool closed = std::fclose(file) == 0;
    if (!written || !closed)
        throw Failure(kBadData, target + ": " + std::strerror(written ? errno : writeError));
}

void Publish(const std::string &target, const cbf::Bytes &bytes, const cbf::Font &font) {
    const SignalsHeld held;
    const std::string path = target + ".tmp" + std::to_string(getpid());
    std::FILE *file = std::fopen(path.c_str(), "wbx");
    if (!file)
        throw Failure(kBadData, target + ": " + std::strerror(errno));
    const RemovedAtExit temporary(path);
    WriteAndClose(file, bytes, target);
    VerifyFont(path, font);
    if (std::rename(path.c_str(), target.c_str()) != 0)
        throw Failure(kBadData, target + ": " + std::strerror(errno));
}

// ---- Converting ----

std::string DescribeFault(const cbf::Fault &fault, const cbf::Font &font) {
    const cbf::Glyph &glyph = fault.inFallback ? font.fallback : font.glyphs.at(fault.codePoint);
    const std::string name = fault.inFallback ? "fallback glyph" : CodePointName(fault.codePoint);
    return name + ": " + cbf::Reason(fault.problem) + " (" + std::to_string(glyph.width) + " x " +
           std::to_string(glyph.height) + ")";
}

cbf::File MakeFile(const cbf::Font &font) {
    cbf::File file = cbf::WriteFont(font);
    if (file.fault.problem != cbf::Problem::None)
        throw FontError(DescribeFault(file.fault, font));
    return file;
}

// An outline is 5 pixels wider and higher than its glyph, and has the same limit of 127.
constexpr int32_t kMaxOutlined = 122;

size_t CountWithoutOutline(const cbf::Font &font) {
    return static_cast<size_t>(
        std::count_if(font.glyphs.begin(), font.glyphs.end(), [](const auto &entry) {
            return std::max(entry.second.width, entry.second.height) > kMaxOutlined;
        }));
}

void TellOmissions(const std::string &input, const SourceFont &source) {
    if (source.missing > 0)
        std::fprintf(stderr, "cbfconv: %s: has %zu of the %zu characters, %zu are missing\n",
                     input.c_str(), source.asked - source.missing, source.asked, source.missing);
    if (const size_t count = CountWithoutOutline(source.font))
        std::fprintf(stderr, "cbfconv: %s: %zu glyphs are too large to be drawn with an outline\n",
                     input.c_str(), count);
}

void TellResult(const std::string &output, const cbf::File &file, size_t glyphs) {
    std::printf("%s: %zu glyphs, %zu bytes: payload %zu, tables %zu, index %zu, header %zu; "
                "%.1f bytes per glyph\n",
                output.c_str(), glyphs, file.bytes.size(), file.sizes.glyphData,
                file.sizes.runTables, file.sizes.index, file.sizes.header,
                static_cast<double>(file.bytes.size()) / static_cast<double>(glyphs));
}

void Convert(const Options &options) {
    const std::vector<CodePointRange> ranges = ParseRanges(options.ranges);
    CheckTarget(options);
    try {
        const SourceFont source = ReadFont(options.input, options.pixelSize, ranges);
        if (source.font.glyphs.empty())
            throw FontError("has none of the characters");
        const cbf::File file = MakeFile(source.font);
        Publish(options.output, file.bytes, source.font);
        TellOmissions(options.input, source);
        if (options.verbose)
            TellResult(options.output, file, source.font.glyphs.size());
    } catch (const FontSizeError &error) {
        throw Failure(kBadUsage, options.input + ": " + error.what());
    } catch (const FontError &error) {
        throw Failure(kBadData, options.input + ": " + error.what());
    }
}

int Fail(int code, const std::string &text) {
    std::fprintf(stderr, "cbfconv: %s\n", text.c_str());
    return code;
}

} // namespace

int main(int argc, char **argv) {
    Options options;
    CLI::App app("Makes a CBF font for liborn_min_render from an outline or bitmap font",
                 "cbfconv");
    DeclareOptions(&app, &options);
    try {
        app.parse(argc, argv);
        Convert(options);
    } catch (const CLI::Success &help) {
        return app.exit(help);
    } catch (const CLI::ParseError &error) {
        return Fail(kBadUsage, error.what());
    } catch (const Failure &failure) {
        return Fail(failure.exitCode, failure.what());
    } catch (const std::exception &error) { // memory, mostly
        return Fail(kBadData, error.what());
    }
    return 0;
}
