// The command line of orn-overlay.
#pragma once

#include "overlay_colour.h"
#include "overlay_frame.h"
#include "overlay_tracks.h"

#include <optional>
#include <string>

struct Options {
    std::string scriptPath; // empty: none
    std::string fontPath;
    std::string tracksPath;
    TrackSettings tracks;
    FrameShape shape; // without a size only when check is set
    ColourSpace colours;
    std::optional<double> framesPerSecond;
    bool stats = false;
    bool check = false;
};

constexpr double kUsualRate = 25; // of {time}, when no other is given

// Reads the command line. Returns the exit code when that is all there was to do: after --help,
// --version and wrong usage, of which it has told.
std::optional<int> ParseCommandLine(int argc, char **argv, Options &options);

// A message on standard error.
void Say(const std::string &message);
