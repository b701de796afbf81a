// SPDX-License-Identifier: MIT
// Files of tracks in all formats, line by line or whole.
#pragma once

#include "track_rows.h"
#include "track_settings.h"
#include "tracked_box.h"

#include <optional>
#include <vector>

namespace overlay {

// One file of tracks.
struct TrackFile {
    std::string content;
    std::string name; // for messages

    // In a folder of YOLO's, each file is that of one frame, and its rows don't name it. As the
    // file calls the frame.
    std::optional<int64_t> frame = {};
};

// Reads line after line, of all formats but Coco.
class TrackLines {
  public:
    TrackLines(TrackSettings settings, InputNames names);

    // What a line says: boxes of a frame.
    struct Line {
        int64_t frame = 0;
        bool isWhole = false; // the frame has no others
    };

    // Adds the boxes of the next line. Nothing when it has none of itself, like a row that names
    // columns. Throws Failure.
    std::optional<Line> Take(std::string_view line, std::vector<TrackedBox> &boxes);

    // Once there was a line, the format that it has.
    TrackFormat Format() const {
        return settings.format;
    }

  private:
    void Begin(std::string_view line);
    TrackedBox BoxOf(std::string_view row) const;

    TrackSettings settings;
    InputNames names;
    bool begun = false;
    bool startsWithHeader = false;
    std::optional<Columns> columns;
};

struct ParsedTracks {
    std::vector<TrackedBox> boxes; // in the order of the rows
    bool inShares = false;         // of the frame, in place of pixels
};

// Reads whole files. A row that can't be understood gives an error in place of a box.
ParsedTracks ParseTracks(const std::vector<TrackFile> &files, const TrackSettings &settings,
                         const InputNames &names, Errors &errors);

} // namespace overlay
