// orn-overlay: reads raw frames from standard input, burns the overlays of a script into each, and
// writes them to standard output.
#include "overlay_script.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <charconv>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <iostream>
#include <memory>
#include <stdexcept>

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

constexpr int32_t kMaxSide = 65535;
constexpr double kMinRate = 0.001; // frames per second; these bounds keep {time} an integer
constexpr double kMaxRate = 1e6;
constexpr size_t kStreamBuffer = size_t{1} << 20;

// What ends the program with exit code 1, and the reason that it gives.
struct Failure : std::runtime_error {
    using runtime_error::runtime_error;
};

std::string SystemReason() {
    return std::strerror(errno);
}

void Say(const std::string &message) {
    std::cerr << "orn-overlay: " << message << '\n';
}

// ---- Command line ----

enum class Format { YUV420SP, Y8 };

struct Options {
    std::string scriptPath;
    std::string fontPath;
    int32_t width = 0; // 0: not given
    int32_t height = 0;
    Format format = Format::YUV420SP;
    double framesPerSecond = 25;
    bool stats = false;
    bool check = false;
};

void ParseSize(const std::string &text, Options &options) {
    const char *end = text.data() + text.size();
    const auto width = std::from_chars(text.data(), end, options.width);
    const bool hasCross = width.ec == std::errc() && width.ptr != end && *width.ptr == 'x';
    const auto height = std::from_chars(width.ptr + hasCross, end, options.height);
    const auto isSide = [](int32_t side) { return side >= 1 && side <= kMaxSide; };
    if (!hasCross || height.ec != std::errc() || height.ptr != end || !isSide(options.width) ||
        !isSide(options.height))
        throw CLI::ValidationError("--size", "expected WxH, each 1 to " + std::to_string(kMaxSide) +
                                                 ", not '" + text + "'");
}

void ParseFormat(const std::string &text, Options &options) {
    const std::string name = CLI::detail::to_lower(text);
    if (name != "yuv420sp" && name != "nv12" && name != "y8")
        throw CLI::ValidationError("--format", "expected YUV420SP, nv12 or Y8, not '" + text + "'");
    options.format = name == "y8" ? Format::Y8 : Format::YUV420SP;
}

void AddOptions(CLI::App &app, Options &options) {
    app.add_option("script", options.scriptPath, "What to draw (see below)")
        ->type_name("SCRIPT")
        ->required();
    app.add_option_function<std::string>(
           "--size", [&options](const std::string &text) { ParseSize(text, options); },
           "Size of the frames; may be left out with --check only")
        ->type_name("WxH");
    app.add_option_function<std::string>(
           "--format", [&options](const std::string &text) { ParseFormat(text, options); },
           "Layout of the frames: YUV420SP (or nv12), or Y8")
        ->type_name("FORMAT")
        ->default_str("YUV420SP");
    app.add_option("--font", options.fontPath, "CBF font; needed when the script draws text")
        ->type_name("FILE");
    app.add_option("--fps", options.framesPerSecond, "Frames per second, for {time}")
        ->type_name("N")
        ->check(CLI::Range(kMinRate, kMaxRate).description(""))
        ->capture_default_str();
    app.add_flag("--stats", options.stats, "Tell at the end how long drawing took");
    app.add_flag("--check", options.check, "Check script and font, and draw nothing");
}

std::string Version() {
    return "orn-overlay " + std::to_string(ORN_MIN_RENDER_VERSION_MAJOR) + "." +
           std::to_string(ORN_MIN_RENDER_VERSION_MINOR) + "." +
           std::to_string(ORN_MIN_RENDER_VERSION_PATCH);
}

// ---- Script and font ----

using Context = std::unique_ptr<OrnMinRenderContext, decltype(&OrnMinRenderDestroyContext)>;
using Font = std::unique_ptr<OrnMinRenderFont, decltype(&OrnMinRenderDestroyFont)>;

std::string ReadNamedFile(const std::string &path) {
    try {
        return ReadFile(path);
    } catch (const std::system_error &error) {
        throw Failure(path + ": " + error.code().message());
    }
}

Script LoadScript(const Options &options) {
    Script script = ParseScript(ReadNamedFile(options.scriptPath), !options.fontPath.empty());
    for (const ScriptError &error : script.errors)
        Say(options.scriptPath + ":" + std::to_string(error.line) + ": " + error.reason);
    if (!script.complete)
        Say(options.scriptPath + ": too many errors, the rest is not checked");
    return script;
}

Font LoadFont(const std::string &path) {
    Font font(nullptr, OrnMinRenderDestroyFont);
    if (path.empty())
        return font;
    ReadNamedFile(path); // for its reason: the library gives none
    font.reset(OrnMinRenderLoadCbfFont(path.c_str()));
    if (!font)
        throw Failure(path + ": not a CBF font, or cut short");
    return font;
}

// ---- Frames ----

// A frame in memory and the way it lies in a stream: rows of luma, then rows of U,V pairs, without
// padding. One stride serves both planes, so luma rows of odd width are a byte apart in memory.
class Frame {
  public:
    explicit Frame(const Options &options)
        : width(static_cast<size_t>(options.width)), height(static_cast<size_t>(options.height)),
          stride((width + 1) / 2 * 2),
          chromaRows(options.format == Format::YUV420SP ? (height + 1) / 2 : 0),
          memory(stride * (height + chromaRows)) {
    }

