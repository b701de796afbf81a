// SPDX-License-Identifier: MIT
// Reading and writing descriptors in full, whatever they are: a call that a signal interrupted is
// repeated, and a pipe that doesn't block is waited for.
#pragma once

#include <cstddef>
#include <string_view>

namespace tool {

// Fewer bytes than asked for only at the end of the input, or where errno, 0 before, tells why.
size_t ReadFully(int descriptor, void *bytes, size_t size);

// False with the reason in errno.
bool WriteFully(int descriptor, const void *bytes, size_t size);

// A result on standard output. Throws Failure.
void WriteOutput(std::string_view text);

// A message on standard error: "PROGRAM: TEXT", fit to be shown. Takes no memory.
void Say(const char *program, std::string_view text);

} // namespace tool
