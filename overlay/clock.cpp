// SPDX-License-Identifier: MIT
#include "clock.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>

namespace overlay {

namespace {

constexpr std::string_view kConversions = "aAbBcCdDeFgGhHIjmMnprRStTuUVwWxXyYzZ%";
constexpr size_t kFractionDigits = 9;

// One conversion of a format: "%F", "%3N".
struct Conversion {
    size_t length = 1;
    size_t digits = 0; // of a fraction; 0: what strftime knows
    bool known = false;
};

Conversion ConversionAt(std::string_view format, size_t percent) {
    const std::string_view after = format.substr(percent + 1);
    if (after.empty())
        return {};
    const bool counted = after[0] >= '1' && after[0] <= '9';
    if (after.substr(counted ? 1 : 0, 1) == "N")
        return {counted ? size_t{3} : size_t{2},
                counted ? static_cast<size_t>(after[0] - '0') : kFractionDigits, true};
    return {2, 0, kConversions.find(after[0]) != std::string_view::npos};
}

std::string Fraction(int64_t nanoseconds, size_t digits) {
    const std::string all = std::to_string(nanoseconds + kNanoseconds); // with a digit before them
    return all.substr(1, digits);
}

// Rounded down, also before 1970.
int64_t Seconds(int64_t nanoseconds) {
    const int64_t rest = nanoseconds % kNanoseconds;
    return nanoseconds / kNanoseconds - (rest < 0 ? 1 : 0);
}

} // namespace

int64_t ClockTime(const ClockSettings &settings, const FrameTime &time) {
    using std::chrono::nanoseconds;
    if (!settings.start) {
        const auto now = std::chrono::system_clock::now().time_since_epoch();
        return std::chrono::duration_cast<nanoseconds>(now).count();
    }
    constexpr double kFar = 1e18; // thirty years: with kMaxClockStart, int64 holds the sum
    const double passed = static_cast<double>(time.ticks) * 1e9 / time.ticksPerSecond;
    return *settings.start + std::llround(std::clamp(passed, -kFar, kFar));
}

std::string FormatClock(std::string_view format, int64_t nanoseconds, bool utc) {
    const std::time_t seconds = Seconds(nanoseconds);
    std::tm parts{};
    (utc ? gmtime_r : localtime_r)(&seconds, &parts);
    std::string shown;
    for (size_t i = 0; i < format.size();) {
        if (format[i] != '%') {
            shown += format[i++];
            continue;
        }
        const Conversion conversion = ConversionAt(format, i);
        char text[128];
        const std::string one(format.substr(i, conversion.length));
        if (conversion.digits > 0)
            shown += Fraction(nanoseconds - Seconds(nanoseconds) * kNanoseconds, conversion.digits);
        else
            shown.append(text, std::strftime(text, sizeof text, one.c_str(), &parts));
        i += conversion.length;
    }
    return shown;
}

std::optional<size_t> WrongConversion(std::string_view format) {
    for (size_t i = 0; i < format.size();) {
        const Conversion conversion = ConversionAt(format, i);
        if (format[i] == '%' && !conversion.known)
            return i;
        i += format[i] == '%' ? conversion.length : 1;
    }
    return std::nullopt;
}

// A step back (another film, or a clock that was set) begins anew.
void FrameRate::Add(int64_t nanoseconds) {
    if (At(end - 1) > nanoseconds)
        first = end;
    At(end++) = nanoseconds;
    first = std::max(first, end - std::min(end, times.size()));
    while (At(first) < nanoseconds - kNanoseconds)
        ++first;
}

double FrameRate::PerSecond() const {
    const int64_t span = times[(end - 1) % times.size()] - times[first % times.size()];
    return span > 0 ? static_cast<double>(end - first - 1) * 1e9 / static_cast<double>(span) : 0;
}

} // namespace overlay
