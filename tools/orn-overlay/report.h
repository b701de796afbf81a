// SPDX-License-Identifier: MIT
// What is told of the work, on standard error: progress while it goes on, figures at its end.
#pragma once

#include "options.h"

#include "overlay/engine.h"

#include <chrono>
#include <cstdint>
#include <string>

// Tells of all errors; true when there are none.
bool NoErrors(const overlay::Errors &errors);

class Report {
  public:
    using Clock = std::chrono::steady_clock;
    using Seconds = std::chrono::duration<double>;

    // Time counts from here. The options must outlive the report.
    explicit Report(const Options &options);

    // The film will be that long, if that is known; otherwise 0.
    void Expect(double filmSeconds);

    // Another frame is drawn; that took so long, and it ends at this time of the film (0: unknown).
    void Drawn(Seconds drawing, double filmSeconds);

    void Finish(const std::string &input) const;

  private:
    void SayProgress(double seconds) const;
    void SayStats() const;

    const Options &options;
    bool terminal;
    bool progress;
    Clock::time_point start = Clock::now();
    Clock::time_point lastProgress = start;
    Seconds drawingTime{0};
    int64_t frames = 0;
    double length = 0;
    double position = 0; // in the film
};
