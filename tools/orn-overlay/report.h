// SPDX-License-Identifier: MIT
// What is told of the work, on standard error: progress while it goes on, figures at its end.
#pragma once

#include "options.h"

#include <chrono>
#include <cstdint>

class Report {
  public:
    using Clock = std::chrono::steady_clock;
    using Seconds = std::chrono::duration<double>;

    // Time counts from here. The options must outlive the report.
    explicit Report(const Options &options);

    // So many frames are drawn by now; the last one took this long.
    void Drawn(int64_t frames, Seconds drawing);

    void Finish(int64_t frames) const;

  private:
    void SayStats(double frames, double total) const;

    const Options &options;
    bool terminal;
    bool progress;
    Clock::time_point start = Clock::now();
    Clock::time_point lastProgress = start;
    Seconds drawingTime{0};
};
