// SPDX-License-Identifier: MIT
#include "start_time.h"

#include "clock.h"
#include "words.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <ctime>

namespace overlay {

namespace {

// Takes the zone from the end of the text; what it is ahead of UTC, in seconds.
std::optional<int64_t> TakeZone(std::string &text) {
    const size_t sign = text.find_last_of("+-Z");
    if (sign == std::string::npos || text.find(':') > sign) // before a time they are the date's
        return std::nullopt;
    const std::string zone = text.substr(sign);
    int hours = 0;
    int minutes = 0;
    int end = 0;
    const bool whole =
        zone.find_first_not_of("0123456789:", 1) == std::string::npos && // sscanf takes blanks, too
        (std::sscanf(zone.c_str(), "%*c%2d:%2d%n", &hours, &minutes, &end) == 2 ||
         (zone.size() == 5 &&
          std::sscanf(zone.c_str(), "%*c%2d%2d%n", &hours, &minutes, &end) == 2)) &&
        static_cast<size_t>(end) == zone.size() && hours < 24 && minutes < 60;
    if (zone != "Z" && !whole)
        return std::nullopt;
    text.resize(sign);
    const int64_t ahead = hours * 3600 + minutes * 60;
    return zone[0] == '-' ? -ahead : ahead;
}

// Whether the library took all values as they were, and moved none into the next month, say.
bool IsSame(const std::tm &one, const std::tm &other) {
    return one.tm_year == other.tm_year && one.tm_mon == other.tm_mon &&
           one.tm_mday == other.tm_mday && one.tm_hour == other.tm_hour &&
           one.tm_min == other.tm_min && one.tm_sec == other.tm_sec;
}

// Date and time without a zone, in UTC or in the time of the machine.
std::optional<int64_t> SecondsOf(const std::string &text, bool utc) {
    std::tm parts{};
    const char *rest = strptime(text.c_str(), "%Y-%m-%d", &parts);
    if (rest && (*rest == ' ' || *rest == 'T')) {
        rest = strptime(rest + 1, "%H:%M", &parts);
        if (rest && *rest == ':')
            rest = strptime(rest, ":%S", &parts);
    }
    if (!rest || *rest != '\0')
        return std::nullopt;
    std::tm normal = parts;
    normal.tm_isdst = -1;
    const std::time_t seconds = utc ? timegm(&normal) : mktime(&normal);
    return IsSame(parts, normal) ? std::optional<int64_t>(seconds) : std::nullopt;
}

bool IsDigits(std::string_view text) {
    return !text.empty() && std::all_of(text.begin(), text.end(), IsDigit);
}

// Takes ".5" from the end of the text, in nanoseconds; 0 when nothing of the kind is there.
int64_t TakeFraction(std::string &text) {
    const size_t point = text.find('.');
    if (point == std::string::npos || !IsDigits(text.substr(point + 1)))
        return 0;
    const double seconds = RealOf("0" + text.substr(point)).value_or(0); // none: too little
    text.resize(point);
    return std::llround(seconds * static_cast<double>(kNanoseconds));
}

std::optional<int64_t> WholeOf(const std::string &text) {
    const std::optional<double> value = IsDigits(text) ? RealOf(text) : std::nullopt;
    return value && *value < 1e15 ? std::optional<int64_t>(*value) : std::nullopt;
}

// Of a time that ends with minutes, a fraction would be one of a minute.
bool EndsWithSeconds(const std::string &text) {
    return std::count(text.begin(), text.end(), ':') == 2;
}

} // namespace

std::optional<int64_t> ParseStartTime(const std::string &text, bool utc) {
    const bool isNumber = text.substr(0, 1) == "@";
    std::string rest = text.substr(isNumber ? 1 : 0);
    const std::optional<int64_t> zone = isNumber ? std::nullopt : TakeZone(rest);
    const int64_t fraction = TakeFraction(rest);
    const std::optional<int64_t> seconds = isNumber ? WholeOf(rest) : SecondsOf(rest, utc || zone);
    if (!seconds || (fraction > 0 && !isNumber && !EndsWithSeconds(rest)))
        return std::nullopt;
    const int64_t start = *seconds - zone.value_or(0);
    if (start < 0 || start >= kMaxClockStart / kNanoseconds)
        return std::nullopt;
    return start * kNanoseconds + fraction;
}

} // namespace overlay
