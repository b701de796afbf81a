// SPDX-License-Identifier: MIT
// Times the library with each set of instructions that this machine has, in one run: the jobs of
// the benchmark, each drawn by builds of the library that are capped at one set.
//
//   orn_sets [--markdown FILE] [--filter REGEX] NAME=MODULE...
//
// A module is bench/library.cpp with the library inside. The last one is what the others are
// divided by. The modules take turns within a millisecond; their fastest turns are compared.
#include "jobs.h"
#include "set_module.h"

#include <chrono>
#include <cstdio>
#include <dlfcn.h>
#include <regex>
#include <stdexcept>

namespace {

using namespace bench;

struct Module {
    std::string name;
    MakePainter make;
};

struct Options {
    std::string markdown;
    std::string filter;
    std::vector<Module> modules;
};

Module LoadModule(const std::string &argument) {
    const size_t equals = argument.find('=');
    if (equals == std::string::npos)
        throw std::invalid_argument("usage: orn_sets [--markdown FILE] [--filter REGEX] "
                                    "NAME=MODULE...");
    void *handle = dlopen(argument.c_str() + equals + 1, RTLD_NOW | RTLD_LOCAL);
    void *painters = handle ? dlsym(handle, kSetPaintersName) : nullptr;
    if (!painters)
        throw std::runtime_error(dlerror());
    return {argument.substr(0, equals), reinterpret_cast<SetPainters>(painters)()};
}

Options ParseOptions(int argc, char **argv) {
    Options options;
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        if (argument == "--markdown" && i + 1 < argc)
            options.markdown = argv[++i];
        else if (argument == "--filter" && i + 1 < argc)
            options.filter = argv[++i];
        else
            options.modules.push_back(LoadModule(argument));
    }
    if (options.modules.empty())
        throw std::invalid_argument("orn_sets: no modules");
    return options;
}

// ---- One job ----

double SecondsOf(const Painter &painter, const Places &places, int calls) {
    const auto begin = std::chrono::steady_clock::now();
    for (int i = 0; i < calls; ++i)
        painter(places);
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
}

// So many calls that a turn takes long enough to be timed, and not long enough to be interrupted.
int CallsPerTurn(const Painter &painter, const Places &places) {
    constexpr double kTurn = 60e-6;
    int calls = 1;
    while (calls < 10000 && SecondsOf(painter, places, calls) < kTurn)
        calls *= 2;
    return calls;
}

// Of one call, for each module.
std::vector<double> Times(const Job &job, const Frame &frame, const std::vector<Module> &modules) {
    constexpr double kBudget = 0.25; // seconds for a job
    const Places places = ChoosePlaces(job, frame, false);
    std::vector<Painter> painters;
    for (const Module &module : modules)
        painters.push_back(module.make(job, frame));
    const int calls = CallsPerTurn(painters.front(), places);
    std::vector<double> best(modules.size(), 1e9);
    for (double spent = 0; spent < kBudget;)
        for (size_t i = 0; i < painters.size(); ++i) {
            painters[i](places); // warms the caches and the branch predictor
            const double seconds = SecondsOf(painters[i], places, calls);
            best[i] = std::min(best[i], seconds / calls);
            spent += seconds;
        }
    return best;
}

// ---- All jobs ----

std::string Row(const Job &job, Layout layout, const std::vector<double> &times) {
    std::string row = "| " + job.name + " | " + (layout == Layout::Y8 ? "Y8" : "NV12") + " |";
    for (const double time : times) {
        char ratio[32];
        snprintf(ratio, sizeof ratio, " %.2f |", time / times.back());
        row += ratio;
    }
    return row + "\n";
}

std::string Heading(const std::vector<Module> &modules) {
    std::string names = "| job | layout |", rule = "|---|---|";
    for (const Module &module : modules) {
        names += " " + module.name + " |";
        rule += "---|";
    }
    return names + "\n" + rule + "\n";
}

Job FitToFrame(Job job, const Frame &frame) {
    if (job.width == kWholeFrame)
        job.width = frame.width;
    if (job.height == kWholeFrame)
        job.height = frame.height;
    return job;
}

std::string MeasureAll(const Options &options) {
    const std::regex filter(options.filter);
    std::string table = Heading(options.modules);
    fputs(table.c_str(), stdout);
    for (const Job &job : AllJobs())
        for (const Layout layout : {Layout::Y8, Layout::NV12}) {
            if (!job.layouts[layout == Layout::NV12] || !std::regex_search(job.name, filter))
                continue;
            const FrameMemory memory(1920, 1080, layout);
            const Job fitted = FitToFrame(job, memory.frame);
            const std::string row = Row(job, layout, Times(fitted, memory.frame, options.modules));
            fputs(row.c_str(), stdout);
            fflush(stdout);
            table += row;
        }
    return table;
}

int Run(int argc, char **argv) {
    const Options options = ParseOptions(argc, argv);
    const std::string table = MeasureAll(options);
    if (options.markdown.empty())
        return 0;
    FILE *file = fopen(options.markdown.c_str(), "w");
    if (!file || fputs(table.c_str(), file) < 0 || fclose(file) != 0)
        throw std::runtime_error("can't write " + options.markdown);
    return 0;
}

} // namespace

int main(int argc, char **argv) {
    try {
        return Run(argc, argv);
    } catch (const std::invalid_argument &error) {
        fprintf(stderr, "%s\n", error.what());
        return 2;
    } catch (const std::exception &error) {
        fprintf(stderr, "orn_sets: %s\n", error.what());
        return 1;
    }
}
