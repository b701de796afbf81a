// SPDX-License-Identifier: MIT
// What the engine says about wrong input, in words for the users of its clients.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace overlay {

// Thrown where something is wrong; the text is the reason. Where it has to do with a line of a
// script or of tracks, it ends as an Error of that line.
struct Failure : std::runtime_error {
    using runtime_error::runtime_error;
};

// A Failure at a place of the line that is being read.
struct PlacedFailure : Failure {
    PlacedFailure(const std::string &reason, const char *at) : Failure(reason), place(at) {
    }
    const char *place;
};

// Something wrong in an input.
struct Error {
    std::string file;
    size_t line; // from 1; 0: the file as a whole
    std::string reason;
    size_t column = 0; // in characters, from 1; 0: the line as a whole

    std::string Message() const; // "file:line:column: reason"
};

using Errors = std::vector<Error>;

// What a client's users call its inputs: options of a command line, for example, or properties.
struct InputNames {
    std::string font = "font";
    std::string tracks = "tracks";
    std::string firstFrame = "first frame";
};

// In quotes, cut short, and without what would command a terminal.
std::string Quoted(std::string_view word);

// A wrong argument as a message ends in it: "expected a colour, found ...".
std::string Found(std::string_view word);

} // namespace overlay
