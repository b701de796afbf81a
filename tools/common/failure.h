// SPDX-License-Identifier: MIT
// How a program fails: with a message for the user and an exit code. Whoever finds out what is
// wrong throws a Failure, and RunProgram tells of it.
#pragma once

#include <stdexcept>
#include <string>

namespace tool {

constexpr int kBadData = 1;  // exit code: a file, a stream or the memory is no good
constexpr int kBadUsage = 2; // exit code: the command line is no good

// The text is complete but for the program's name. It may hold file names as they are: control
// characters are taken out where it is shown.
struct Failure : std::runtime_error {
    Failure(int code, const std::string &text) : std::runtime_error(text), exitCode(code) {
    }
    int exitCode;
};

// What the last system call did not do for a file or stream, with the reason from errno.
Failure SystemFailure(const std::string &subject);

} // namespace tool
