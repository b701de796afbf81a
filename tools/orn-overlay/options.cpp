// SPDX-License-Identifier: MIT
// Options are read one by one, then checked together.
#include "options.h"

#include "common/command_line.h"
#include "common/version.h"
#include "overlay/engine.h"

#include <algorithm>

namespace {

constexpr double kMinRate = 0.001; // frames per second; these bounds keep {time} exact
constexpr double kMaxRate = 1e6;
constexpr int64_t kMaxStride = 1 << 20;
constexpr int64_t kMaxGap = 1000; // frames; bounds what filling them takes
constexpr int64_t kMaxFirstFrame = 1 << 30;

// A side of a frame; 0 where the text is none.
int32_t SideOf(const std::string &text) {
    const int64_t side = tool::ParseInteger(text).value_or(0);
    return side <= overlay::kMaxFrameSide ? static_cast<int32_t>(side) : 0;
}

void ParseSize(const std::string &text, overlay::FrameShape &shape) {
    const size_t cross = std::min(text.find('x'), text.size());
    shape.width = SideOf(text.substr(0, cross));
    shape.height = cross < text.size() ? SideOf(text.substr(cross + 1)) : 0;
    if (shape.width < 1 || shape.height < 1)
        throw CLI::ValidationError("--size", "expected WxH, each 1 to " +
                                                 std::to_string(overlay::kMaxFrameSide) +
                                                 ", not '" + text + "'");
}

template <typename Value> struct Choice {
    const char *name;
    Value value;
};

// An option whose argument is one of a few names, in any case.
template <typename Value, size_t count>
CLI::Option *AddChoice(CLI::App &app, const std::string &name,
                       const Choice<Value> (&choices)[count], Value &value,
                       const std::string &help) {
    const auto parse = [name, &choices, &value](const std::string &text) {
        std::string names;
        for (const Choice<Value> &choice : choices) {
            if (CLI::detail::to_lower(choice.name) == CLI::detail::to_lower(text)) {
                value = choice.value;
                return;
            }
            names.append(names.empty() ? "" : " or ").append(choice.name);
        }
        throw CLI::ValidationError(name, "expected " + names + ", not '" + text + "'");
    };
    return app.add_option_function<std::string>(name, parse, help)->default_str(choices[0].name);
}

constexpr Choice<bool> kHasChroma[] = {{"YUV420SP", true}, {"nv12", true}, {"Y8", false}};
constexpr Choice<overlay::Range> kRanges[] = {{"full", overlay::Range::Full},
                                              {"limited", overlay::Range::Limited}};
constexpr Choice<overlay::Matrix> kMatrices[] = {{"bt601", overlay::Matrix::Bt601},
                                                 {"bt709", overlay::Matrix::Bt709}};

void AddFrameOptions(CLI::App &app, Options &options) {
    overlay::FrameShape &shape = options.shape;
    app.add_option_function<std::string>(
           "--size", [&shape](const std::string &text) { ParseSize(text, shape); },
           "Size of the frames; may be left out with --check only")
        ->type_name("WxH");
    AddChoice(app, "--format", kHasChroma, shape.hasChroma,
              "Layout of the frames: YUV420SP (or nv12), or Y8")
        ->type_name("FORMAT");
    tool::AddInteger(app, "--stride", options.inputStride, 1, kMaxStride,
                     "Bytes from row to row, of both planes, when rows are padded")
        ->type_name("N");
    tool::AddInteger(app, "--output-stride", options.outputStride, 1, kMaxStride,
                     "The same of the output; as --stride unless given")
        ->type_name("N");
    AddChoice(app, "--range", kRanges, shape.colours.range,
              "Range of the colours: full, or limited as in most clips")
        ->type_name("RANGE");
    AddChoice(app, "--matrix", kMatrices, shape.colours.matrix,
              "Equations of the colours: bt601, or bt709 as in most HD clips")
        ->type_name("MATRIX");
}

void AddTrackOptions(CLI::App &app, Options &options) {
    app.add_option("--tracks", options.tracksPath,
                   "Tracked boxes: frame,id,left,top,width,height,confidence,...")
        ->type_name("FILE");
    tool::AddInteger(app, "--first-frame", options.tracks.firstFrame, 0, kMaxFirstFrame,
                     "The number that the file of tracks gives to the first frame, if not 1")
        ->type_name("N");
    tool::AddInteger(app, "--max-gap", options.tracks.maxGap, 0, kMaxGap,
                     "Draw a box between two of an id at most N frames apart")
        ->type_name("N")
        ->default_str("0");
    tool::AddReal(app, "--min-confidence", options.tracks.minConfidence, -overlay::kMaxTrackReal,
                  overlay::kMaxTrackReal, "Leave out boxes below X")
        ->type_name("X");
}

void AddOptions(CLI::App &app, Options &options) {
    app.add_option("script", options.scriptPath,
                   "What to draw (see below); may be left out with --tracks")
        ->type_name("SCRIPT");
    AddFrameOptions(app, options);
    app.add_option("--font", options.fontPath, "CBF font; needed when the script draws text")
        ->type_name("FILE");
    AddTrackOptions(app, options);
    tool::AddReal(app, "--fps", options.framesPerSecond, kMinRate, kMaxRate,
                  "Frames per second, for {time} (25 unless given) and --stats")
        ->type_name("N");
    app.add_flag("--stats", options.stats,
                 "Tell at the end how fast it was; so it does on a terminal");
    app.add_flag("--check", options.check, "Check script, tracks and font, and draw nothing");
}

void CheckStride(const char *name, int64_t stride, const overlay::FrameShape &shape) {
    const int64_t least =
        shape.hasChroma ? (int64_t{shape.width} + 1) / 2 * 2 : int64_t{shape.width};
    if (stride != 0 && stride < least)
        throw CLI::ValidationError(name, "expected at least " + std::to_string(least) + ", not " +
                                             std::to_string(stride));
    if (shape.hasChroma && stride % 2 != 0)
        throw CLI::ValidationError(name, "expected an even number, not " + std::to_string(stride));
}

void CheckOptions(const Options &options) {
    if (options.scriptPath.empty() && options.tracksPath.empty())
        throw CLI::RequiredError("SCRIPT (or --tracks)");
    if (options.shape.width == 0 && !options.check)
        throw CLI::RequiredError("--size");
    CheckStride("--stride", options.inputStride, options.shape);
    if (options.outputStride)
        CheckStride("--output-stride", *options.outputStride, options.shape);
}

} // namespace

overlay::InputNames OptionNames() {
    return {"--font", "--tracks", "--first-frame"};
}

std::optional<Options> ReadOptions(int argc, char **argv) {
    Options options;
    CLI::App app("Reads raw frames from standard input, burns the overlays of a script into each,\n"
                 "and writes them to standard output.",
                 kProgram);
    AddOptions(app, options);
    app.set_version_flag("--version", tool::VersionText(kProgram));
    app.footer(overlay::Engine::Help(OptionNames()) + "\nman orn-overlay tells all.");
    app.callback([&options] { CheckOptions(options); });
    if (!tool::ParseCommandLine(app, argc, argv))
        return std::nullopt;
    return options;
}
