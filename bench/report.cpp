// SPDX-License-Identifier: MIT
#include "report.h"

#include <cmath>

namespace bench {

namespace {

const char *const kPeers[] = {"opencv", "cairo", "pixman", "libyuv", "freetype", "bgr"};

// ---- Ratios ----

const Result *Find(const Case &line, const std::string &contender) {
    for (const Result &result : line.results)
        if (result.contender == contender)
            return &result;
    return nullptr;
}

// The fastest of the peers, or null.
const Result *BestPeer(const Case &line) {
    const Result *best = nullptr;
    for (const char *peer : kPeers) {
        const Result *result = Find(line, peer);
        if (result && (!best || result->minimum < best->minimum))
            best = result;
    }
    return best;
}

// How many times the library's time a contender takes; for the floor the other way round. 0 where
// there is no such contender.
double Ratio(const Case &line, const std::string &contender) {
    const Result *library = Find(line, "library");
    const Result *other = contender == "peer" ? BestPeer(line) : Find(line, contender);
    if (!library || !other)
        return 0;
    return contender == "floor" ? library->minimum / other->minimum
                                : other->minimum / library->minimum;
}

const Targets &TargetsOf(const Case &line) {
    return line.job->targets[line.layout == Layout::NV12];
}

double TargetRatio(const Case &line, const std::string &contender) {
    for (const Target &target : TargetsOf(line))
        if (target.contender == contender)
            return target.ratio;
    return 0;
}

// Two hundredths either way are noise.
bool IsMissed(const Case &line, const Target &target) {
    const double ratio = Ratio(line, target.contender);
    if (ratio == 0)
        return false;
    constexpr double kNoise = 1.02;
    return target.contender == "floor" ? ratio > target.ratio * kNoise
                                       : ratio * kNoise < target.ratio;
}

// The targets hold for 1080 lines, hot.
bool HasTargets(const Case &line) {
    return line.lines == 1080 && !line.cold;
}

std::string Number(double value) {
    if (value == 0)
        return "-";
    char text[32];
    snprintf(text, sizeof text, value < 9.995 ? "%.2f" : value < 99.95 ? "%.1f" : "%.0f", value);
    return text;
}

const char *LayoutName(Layout layout) {
    return layout == Layout::NV12 ? "NV12" : "Y8";
}

} // namespace

// ---- Text ----

void PrintHeading(FILE *file) {
    fprintf(file, "%-30s %-4s %5s %-4s %10s", "job", "", "lines", "", "library ns");
    for (const char *peer : kPeers)
        fprintf(file, " %8s", peer);
    fprintf(file, " %8s %9s  %s\n", "plain", "lib/floor", "short of the target");
}

void PrintRow(FILE *file, const Case &line) {
    fprintf(file, "%-30s %-4s %5d %-4s %10.1f", line.job->name.c_str(), LayoutName(line.layout),
            line.lines, line.cold ? "cold" : "hot", Find(line, "library")->minimum);
    for (const char *peer : kPeers)
        fprintf(file, " %8s", Number(Ratio(line, peer)).c_str());
    fprintf(file, " %8s %9s ", Number(Ratio(line, "plain")).c_str(),
            Number(Ratio(line, "floor")).c_str());
    for (const Target &target : TargetsOf(line))
        if (HasTargets(line) && IsMissed(line, target))
            fprintf(file, " %s %s of %s", target.contender.c_str(),
                    Number(Ratio(line, target.contender)).c_str(), Number(target.ratio).c_str());
    fprintf(file, "\n");
    fflush(file);
}

void PrintDetails(FILE *file, const Cases &cases) {
    fprintf(file, "\n%-30s %-4s %5s %-4s %-8s %12s %12s %8s %13s\n", "job", "", "lines", "", "",
            "minimum ns", "median ns", "/library", "changed bytes");
    for (const Case &line : cases)
        for (const Result &result : line.results)
            fprintf(file, "%-30s %-4s %5d %-4s %-8s %12.1f %12.1f %8s %13zu\n",
                    line.job->name.c_str(), LayoutName(line.layout), line.lines,
                    line.cold ? "cold" : "hot", result.contender.c_str(), result.minimum,
                    result.median, Number(result.minimum / Find(line, "library")->minimum).c_str(),
                    result.changedBytes);
}

void PrintJson(FILE *file, const Cases &cases) {
    const char *separator = "[";
    for (const Case &line : cases)
        for (const Result &result : line.results) {
            fprintf(file,
                    "%s\n{\"job\": \"%s\", \"layout\": \"%s\", \"lines\": %d, \"cold\": %s, "
                    "\"contender\": \"%s\", \"minimum_ns\": %.2f, \"median_ns\": %.2f, "
                    "\"changed_bytes\": %zu}",
                    separator, line.job->name.c_str(), LayoutName(line.layout), line.lines,
                    line.cold ? "true" : "false", result.contender.c_str(), result.minimum,
                    result.median, result.changedBytes);
            separator = ",";
        }
    fprintf(file, "%s\n]\n", cases.empty() ? "[" : "");
}

// ---- Markdown ----

namespace {

// "6.1 / 2": the ratio and its target, in bold where it is missed.
std::string WithTarget(const Case &line, const std::string &contender) {
    const double ratio = Ratio(line, contender);
    const double target = TargetRatio(line, contender);
    if (ratio == 0 || target == 0)
        return Number(ratio);
    const bool missed = IsMissed(line, {contender, target});
    char text[32];
    snprintf(text, sizeof text, "%s / %g", Number(ratio).c_str(), target);
    return missed ? "**" + std::string(text) + "**" : text;
}

std::string PeerCell(const Case &line) {
    const Result *best = BestPeer(line);
    return best ? WithTarget(line, "peer") + " " + best->contender : "-";
}

void PrintTargetTable(FILE *file, const Cases &cases) {
    fprintf(file, "| job | layout | best peer / library | plain / library | library / floor |\n"
                  "|---|---|---|---|---|\n");
    for (const Case &line : cases)
        if (HasTargets(line))
            fprintf(file, "| %s | %s | %s | %s | %s |\n", line.job->name.c_str(),
                    LayoutName(line.layout), PeerCell(line).c_str(),
                    WithTarget(line, "plain").c_str(), WithTarget(line, "floor").c_str());
}

void PrintOverlayTable(FILE *file, const Cases &cases) {
    fprintf(file,
            "\n| overlay of 20 labelled boxes, NV12 | opencv | cairo | libyuv and stamped "
            "glyphs | BGR round trip | plain | library / floor |\n|---|---|---|---|---|---|---|\n");
    for (const Case &line : cases) {
        if (line.job->shape != Shape::Overlay)
            continue;
        fprintf(file, "| %d lines, %s |", line.lines, line.cold ? "cold" : "hot");
        for (const char *contender : {"opencv", "cairo", "libyuv", "bgr", "plain", "floor"})
            fprintf(
                file, " %s |",
                (HasTargets(line) ? WithTarget(line, contender) : Number(Ratio(line, contender)))
                    .c_str());
        fprintf(file, "\n");
    }
}

// "2.1, 1.3": the two ratios of the same job on another kind of frame.
std::string OtherCell(const Cases &cases, const Case &first, int lines, bool cold) {
    for (const Case &line : cases)
        if (line.job == first.job && line.layout == first.layout && line.lines == lines &&
            line.cold == cold)
            return Number(Ratio(line, "peer")) + ", " + Number(Ratio(line, "floor"));
    return "-";
}

// The other kinds of frame, a line for each job.
void PrintOtherTable(FILE *file, const Cases &cases) {
    fprintf(file, "\n| job | layout | 1080 hot | 1080 cold | 2160 hot | 2160 cold |\n"
                  "|---|---|---|---|---|---|\n");
    for (const Case &first : cases) {
        if (!HasTargets(first))
            continue;
        fprintf(file, "| %s | %s |", first.job->name.c_str(), LayoutName(first.layout));
        for (const int lines : {1080, 2160})
            for (const bool cold : {false, true})
                fprintf(file, " %s |", OtherCell(cases, first, lines, cold).c_str());
        fprintf(file, "\n");
    }
}

} // namespace

void PrintMarkdown(FILE *file, const Cases &cases) {
    fprintf(file, "### 1080 lines, hot, beside the targets\n\n");
    PrintTargetTable(file, cases);
    PrintOverlayTable(file, cases);
    fprintf(file, "\n### All frames: best peer / library, library / floor\n");
    PrintOtherTable(file, cases);
}

// ---- The chart: bars on a logarithmic scale, from 1 (the library's own time) on ----

namespace {

const char *const kCharted[] = {"rectangle 16x16",
                                "rectangle 200x120",
                                "frame 200x120",
                                "horizontal line 32",
                                "vertical line 900",
                                "diagonal line 900",
                                "dashed slope 900x500",
                                "ellipse outline 400x300",
                                "ellipse fill 400x300",
                                "rounded fill 400x300",
                                "concave 12-gon 200",
                                "bitmap 64 to 64",
                                "bitmap 64 to 200",
                                "text 11 at 16 px",
                                "outlined text 11 at 16 px",
                                "overlay of 20 labelled boxes"};

struct Series {
    const char *contender;
    const char *colour;
};
const Series kSeries[] = {{"opencv", "#3b6fb6"}, {"cairo", "#d9822b"}, {"pixman", "#8a63b0"},
                          {"libyuv", "#3d9970"}, {"bgr", "#b03a48"},   {"plain", "#888888"}};

constexpr int kLabelWidth = 230;
constexpr int kPlotWidth = 560;
constexpr int kBar = 9;
constexpr int kGap = 10;
constexpr int kTop = 56;
constexpr double kLeast = 0.25;
constexpr double kMost = 1000;

double Column(double ratio) {
    const double share = std::log(ratio / kLeast) / std::log(kMost / kLeast);
    return kLabelWidth + kPlotWidth * std::min(1.0, std::max(0.0, share));
}

// NV12 where the job has it.
std::vector<const Case *> ChartedCases(const Cases &cases) {
    std::vector<const Case *> charted;
    for (const char *name : kCharted)
        for (const Case &line : cases)
            if (line.job->name == name && HasTargets(line) &&
                (line.layout == Layout::NV12 || !line.job->layouts[1]))
                charted.push_back(&line);
    return charted;
}

int ChartBars(const Case &line) {
    int bars = 0;
    for (const Series &series : kSeries)
        bars += Ratio(line, series.contender) > 0;
    return bars;
}

void PrintGrid(FILE *file, int bottom) {
    for (const double ratio :
         {0.25, 0.5, 1.0, 2.0, 5.0, 10.0, 20.0, 50.0, 100.0, 200.0, 500.0, 1000.0}) {
        fprintf(file,
                "<line x1='%.1f' y1='%d' x2='%.1f' y2='%d' stroke='%s'/>"
                "<text x='%.1f' y='%d' text-anchor='middle'>%g</text>\n",
                Column(ratio), kTop - 6, Column(ratio), bottom, ratio == 1 ? "#000" : "#ddd",
                Column(ratio), kTop - 10, ratio);
    }
}

void PrintLegend(FILE *file) {
    int x = kLabelWidth;
    for (const Series &series : kSeries) {
        fprintf(file,
                "<rect x='%d' y='22' width='10' height='10' fill='%s'/>"
                "<text x='%d' y='31'>%s</text>\n",
                x, series.colour, x + 14, series.contender);
        x += 80;
    }
}

void PrintBars(FILE *file, const Case &line, int y) {
    fprintf(file, "<text x='%d' y='%d' text-anchor='end'>%s</text>\n", kLabelWidth - 8,
            y + kBar * ChartBars(line) / 2 + 4, line.job->name.c_str());
    for (const Series &series : kSeries) {
        const double ratio = Ratio(line, series.contender);
        if (ratio == 0)
            continue;
        const double from = std::min(Column(1), Column(ratio));
        fprintf(file,
                "<rect x='%.1f' y='%d' width='%.1f' height='%d' fill='%s'/>"
                "<text x='%.1f' y='%d' font-size='9'>%s</text>\n",
                from, y, std::fabs(Column(ratio) - Column(1)), kBar - 1, series.colour,
                std::max(Column(1), Column(ratio)) + 3, y + kBar - 1, Number(ratio).c_str());
        y += kBar;
    }
}

} // namespace

void PrintChart(FILE *file, const Cases &cases) {
    const std::vector<const Case *> charted = ChartedCases(cases);
    int height = kTop;
    for (const Case *line : charted)
        height += ChartBars(*line) * kBar + kGap;
    const int width = kLabelWidth + kPlotWidth + 50;
    fprintf(file,
            "<svg xmlns='http://www.w3.org/2000/svg' width='%d' height='%d' viewBox='0 0 %d %d' "
            "font-family='sans-serif' font-size='11'>\n<rect width='100%%' height='100%%' "
            "fill='#fff'/>\n<text x='%d' y='14' font-size='13'>Time of each contender / time of "
            "the library (1080 lines, hot)</text>\n",
            width, height, width, height, kLabelWidth);
    PrintLegend(file);
    PrintGrid(file, height - kGap / 2);
    int y = kTop;
    for (const Case *line : charted) {
        PrintBars(file, *line, y);
        y += ChartBars(*line) * kBar + kGap;
    }
    fprintf(file, "</svg>\n");
}

} // namespace bench
