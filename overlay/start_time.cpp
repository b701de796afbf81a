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
    if (sign == std::string::npos || sign < 11) // the signs before are those of the date
        return std::nullopt;
    const std::string zone = text.substr(sign);
    int hours = 0;
    int minutes = 0;
    int end = 0;
    const bool whole = (std::sscanf(zone.c_str() + 1, "%2d:%2d%n", &hours, &minutes, &end) == 2 ||
                        std::sscanf(zone.c_str() + 1, "%2d%2d%n", &hours, &minutes, &end) == 2) &&
                       static_cast<size_t>(end) == zone.size() - 1 && hours >= 0 && hours < 24 &&
                       minutes >= 0 && minutes < 60;
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
    const char *rest = text.size() > 10 && text[10] == 'T'
                           ? strptime(text.c_str(), "%Y-%m-%dT%H:%M", &parts)
                           : strptime(text.c_str(), "%Y-%m-%d %H:%M", &parts);
    if (!rest)
        rest = strptime(text.c_str(), "%Y-%m-%d", &(parts = {}));
    else if (*rest == ':')
        rest = strptime(rest, ":%S", &parts);
    if (!rest || *rest != '\0')
        return std::nullopt;
    std::tm normal = parts;
    normal.tm_isdst = -1;
    const std::time_t seconds = utc ? timegm(&normal) : mktime(&normal);
    return IsSame(parts, normal) ? std::optional<int64_t>(seconds) : std::nullopt;
}

// Takes ".5" from the end of the text.
std::optional<int64_t> TakeFraction(std::string &text) {
    const size_t point = text.rfind('.');
    if (point == std::string::npos)
        return 0;
    const std::optional<double> fraction = RealOf("0" + text.substr(point));
    if (!fraction || *fraction >= 1)
        return std::nullopt;
    text.resize(point);
    return std::llround(*fraction * static_cast<double>(kNanoseconds));
}

std::optional<int64_t> WholeOf(const std::string &text) {
    const bool isWhole = !text.empty() && std::all_of(text.begin(), text.end(), IsDigit);
    const std::optional<double> value = isWhole ? RealOf(text) : std::nullopt;
    return value && *value < 1e15 ? std::optional<int64_t>(*value) : std::nullopt;
}

} // namespace

std::optional<int64_t> ParseStartTime(const std::string &text, bool utc) {
    const bool isNumber = text.substr(0, 1) == "@";
    std::string rest = text.substr(isNumber ? 1 : 0);
    const std::optional<int64_t> zone = isNumber ? std::nullopt : TakeZone(rest);
    const std::optional<int64_t> fraction = TakeFraction(rest);
    const std::optional<int64_t> seconds = isNumber ? WholeOf(rest) : SecondsOf(rest, utc || zone);
    if (!fraction || !seconds || *seconds < 0 || *seconds >= kMaxClockStart / kNanoseconds)
        return std::nullopt;
    return (*seconds - zone.value_or(0)) * kNanoseconds + *fraction;
}

} // namespace overlay
