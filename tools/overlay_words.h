// Lines and words of the files that orn-overlay reads, and what it says about wrong ones. Functions
// named Take... remove what they return from the front of the line.
#pragma once

#include <charconv>
#include <cstddef>
#include <functional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

// What is wrong, as the user is told it: with a line of a file, or else it ends the program with
// exit code 1.
struct Failure : std::runtime_error {
    using runtime_error::runtime_error;
};

struct FileErrors {
    struct Entry {
        size_t line; // from 1
        std::string reason;
    };
    std::vector<Entry> list;
    bool complete = true; // false: reading stopped at the last of too many errors
};

// Calls parse with every line that is neither empty nor a comment, and keeps the failures that it
// throws.
void ParseLines(std::string_view content, FileErrors &errors,
                const std::function<void(std::string_view line)> &parse);

// What failed with a file, and the system's reason in errno.
Failure FileFailure(const std::string &path);

// The whole content of a file. Throws Failure.
std::string ReadFile(const std::string &path);

// In quotes, cut short, and without what would command a terminal.
std::string Quoted(std::string_view word);

// A wrong argument as a message ends in it: "expected a colour, found ...".
std::string Found(std::string_view word);

std::string_view WithoutBlanksBefore(std::string_view line);

// The next word without taking it; empty at the end of the line.
std::string_view NextWord(std::string_view line);

std::string_view TakeWord(std::string_view &line);

bool IsDigit(char c);

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
