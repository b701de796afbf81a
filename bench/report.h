// SPDX-License-Identifier: MIT
// What was measured, and how it is shown: as text, JSON, a Markdown table and a chart.
#pragma once

#include "jobs.h"

#include <cstdio>

namespace bench {

struct Result {
    std::string contender;
    double minimum; // ns of CPU time for one drawing
    double median;
    size_t changedBytes; // by one drawing on an empty frame
};

// One job on one kind of frame.
struct Case {
    const Job *job;
    Layout layout;
    int lines; // of the frame: 1080, 2160
    bool cold;
    std::vector<Result> results;
};
using Cases = std::vector<Case>;

void PrintHeading(FILE *file);
void PrintRow(FILE *file,
              const Case &line); // ratios of the minima, and the targets that are missed
void PrintDetails(FILE *file, const Cases &cases); // every contender: times, ratio, changed bytes
void PrintJson(FILE *file, const Cases &cases);
void PrintMarkdown(FILE *file, const Cases &cases);
void PrintChart(FILE *file, const Cases &cases); // SVG

} // namespace bench
