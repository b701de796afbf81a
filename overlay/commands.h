// SPDX-License-Identifier: MIT
// The language of scripts: the one table of its commands, and the one of their options.
#pragma once

#include "messages.h"
#include "overlay.h"

namespace overlay {

// Which options a command takes: sets of the table of options, and any combination of them.
using OptionSets = unsigned;

// What ends the arguments of a command.
enum class Last { Nothing, Points, String, Bitmap, Picture };

// What else sets a command apart.
using Traits = unsigned;
constexpr Traits kTracksOnly = 1;      // works only in lines of tracks
constexpr Traits kKeptInside = 2;      // its text is moved into the frame without being asked to
constexpr Traits kLumaAlone = 4;       // chroma stays as it is
constexpr Traits kBoxUnasked = 8;      // its first four places may be left out for the tracked box
constexpr Traits kBlackUnasked = 16;   // its colour may be left out
constexpr Traits kAvoidsInTracks = 32; // covers little in lines of tracks without being asked to

// Arguments come in the order coordinates, colours, options, the last one.
struct Command {
    std::string_view name;
    std::string_view arguments;   // as people read them
    std::string_view coordinates; // a letter each: x and y places, w and h lengths, W a width that
                                  // is more than 0, s a size, n counts from 1, a is
                                  // like n or "auto"
    size_t colours;
    OptionSets options;
    DrawFunction draw;
    Last last = Last::Nothing;
    Traits traits = 0;
    size_t minPoints = 0;
};

// Throws Failure when there is none of that name.
const Command &FindCommand(std::string_view name);

// Takes an option, with what belongs to it, if the line begins with one of the sets; false
// otherwise. Throws Failure.
bool TakeOption(std::string_view &line, OptionSets sets, Overlay &overlay);

// The language in one screen, for the help of a client. Ends without a line feed.
std::string ScriptHelp(const InputNames &names);

} // namespace overlay
