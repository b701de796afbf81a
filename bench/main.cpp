// SPDX-License-Identifier: MIT
// orn_bench: times the library, its peers, hand-written loops and the floor at the same jobs.
//
//   orn_bench [--quick] [--text FILE] [--json FILE] [--markdown FILE] [--svg FILE] [FILTER]
//
// FILTER is a regular expression on job names. The contenders of a job take turns within seconds of
// each other, in random order, so that what else the machine does falls on all of them.
#include "report.h"

#include <benchmark/benchmark.h>

#include <cstring>
#include <regex>
#include <stdexcept>

namespace {

using namespace bench;

struct Contender {
    const char *name;
    MakePainter make;
};

const Contender kContenders[] = {
    {"library", MakeLibrary}, {"opencv", MakeOpenCv}, {"cairo", MakeCairo},
    {"pixman", MakePixman},   {"libyuv", MakeLibyuv}, {"freetype", MakeFreeType},
    {"bgr", MakeOpenCvBgr},   {"plain", MakePlain},   {"floor", MakeFloor}};

struct Options {
    bool quick = false;
    std::string text;
    std::string json;
    std::string markdown;
    std::string svg;
    std::string filter;
};

// How long a job is measured.
struct Effort {
    int repetitions;
    double seconds; // of each
};

Effort EffortFor(const Case &line, bool quick) {
    if (quick)
        return {5, 0.004};
    const bool main = line.lines == 1080 && !line.cold; // what the targets are set for
    return main ? Effort{9, 0.015} : Effort{5, 0.008};
}

// ---- One job ----

void ClearFrame(const Frame &frame) {
    memset(frame.luma, kPaper.y, size_t(frame.stride * frame.height));
    if (frame.chroma)
        memset(frame.chroma, kPaper.u, size_t(frame.stride * frame.height / 2));
}

size_t CountChanged(const FrameMemory &memory) {
    const size_t luma = size_t(memory.frame.stride * memory.frame.height);
    size_t changed = 0;
    for (size_t i = 0; i < memory.Size(); ++i)
        changed += memory.frame.luma[i] != (i < luma ? kPaper.y : kPaper.u);
    return changed;
}

// What one call of a painter draws: an overlay has many boxes.
size_t BatchSize(const Job &job, const Places &places) {
    return job.shape == Shape::Overlay ? kOverlayBoxes : places.size();
}

std::vector<Places> Batches(const Places &places, size_t size) {
    std::vector<Places> batches;
    for (size_t i = 0; i < places.size(); i += size)
        batches.emplace_back(places.begin() + ptrdiff_t(i), places.begin() + ptrdiff_t(i + size));
    return batches;
}

// Keeps the CPU times of every repetition, by contender.
class Collector : public benchmark::BenchmarkReporter {
  public:
    bool ReportContext(const Context &) override {
        return true;
    }
    void ReportRuns(const std::vector<Run> &runs) override {
        for (const Run &run : runs)
            if (run.run_type == Run::RT_Iteration)
                times[run.run_name.function_name].push_back(run.GetAdjustedCPUTime());
    }
    std::map<std::string, std::vector<double>> times;
};

void Register(const char *name, const Painter &painter, const std::vector<Places> &batches,
              Effort effort) {
    benchmark::RegisterBenchmark(name,
                                 [painter, batches](benchmark::State &state) {
                                     for (auto _ : state)
                                         for (const Places &batch : batches)
                                             painter(batch);
                                 })
        ->Unit(benchmark::kNanosecond)
        ->Repetitions(effort.repetitions)
        ->MinTime(effort.seconds);
}

Result Summarise(const std::string &name, std::vector<double> times, double drawings,
                 size_t changed) {
    std::sort(times.begin(), times.end());
    return {name, times.front() / drawings, times[times.size() / 2] / drawings, changed};
}

Job FitToFrame(Job job, const Frame &frame) {
    if (job.width == kWholeFrame)
        job.width = frame.width;
    if (job.height == kWholeFrame)
        job.height = frame.height;
    return job;
}

void Measure(Case *line, FrameMemory *memory, bool quick) {
    const Job job = FitToFrame(*line->job, memory->frame);
    const Places places = ChoosePlaces(job, memory->frame, line->cold);
    const auto batches = Batches(places, BatchSize(job, places));
    const double drawings = double(job.shape == Shape::Overlay ? batches.size() : places.size());
    const Places first(places.begin(),
                       places.begin() + (job.shape == Shape::Overlay ? kOverlayBoxes : 1));
    std::map<std::string, size_t> changed;

    benchmark::ClearRegisteredBenchmarks();
    for (const Contender &contender : kContenders) {
        const Painter painter = contender.make(job, memory->frame);
        if (!painter)
            continue;
        ClearFrame(memory->frame);
        painter(first);
        changed[contender.name] = CountChanged(*memory);
        Register(contender.name, painter, batches, EffortFor(*line, quick));
    }
    Collector collector;
    benchmark::RunSpecifiedBenchmarks(&collector);
    for (const Contender &contender : kContenders)
        if (changed.count(contender.name))
            line->results.push_back(Summarise(contender.name, collector.times[contender.name],
                                              drawings, changed[contender.name]));
}

// ---- All jobs ----

Cases MeasureAll(const std::vector<Job> &jobs, const Options &options) {
    const std::regex filter(options.filter);
    Cases cases;
    for (const int lines : options.quick ? std::vector<int>{1080} : std::vector<int>{1080, 2160})
        for (const Job &job : jobs)
            for (const Layout layout : {Layout::Y8, Layout::NV12}) {
                if (!job.layouts[layout == Layout::NV12] || !std::regex_search(job.name, filter))
                    continue;
                FrameMemory memory(lines / 9 * 16, lines, layout);
                for (const bool cold : {false, true}) {
                    const bool whole = job.width == kWholeFrame; // nowhere else to draw
                    if (cold && (options.quick || whole))
                        continue;
                    cases.push_back({&job, layout, lines, cold, {}});
                    Measure(&cases.back(), &memory, options.quick);
                    PrintRow(stdout, cases.back());
                }
            }
    return cases;
}

template <class Print> void WriteFile(const std::string &path, Print print) {
    if (path.empty())
        return;
    FILE *file = fopen(path.c_str(), "w");
    if (!file)
        throw std::runtime_error("can't write " + path);
    print(file);
    if (fclose(file) != 0)
        throw std::runtime_error("can't write " + path);
}

void WriteFiles(const Options &options, const Cases &cases) {
    WriteFile(options.text, [&](FILE *file) {
        PrintHeading(file);
        for (const Case &line : cases)
            PrintRow(file, line);
        PrintDetails(file, cases);
    });
    WriteFile(options.json, [&](FILE *file) { PrintJson(file, cases); });
    WriteFile(options.markdown, [&](FILE *file) { PrintMarkdown(file, cases); });
    WriteFile(options.svg, [&](FILE *file) { PrintChart(file, cases); });
}

Options ParseOptions(int argc, char **argv) {
    Options options;
    const std::map<std::string, std::string *> files = {{"--text", &options.text},
                                                        {"--json", &options.json},
                                                        {"--markdown", &options.markdown},
                                                        {"--svg", &options.svg}};
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const auto file = files.find(argument);
        if (file != files.end() && i + 1 < argc)
            *file->second = argv[++i];
        else if (argument == "--quick")
            options.quick = true;
        else if (argument[0] != '-' && options.filter.empty())
            options.filter = argument;
        else
            throw std::runtime_error("usage: orn_bench [--quick] [--text FILE] [--json FILE] "
                                     "[--markdown FILE] [--svg FILE] [FILTER]");
    }
    return options;
}

void InitializeBenchmark(const char *program) {
    std::string arguments[] = {program, "--benchmark_enable_random_interleaving=true"};
    char *argv[] = {arguments[0].data(), arguments[1].data(), nullptr};
    int argc = 2;
    benchmark::Initialize(&argc, argv);
}

int Run(int argc, char **argv) {
    const Options options = ParseOptions(argc, argv);
    InitializeBenchmark(argv[0]);
    if (*ORN_BENCH_LEFT_OUT)
        printf("Left out, since not found when the benchmark was built:%s\n", ORN_BENCH_LEFT_OUT);
    printf("Times of the contenders divided by the library's, from minima of CPU time\n");
    PrintHeading(stdout);
    const std::vector<Job> jobs = AllJobs();
    WriteFiles(options, MeasureAll(jobs, options));
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    try {
        return Run(argc, argv);
    } catch (const std::exception &error) {
        fprintf(stderr, "orn_bench: %s\n", error.what());
        return 1;
    }
}
