// SPDX-License-Identifier: MIT
// What follows the name of a command in a line of a script.
#pragma once

#include "commands.h"
#include "overlay.h"
#include "resources.h"

namespace overlay {

// Takes all arguments of the command, to the end of the line, into the overlay, whose perBox is
// set already. Reads bitmaps, and opens pictures if it is known how. Throws Failure.
void TakeArguments(std::string_view &line, const Command &command, const ScriptFiles &files,
                   Overlay &overlay);

// A name in quotes. Throws Failure.
std::string TakeName(std::string_view &line);

// The name of a file in quotes, as a path that can be opened. Throws Failure.
std::string TakePath(std::string_view &line, const ScriptFiles &files);

// Whether the line is over, but for a comment.
bool IsEnd(std::string_view line);

// Throws Failure unless the line is over.
void RequireEnd(std::string_view line);

} // namespace overlay
