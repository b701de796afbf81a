// SPDX-License-Identifier: MIT
// Each gap is rounded by itself, so that time stamps that waver or drift lose no number.
#include "frame_numbers.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr double kMaxMissing = 1e12; // frames; keeps sums far inside of int64

int64_t MissingBetween(GstClockTime from, GstClockTime to, const GstVideoInfo &info) {
    if (!GST_CLOCK_TIME_IS_VALID(from) || !GST_CLOCK_TIME_IS_VALID(to) || to <= from ||
        info.fps_n <= 0)
        return 0;
    const double frames =
        static_cast<double>(to - from) / GST_SECOND * info.fps_n / std::max(info.fps_d, 1);
    return static_cast<int64_t>(std::clamp(std::round(frames) - 1, 0.0, kMaxMissing));
}

} // namespace

void FrameNumbers::Restart() {
    *this = {};
}

int64_t FrameNumbers::Next(GstClockTime timeStamp, const GstVideoInfo &info) {
    const int64_t number = next + MissingBetween(last, timeStamp, info);
    next = number + 1;
    last = timeStamp;
    return number;
}
