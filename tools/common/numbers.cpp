// SPDX-License-Identifier: MIT
// std::from_chars decides what a number is: no locale, no octal, no blanks around it.
#include "common/numbers.h"

#include "common/failure.h"
#include "common/text.h"

#include <charconv>
#include <cmath>

namespace tool {

template <typename Number> static std::optional<Number> ParseWhole(std::string_view text) {
    Number number = {};
    const char *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc() || stop != end)
        return {};
    return number;
}

std::optional<int64_t> ParseInteger(std::string_view text) {
    return ParseWhole<int64_t>(text);
}

std::optional<double> ParseReal(std::string_view text) {
    const std::optional<double> number = ParseWhole<double>(text);
    return number && std::isfinite(*number) ? number : std::nullopt;
}

template <typename Number>
static Number Checked(const std::string &option, const std::string &text,
                      std::optional<Number> number, const std::string &range, Number least,
                      Number most) {
    if (!number || *number < least || *number > most)
        throw Failure(kBadUsage, option + ": expected a number " + range + ", not '" + text + "'");
    return *number;
}

int64_t IntegerBetween(const std::string &option, const std::string &text, int64_t least,
                       int64_t most) {
    const std::string range = "from " + std::to_string(least) + " to " + std::to_string(most);
    return Checked(option, text, ParseInteger(text), range, least, most);
}

double RealBetween(const std::string &option, const std::string &text, double least, double most) {
    return Checked(option, text, ParseReal(text), Format("from %g to %g", least, most), least,
                   most);
}

} // namespace tool
