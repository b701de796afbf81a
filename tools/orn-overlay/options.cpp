// SPDX-License-Identifier: MIT
// Options are read one by one, then checked together.
#include "options.h"

#include "common/command_line.h"
#include "common/version.h"
#include "overlay/engine.h"
#include "overlay/start_time.h"
#include "overlay/track_values.h"

#include <algorithm>
#include <vector>

namespace {

constexpr double kMinRate = 0.001; // frames per second; these bounds keep {time} exact
constexpr double kMaxRate = 1e6;
constexpr int64_t kMaxRatePart = 1000000;
constexpr int64_t kMaxStride = 1 << 20;
constexpr int64_t kMaxGap = 1000;   // frames; bounds what filling them takes
constexpr int64_t kMaxDelay = 1000; // frames, each of which stays in memory
constexpr int64_t kMaxFirstFrame = 1 << 30;
constexpr int32_t kMaxSheetSide = 20;
constexpr double kMaxSeconds = 1e7; // four months

struct Pair {
    int32_t x = 0;
    int32_t y = 0;
};

// The two numbers of "AxB", each 1 to most.
Pair ParsePair(const std::string &option, const std::string &text, int32_t most) {
    const size_t cross = std::min(text.find('x'), text.size());
    const auto sideOf = [most](const std::string &number) {
        const int64_t side = tool::ParseInteger(number).value_or(0);
        return side >= 1 && side <= most ? static_cast<int32_t>(side) : 0;
    };
    const Pair pair{sideOf(text.substr(0, cross)),
                    sideOf(text.substr(std::min(cross + 1, text.size())))};
    if (pair.x == 0 || pair.y == 0)
        throw CLI::ValidationError(option, "expected WxH, each 1 to " + std::to_string(most) +
                                               ", not '" + text + "'");
    return pair;
}

// Digits alone are a frame's number; 12.5, 12.5s, 1:30 and 1:02:03.5 are times.
Moment ParseMoment(const std::string &text) {
    const auto wrong = [&text] {
        return CLI::ValidationError("--frame", "expected the number of a frame, or a time such as "
                                               "12.5s or 1:30, not '" +
                                                   text + "'");
    };
    Moment moment{tool::ParseInteger(text), 0};
    if (moment.number && *moment.number >= 0)
        return moment;
    moment.number.reset();
    std::string rest = text;
    if (!rest.empty() && rest.back() == 's')
        rest.pop_back();
    for (size_t colon = 0; colon != std::string::npos;) {
        colon = rest.find(':');
        const std::optional<double> part = tool::ParseReal(rest.substr(0, colon));
        if (!part || *part < 0 || *part > kMaxSeconds)
            throw wrong();
        moment.seconds = moment.seconds * 60 + *part;
        rest.erase(0, colon + 1);
    }
    return moment;
}

// Of a decimal number, or of two whole ones as N/D.
FrameRate ParseRate(const std::string &text) {
    const size_t slash = text.find('/');
    if (slash == std::string::npos)
        return {tool::RealBetween("--fps", text, kMinRate, kMaxRate), 1};
    const int64_t numerator = tool::ParseInteger(text.substr(0, slash)).value_or(0);
    const int64_t denominator = tool::ParseInteger(text.substr(slash + 1)).value_or(0);
    const auto isPart = [](int64_t part) { return part >= 1 && part <= kMaxRatePart; };
    const FrameRate rate{static_cast<double>(numerator), denominator};
    if (!isPart(numerator) || !isPart(denominator) ||
        rate.numerator < kMinRate * static_cast<double>(denominator))
        throw CLI::ValidationError("--fps", "expected a number from 0.001 to 1e+06, or a fraction "
                                            "such as 30000/1001, not '" +
                                                text + "'");
    return rate;
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
           "--size",
           [&shape](const std::string &text) {
               const Pair size = ParsePair("--size", text, overlay::kMaxFrameSide);
               shape.width = size.x;
               shape.height = size.y;
           },
           "Size of raw frames; a clip is scaled to it")
        ->type_name("WxH");
    AddChoice(app, "--format", kHasChroma, shape.hasChroma,
              "Layout of raw frames: YUV420SP (or nv12), or Y8")
        ->type_name("FORMAT");
    tool::AddInteger(app, "--stride", options.inputStride, 1, kMaxStride,
                     "Bytes from row to row, of both planes, when raw rows are padded")
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

void AddVideoOptions(CLI::App &app, Options &options) {
    app.add_option("-i", options.input, "Clip to draw into: a file, an address, or - for a pipe")
        ->type_name("CLIP");
    app.add_option("-o", options.output,
                   "File for the result: its name says which container (.mp4, .mkv ...);\n"
                   "- for Y4M on standard output")
        ->type_name("FILE");
    app.add_option("--encoder", options.encoder,
                   "FFmpeg's encoder: libx264 (where the container allows), ffv1 ...")
        ->type_name("NAME");
    app.add_option("--encoder-options", options.encoderOptions,
                   "Settings of encoder and container, such as crf=20:preset=fast")
        ->type_name("NAME=VALUE:...");
    app.add_option_function<std::string>(
           "--frame", [&options](const std::string &text) { options.frame = ParseMoment(text); },
           "Make a PNG picture of frame N, or of the one at a time such as 12.5s or 1:30")
        ->type_name("N");
    app.add_option_function<std::string>(
           "--sheet",
           [&options](const std::string &text) {
               const Pair size = ParsePair("--sheet", text, kMaxSheetSide);
               options.sheet = Sheet{size.x, size.y};
           },
           "Make a PNG picture of frames from all over the clip, in columns and rows")
        ->type_name("CxR");
    app.add_flag("--keep-partial", options.keepPartial,
                 "After an error or an interrupt, keep what is done, as a shorter film");
}

void AddTrackOptions(CLI::App &app, Options &options) {
    app.add_option("--tracks", options.tracksPath,
                   "Tracked boxes: a table, JSON, or a folder of YOLO's files")
        ->type_name("FILE");
    app.add_option_function<std::string>(
           "--tracks-format",
           [&options](const std::string &text) {
               const std::optional<overlay::TrackFormat> format =
                   overlay::TrackFormatOf(CLI::detail::to_lower(text));
               if (!format)
                   throw CLI::ValidationError("--tracks-format", "expected mot, jsonl, yolo, coco "
                                                                 "or csv, not '" +
                                                                     text + "'");
               options.tracks.format = *format;
           },
           "mot, jsonl, yolo, coco or csv, where the file doesn't show it")
        ->type_name("FORMAT");
    app.add_option("--classes", options.classesPath,
                   "Names for the numbers of classes, one name a line")
        ->type_name("FILE");
    tool::AddInteger(
        app, "--tracks-delay", options.tracksDelay, 0, kMaxDelay,
        "Read N frames ahead before drawing one: for detectors that see the frames, too,\n"
        "and write their boxes into a pipe")
        ->type_name("N")
        ->default_str("0");
    app.add_flag("--latest", options.latestTracks,
                 "Draw the boxes that came last through the pipe, and wait for none");
    tool::AddInteger(app, "--first-frame", options.tracks.firstFrame, 0, kMaxFirstFrame,
                     "The number that the file of tracks gives to the first frame, if not 1")
        ->type_name("N");
    tool::AddInteger(app, "--max-gap", options.tracks.maxGap, 0, kMaxGap,
                     "Between two boxes of an id at most N frames apart, draw a box in every frame")
        ->type_name("N")
        ->default_str("0");
    tool::AddReal(app, "--min-confidence", options.tracks.minConfidence, -overlay::kMaxTrackReal,
                  overlay::kMaxTrackReal, "Leave out boxes with a confidence below X")
        ->type_name("X");
}

void AddClockOptions(CLI::App &app, Options &options, std::string &start) {
    app.add_flag("--utc", options.clock.utc,
                 "Show {clock} in UTC, not in the time zone of this machine");
    app.add_option("--start", start,
                   "Let {clock} begin with the first frame, at a time such as\n"
                   "2026-11-23T14:05:09Z, instead of showing the time of day")
        ->type_name("TIME");
}

void AddLiveOptions(CLI::App &app, Options &options) {
    app.add_flag("--watch", options.watch,
                 "Read script and fonts again when they change (and always on SIGHUP)");
    app.add_option("--control", options.controlPath,
                   "Pipe for lines from another program: set NAME SCRIPT_LINE, clear NAME")
        ->type_name("PIPE");
}

void AddOptions(CLI::App &app, Options &options) {
    app.add_option("script", options.scriptPath,
                   "What to draw (see below); needed unless there is --tracks or --control")
        ->type_name("SCRIPT");
    AddVideoOptions(app, options);
    AddFrameOptions(app, options);
    app.add_option("--font", options.fontPath,
                   "Font of texts: a CBF file, or the name of an installed set such as sans")
        ->type_name("FONT");
    AddTrackOptions(app, options);
    AddLiveOptions(app, options);
    app.add_option_function<std::string>(
           "--fps",
           [&options](const std::string &text) { options.framesPerSecond = ParseRate(text); },
           "Frames per second, such as 25, 29.97 or 30000/1001: for {time} (25 unless given)\n"
           "and --stats; for clips that tell none or a wrong one")
        ->type_name("N");
    app.add_flag("--stats", options.stats,
                 "Tell at the end how fast it was (on a terminal always)");
    app.add_flag("--check", options.check, "Check script, tracks and fonts, and draw nothing");
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

void CheckTogether(const CLI::App &app, const std::vector<const char *> &names, const char *needed,
                   bool isThere) {
    for (const char *name : names)
        if (app.count(name) > 0 && !isThere)
            throw CLI::ValidationError(name, needed);
}

void CheckVideoOptions(const CLI::App &app, const Options &options) {
    const bool hasClip = !options.input.empty();
    const bool isPicture = options.frame || options.sheet;
    CheckTogether(app,
                  {"-o", "--encoder", "--encoder-options", "--frame", "--sheet", "--keep-partial"},
                  "needs a clip to draw into (-i)", hasClip);
    CheckTogether(app, {"--format", "--stride", "--output-stride"},
                  "is for raw frames, not for a clip (-i)", !hasClip);
    CheckTogether(app, {"--encoder", "--encoder-options", "--keep-partial"},
                  "is for films, not for a picture", !isPicture);
    CheckTogether(app, {"--sheet"}, "can't be used with --frame", !options.frame);
    if (hasClip && options.output.empty() && !options.check)
        throw CLI::RequiredError("-o");
}

void CheckLiveOptions(const CLI::App &app, const Options &options) {
    CheckTogether(app, {"--tracks-format", "--classes", "--tracks-delay", "--latest"},
                  "is for tracked boxes (--tracks)", !options.tracksPath.empty());
    CheckTogether(app, {"--tracks-delay", "--max-gap"},
                  "can't be used with --latest, which waits for nothing", !options.latestTracks);
    CheckTogether(app, {"--watch"}, "needs a script to read again", !options.scriptPath.empty());
    const bool readsFrames = options.input.empty() || options.input == "-";
    const bool isTaken = !options.check && readsFrames;
    for (const auto &[name, path] :
         {std::pair("--tracks", options.tracksPath), std::pair("--control", options.controlPath)})
        if (path == "-" && isTaken)
            throw CLI::ValidationError(name, "standard input is where the frames come from: name a "
                                             "pipe");
    if (options.tracksPath == "-" && options.controlPath == "-")
        throw CLI::ValidationError("--control", "standard input is where the tracks come from");
}

void CheckOptions(const CLI::App &app, const std::string &start, Options &options) {
    if (options.scriptPath.empty() && options.tracksPath.empty() && options.controlPath.empty())
        throw CLI::RequiredError("SCRIPT (or --tracks, or --control)");
    CheckVideoOptions(app, options);
    CheckLiveOptions(app, options);
    if (options.input.empty() && options.shape.width == 0 && !options.check)
        throw CLI::RequiredError("--size (or -i)");
    if (app.count("--start") > 0) {
        options.clock.start = overlay::ParseStartTime(start, options.clock.utc);
        if (!options.clock.start)
            throw CLI::ValidationError("--start", "expected a time such as 2026-11-23T14:05:09Z, "
                                                  "not '" +
                                                      start + "'");
    }
    options.rangeIsGiven = app.count("--range") > 0;
    options.matrixIsGiven = app.count("--matrix") > 0;
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
    CLI::App app("Burns the overlays of a script into a video:\n"
                 "  orn-overlay -i in.mp4 -o out.mp4 SCRIPT\n"
                 "or into raw frames, from standard input to standard output:\n"
                 "  orn-overlay --size 1280x720 SCRIPT <in >out",
                 kProgram);
    std::string start; // its zone depends on another option
    AddOptions(app, options);
    AddClockOptions(app, options, start);
    app.set_version_flag("--version", tool::VersionText(kProgram));
    app.footer(overlay::Engine::Help(OptionNames()) +
               "\nThe man page, man orn-overlay, describes everything.");
    app.callback([&] { CheckOptions(app, start, options); });
    if (!tool::ParseCommandLine(app, argc, argv))
        return std::nullopt;
    return options;
}
