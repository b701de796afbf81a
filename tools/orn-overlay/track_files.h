// SPDX-License-Identifier: MIT
// Files of tracks that are there as a whole before the first frame.
#pragma once

#include "overlay/track_lines.h"

#include <string>
#include <vector>

// A file, or - for standard input; of a folder, all files *.txt whose names end in the number of a
// frame, as detectors write YOLO's format. Throws tool::Failure.
std::vector<overlay::TrackFile> ReadTrackFiles(const std::string &path);
