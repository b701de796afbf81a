// SPDX-License-Identifier: MIT
// Numbers as users write them: decimal, and nothing else. 010 is ten, 0x20 is no number.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tool {

// None unless the whole text is a number that the type holds.
std::optional<int64_t> ParseInteger(std::string_view text);

// The same with a fraction or an exponent; none for infinity and what is no number either.
std::optional<double> ParseReal(std::string_view text);

// The value of an option. Throws Failure unless it is a number from least to most.
int64_t IntegerBetween(const std::string &option, const std::string &text, int64_t least,
                       int64_t most);
double RealBetween(const std::string &option, const std::string &text, double least, double most);

} // namespace tool