    OrnMinRenderImage Image() {
        OrnMinRenderImage image{};
        image.width = static_cast<int32_t>(width);
        image.height = static_cast<int32_t>(height);
        image.stride = static_cast<int64_t>(stride);
        image.yPlane = memory.data();
        image.uvPlane = chromaRows > 0 ? Chroma() : nullptr;
        return image;
    }

    size_t StreamBytes() const {
        return width * height + stride * chromaRows;
    }

    // Both return the number of bytes that went through: StreamBytes(), or less at the end of the
    // input or after an error.
    size_t Read(std::FILE *file) {
        return Transfer(
            [file](uint8_t *bytes, size_t count) { return std::fread(bytes, 1, count, file); });
    }

    size_t Write(std::FILE *file) {
        return Transfer([file](const uint8_t *bytes, size_t count) {
            return std::fwrite(bytes, 1, count, file);
        });
    }

  private:
    uint8_t *Chroma() {
        return memory.data() + stride * height;
    }

    // Passes the runs of bytes that are contiguous in memory and stream alike.
    template <typename Pass> size_t Transfer(Pass pass) {
        if (stride == width)
            return pass(memory.data(), memory.size());
        size_t total = 0;
        for (size_t y = 0; y < height && total == y * width; ++y)
            total += pass(memory.data() + y * stride, width);
        if (total == width * height)
            total += pass(Chroma(), stride * chromaRows);
        return total;
    }

    size_t width;
    size_t height;
    size_t stride;
    size_t chromaRows;
    std::vector<uint8_t> memory;
};

// False at the end of the input.
bool ReadFrame(Frame &frame, int64_t frameNumber) {
    const size_t count = frame.Read(stdin);
    if (std::ferror(stdin))
        throw Failure("standard input: " + SystemReason());
    if (count > 0 && count < frame.StreamBytes())
        throw Failure("standard input: frame " + std::to_string(frameNumber) +
                      " is cut short: " + std::to_string(count) + " of " +
                      std::to_string(frame.StreamBytes()) + " bytes");
    return count > 0;
}

// Flushed, so that a reader sees the frame before the next one has come.
void WriteFrame(Frame &frame) {
    if (frame.Write(stdout) < frame.StreamBytes() || std::fflush(stdout) != 0)
        throw Failure("standard output: " + SystemReason());
}

// ---- Run ----

// Draws all frames, counting them in the canvas, and returns the time that drawing took.
Seconds DrawFrames(const std::vector<Overlay> &overlays, Frame &frame, Canvas &canvas) {
    Timeline timeline(overlays);
    Seconds drawing{0};
    for (; ReadFrame(frame, canvas.frameNumber); ++canvas.frameNumber) {
        const auto start = Clock::now();
        for (const size_t i : timeline.Advance(canvas.frameNumber))
            overlays[i].draw(canvas, overlays[i]);
        drawing += Clock::now() - start;
        WriteFrame(frame);
    }
    return drawing;
}

void SayStats(int64_t frames, Seconds total, Seconds drawing) {
    char text[200];
    std::snprintf(text, sizeof text,
                  "%lld frames in %.3f s, drawing %.3f s: %.4f ms per frame, %.2f %% of the time",
                  static_cast<long long>(frames), total.count(), drawing.count(),
                  1000 * drawing.count() / static_cast<double>(std::max<int64_t>(frames, 1)),
                  100 * drawing.count() / total.count());
    Say(text);
}

void OverlayFrames(const Options &options, const Script &script, OrnMinRenderFont *font) {
    const auto start = Clock::now();
    const Context context(OrnMinRenderCreateContext(), OrnMinRenderDestroyContext);
    if (!context)
        throw std::bad_alloc();
    Frame frame(options);
    Frame spare(options);
    Canvas canvas{frame.Image(), spare.Image(), context.get(), font, options.framesPerSecond, 0};
    const Seconds drawing = DrawFrames(script.overlays, frame, canvas);
    if (canvas.frameNumber == 0)
        Say("note: no frames on standard input");
    if (options.stats)
        SayStats(canvas.frameNumber, Clock::now() - start, drawing);
}

int Run(const Options &options) {
    const Script script = LoadScript(options);
    if (!script.errors.empty())
        return 1;
    const Font font = LoadFont(options.fontPath);
    if (!options.check)
        OverlayFrames(options, script, font.get());
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    std::signal(SIGPIPE, SIG_IGN); // a closed output is reported like any other failure to write
    std::setvbuf(stdin, nullptr, _IOFBF, kStreamBuffer);
    std::setvbuf(stdout, nullptr, _IOFBF, kStreamBuffer);
    Options options;
    CLI::App app("Reads raw frames from standard input, burns the overlays of a script into each,\n"
                 "and writes them to standard output.",
                 "orn-overlay");
    AddOptions(app, options);
    app.set_version_flag("--version", Version());
    app.footer(ScriptHelp());
    try {
        app.parse(argc, argv);
        if (options.width == 0 && !options.check)
            throw CLI::RequiredError("--size");
        return Run(options);
    } catch (const CLI::Success &request) { // --help and --version
        return app.exit(request);
    } catch (const CLI::ParseError &error) {
        Say(error.what() + std::string(" (--help tells more)"));
        return 2;
    } catch (const Failure &failure) {
        Say(failure.what());
    } catch (const std::bad_alloc &) {
        Say("not enough memory");
    }
    return 1;
}
