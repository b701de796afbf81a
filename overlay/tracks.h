// SPDX-License-Identifier: MIT
// Tracked boxes that are known before the frames, looked up by frame.
#pragma once

#include "timeline.h"
#include "tracked_box.h"

#include <optional>
#include <string>
#include <vector>

namespace overlay {

class Tracks {
  public:
    Tracks() = default;

    // Boxes in any order. Where two of one id lie at most maxGap frames apart, there is one in
    // every frame between them, too; not with 0 or 1.
    explicit Tracks(std::vector<TrackedBox> boxes, int64_t maxGap = 0);

    // Boxes come out with their edges multiplied by these: for rows in shares of the frame.
    void SetScale(double x, double y);

    // The boxes of a frame, by id, valid until another frame is asked for. Any order of frames, but
    // one after the other is fastest.
    const std::vector<TrackedBox> &At(int64_t frame);

    // Where the feet (the middle of the lower edge) of a box have been, from where it is now back
    // in time, over so many frames or until the track was not there.
    std::vector<OrnMinRenderPoint> Trail(const TrackedBox &box, int32_t frames) const;

    // Which frame has two boxes of one id, and how many more there are like it, in words; empty if
    // there is none. Frames count from first.
    std::string Repeats(int64_t first) const;

  private:
    bool IsJoinedToNext(size_t row) const;
    TrackedBox BoxOf(size_t row, int64_t frame) const;
    Timeline TimelineOfRows() const;

    std::vector<TrackedBox> rows; // by id, then by frame
    int64_t maxGap = 0;
    double scaleX = 1;
    double scaleY = 1;
    Timeline timeline; // of the rows, each shown up to the next one that it is joined to
    std::vector<TrackedBox> shown;
    std::optional<int64_t> shownFrame;
};

} // namespace overlay
