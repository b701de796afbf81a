// SPDX-License-Identifier: MIT
// What stands around a program's work: main calls RunProgram and nothing else.
#pragma once

namespace tool {

// Runs the program and returns its exit code. Whatever the work throws ends here, with a message on
// standard error: a Failure with its own exit code, short memory and all else as bad data.
int RunProgram(const char *name, int argc, char **argv, int (*run)(int argc, char **argv));

} // namespace tool
