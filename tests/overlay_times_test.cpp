// SPDX-License-Identifier: MIT
// When recordings began, the clock that texts show, frames per second, and whether a file changed.
#include "overlay/clock.h"
#include "overlay/file_change.h"
#include "overlay/start_time.h"
#include "support/cases.h"

#include <cmath>
#include <ctime>
#include <sstream>

constexpr int64_t kSecond = 1'000'000'000;

// "utc" before a text stands for that setting. After the seconds come nanoseconds.
static std::string StartOf(const std::string &text) {
    const bool utc = text.substr(0, 3) == "utc";
    const int64_t start = overlay::ParseStartTime(text.substr(utc ? 3 : 0), utc).value_or(-1);
    const std::string fraction = std::to_string(start % kSecond);
    return start < 0 ? "no"
                     : std::to_string(start / kSecond) + (fraction == "0" ? "" : "+" + fraction);
}

// In Berlin, an hour ahead of UTC and two in summer, whose first day lacks the hour after 2:00.
TEST(OverlayTimes, StartsOfRecordings) {
    setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
    ExpectAll(StartOf, R"(@1795442709.5=>1795442709+500000000|@0=>0|@1.0000000006=>1+1|=>no|now=>no
@7999999999.999999999=>7999999999+999999999|@9000000000000000000000=>no|@=>no|@-1=>no|@1e3=>no
@8000000000=>no|@ 1=>no|@1.=>no|@.5=>no|@1.5e0=>no|@1.-5=>no|2026-02-29=>no|2026-04-31 00:00Z=>no
2026-11-23T14:05:09Z=>1795442709|2026-11-23 14:05Z=>1795442700|2026-11-23 14:05.0Z=>1795442700
2026-11-23 14:05:09=>1795439109|utc2026-11-23T14:05:09.25=>1795442709+250000000
utc2026-11-23=>1795392000|2026-07-01=>1782856800|2024-02-29T00:00Z=>1709164800
2026-11-23 14:05:09.5+01:00=>1795439109+500000000|utc2026-11-23 14:05:09-01:00=>1795446309
2026-11-23T14:05:09+0130=>1795437309|2026-11-23 14:05:09-23:59=>1795529049
1969-12-31 23:30-01:00=>1800|1970-01-01 00:30=>no|1970-01-01 00:00Z=>0|1970-01-01 00:30+01:00=>no
2223-07-06T14:13:19Z=>7999999999|2223-07-06T14:13:19-00:01=>no|2026-03-29 02:30=>no
2026-11-23T=>no|2026-11-23.5=>no|2026-11-23:09=>no|2026-11-23 14:05:=>no|2026-11-23 14:05.5=>no
2026-11-23 14:05:09.=>no|2026-11-23 14:05:09 =>no|2026-11-23 14:05:60Z=>no|2026-11-23 24:00Z=>no
2026-11-23 14:05:09.5.5=>no|2026-11-23 14:05+24:00=>no|2026-11-23 14:05+23:60=>no
2026-11-23 14:05+01000=>no|2026-11-23 14:05+:=>no|2026-11-23 14:05+ 1:00=>no
2026-11-23 14:05-0a:00=>no|2026-11-23 14:05Zulu=>no)");
    EXPECT_EQ(StartOf("@" + std::string(400, '9')) + StartOf("@5." + std::string(400, '0') + "1"),
              "no5");
    EXPECT_EQ(overlay::FormatClock("%H:%M %z", 1795442709 * kSecond, false), "15:05 +0100");
    unsetenv("TZ");
    tzset();
}

// Of a moment in nanoseconds, in UTC. Then the places of what a clock doesn't know.
TEST(OverlayTimes, ClockAndItsFractions) {
    const auto format = [](const std::string &text) {
        const std::string after = text.substr(text.find(' ') + 1);
        return overlay::FormatClock(after, std::stoll(text), true);
    };
    ExpectAll(format, R"(1795442709012345678 %F %T.%N=>2026-11-23 14:05:09.012345678|0 =>
987654321 %1N/%3N0/%9N=>9/9870/987654321|-1 %F %T.%N=>1969-12-31 23:59:59.999999999|0 %H%z=>00+0000
-1000000000 %T.%2N=>23:59:59.00|0 %T.%2N=>00:00:00.00|0 100%% %%N a=>100% %N a
5 %Nx%S%N=>000000005x00000000005)");
    const auto wrong = [](const std::string &text) {
        return std::to_string(overlay::WrongConversion(text).value_or(99));
    };
    ExpectAll(wrong, R"(%a%A%b%B%c%C%d%D%e%F%g%G%h%H%I%j%m%M%n%p%r%R%S%t%T%u%U%V%w%W%x%X%y%Y%z%Z=>99
%%%N%1N%9N N=>99|=>99|%=>0|a%=>1|%d%Q=>2|%0N=>0|%%%=>2|%N%3N%Q%T=>5|N%3=>1|a b%:z=>3|%%N%/N=>3)");
}

TEST(OverlayTimes, ClockBeginsWithTheFirstFrameOrIsThatOfTheDay) {
    const overlay::ClockSettings clock{true, 7};
    EXPECT_EQ(overlay::ClockTime(clock, {3, 2}), 1500000007);
    EXPECT_EQ(overlay::ClockTime(clock, {-2, 3}), -666666660);
    EXPECT_EQ(overlay::ClockTime(clock, {INT64_MIN, 1}), 7 - kSecond * kSecond);
    EXPECT_LT(std::abs(overlay::ClockTime({}, {9, 1}) / kSecond - std::time(nullptr)), 9);
}

// Frames in the last second, from when they were drawn, in milliseconds. It has more than are kept.
TEST(OverlayTimes, FramesPerSecond) {
    const auto count = [](const std::string &text) {
        overlay::FrameRate rate;
        std::istringstream times(text);
        for (int64_t time = 0; times >> time;)
            rate.Add(time * 1000000);
        for (int64_t i = 0; text == "many" && i < 5000; ++i)
            rate.Add(i * 250000);
        return std::to_string(std::lround(rate.PerSecond()));
    };
    ExpectAll(count, R"(=>0|900=>0|0 0=>0|0 500=>2|0 500 1000 1500 2000=>2|0 200 1200=>1|many=>4000
0 200 1201=>0|0 250 500 100=>0|0 250 500 100 200=>10|0 0 500=>4|-700 -600 -500=>10)");
}

TEST(OverlayTimes, AnyPartOfAFilesStatusTellsOfAChange) {
    for (int part = 0; part < 6; ++part) {
        struct stat now {};
        now.st_dev = part == 1;
        now.st_ino = part == 2;
        now.st_size = part == 3;
        now.st_mtim.tv_sec = part == 4;
        now.st_mtim.tv_nsec = part == 5;
        EXPECT_EQ(overlay::HasChanged({}, now), part > 0) << part;
    }
}
