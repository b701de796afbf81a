// SPDX-License-Identifier: MIT
// Texts taken apart: lines, words, numbers and strings. Functions named Take... remove what they
// return from the front of the line.
#pragma once

#include "messages.h"

#include <charconv>
#include <functional>
#include <optional>
#include <system_error>

namespace overlay {

// Calls parse with every line that is neither empty nor a comment, and with the line's number, from
// 1. A Failure that it throws becomes an error of the file; after too many, the rest is not read.
void ParseLines(std::string_view content, const std::string &file, Errors &errors,
                const std::function<void(std::string_view line, size_t number)> &parse);

std::string_view WithoutBlanksBefore(std::string_view line);

// Without blanks at either end.
std::string_view Trimmed(std::string_view text);

// The next word without taking it; empty at the end of the line.
std::string_view NextWord(std::string_view line);

std::string_view TakeWord(std::string_view &line);

// Takes a UTF-8 character: a byte, and those that continue it. The text is not empty.
std::string_view TakeCharacter(std::string_view &text);

bool IsDigit(char c);

// Takes a string from the front of the line and resolves its escapes. Throws Failure.
std::string TakeQuoted(std::string_view &line);

// Where byte number position of a string's text stands in the line; quoted begins with its quote.
const char *PlaceInQuoted(std::string_view quoted, size_t position);

// Whether the library draws all of a text: it would end silently at the first byte that is no
// UTF-8, or at a zero.
bool IsDrawableUtf8(std::string_view text);

// The number that a whole word is, with or without a fraction and an exponent. None for what a
// double doesn't hold, for infinity and for what is no number by name.
std::optional<double> RealOf(std::string_view word);

// Throws Failure unless the whole word is a number of the type.
template <typename Integer> Integer ParseNumber(std::string_view word, const char *typeName) {
    Integer number{};
    const char *end = word.data() + word.size();
    const auto result = std::from_chars(word.data(), end, number);
    if (result.ptr != end || result.ec == std::errc::invalid_argument)
        throw Failure("bad number " + Quoted(word));
    if (result.ec == std::errc::result_out_of_range)
        throw Failure("number out of " + std::string(typeName) + " range " + Quoted(word));
    return number;
}

} // namespace overlay
