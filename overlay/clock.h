// SPDX-License-Identifier: MIT
// The clock that texts show: the time of day, or a time that begins with the first frame. And how
// many frames pass in a second of it.
#pragma once

#include "frame.h"

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace overlay {

constexpr int64_t kNanoseconds = 1'000'000'000; // a second

constexpr int64_t kMaxClockStart = 8'000'000'000 * kNanoseconds; // in 2223

struct ClockSettings {
    bool utc = false;             // otherwise the time zone of the machine
    std::optional<int64_t> start; // of frame 0, in nanoseconds since 1970 (UTC); none: time of day
};

// Nanoseconds since 1970 (UTC), of a frame that is drawn now.
int64_t ClockTime(const ClockSettings &settings, const FrameTime &time);

// A moment by a format of strftime, in which %N are the digits of the second's fraction, all nine
// or, as in %3N, the first ones.
std::string FormatClock(std::string_view format, int64_t nanoseconds, bool utc);

// The position of the first conversion that FormatClock doesn't know; none when all is right.
std::optional<size_t> WrongConversion(std::string_view format);

// Frames in the last second.
class FrameRate {
  public:
    void Add(int64_t nanoseconds);

    // 0 before there are two frames.
    double PerSecond() const;

  private:
    int64_t &At(size_t index) {
        return times[index % times.size()];
    }

    std::array<int64_t, 1024> times{}; // a ring
    size_t first = 0;                  // of those that count
    size_t end = 0;                    // one past the last
};

} // namespace overlay
