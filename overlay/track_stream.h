// SPDX-License-Identifier: MIT
// Tracked boxes that arrive while frames are drawn: bytes go in as they come, whole frames of boxes
// come out in their order.
#pragma once

#include "frame.h"
#include "line_splitter.h"
#include "track_lines.h"

#include <deque>
#include <map>

namespace overlay {

class TrackStream {
  public:
    // maxGap of the settings holds here, too. Boxes in shares are those of frames of this shape.
    TrackStream(const TrackSettings &settings, const InputNames &names, std::string file,
                const FrameShape &shape);

    // Any piece of the stream. What is wrong with its lines; these are left out. Rows have to be
    // sorted by frame.
    Errors Feed(std::string_view bytes);

    // The stream is over, or, with only a pause, all of the last frame has been said as far as
    // TakeNewest goes.
    Errors End();
    void Pause();

    // From now on, numbers of frames may go back, as when a detector starts again. What was said
    // before is forgotten then.
    void AllowAnyOrder() {
        anyOrder = true;
    }

    // Whether all boxes of a frame are there.
    bool Has(int64_t frame) const {
        return ended || frame <= completeTo - maxGap;
    }

    struct Frame {
        int64_t number = 0;
        std::vector<TrackedBox> boxes;
    };

    // The boxes of the earliest frame that Has, up to the given one, if there are any.
    std::optional<Frame> Take(int64_t upTo);

    // Those of the last frame, if something was said since the last call; forgets those before it.
    std::optional<Frame> TakeNewest();

    // Boxes that wait to be taken.
    size_t Waiting() const {
        return waiting;
    }

  private:
    static constexpr size_t kMaxLine = 1 << 20;

    void TakeLine(std::string_view line, size_t number, bool isTooLong, Errors &errors);
    void AddBoxes(const TrackLines::Line &line, std::vector<TrackedBox> &boxes);
    void GoBack();
    void FillGapBefore(const TrackedBox &box);
    void Add(TrackedBox box);
    void Complete(int64_t frame);

    static constexpr int64_t kNothing = INT64_MIN / 2;

    TrackLines lines;
    LineSplitter splitter;
    std::string file;
    FrameShape shape;
    int64_t maxGap;

    std::map<int64_t, std::vector<TrackedBox>> frames; // that wait
    size_t waiting = 0;
    std::map<int64_t, TrackedBox> lastOfId; // as far back as a gap may reach
    std::optional<int64_t> current;         // the frame of the last line
    int64_t completeTo = kNothing;
    std::optional<int64_t> newest; // whole, and not taken yet
    bool ended = false;
    bool anyOrder = false;
};

} // namespace overlay
