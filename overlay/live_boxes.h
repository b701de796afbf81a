// SPDX-License-Identifier: MIT
// Tracked boxes that come with the frames.
#pragma once

#include "tracked_box.h"

#include <vector>

namespace overlay {

class LiveBoxes {
  public:
    // Takes the boxes of one more frame, whatever frames they name. All others are forgotten unless
    // it comes after them, and in time those that lie more than kKeptFrames before it.
    static constexpr int64_t kKeptFrames = 1000;
    void Append(int64_t frame, const std::vector<TrackedBox> &ofFrame);

    struct Boxes {
        const TrackedBox *first;
        const TrackedBox *last; // one past them
        const TrackedBox *begin() const {
            return first;
        }
        const TrackedBox *end() const {
            return last;
        }
        bool empty() const {
            return first == last;
        }
    };

    // The boxes of a frame, by id, valid until more are appended.
    Boxes At(int64_t frame) const;

    // Whether two of them have one id, which is not negative.
    bool HasRepeat(int64_t frame) const;

    // As of Tracks.
    std::vector<OrnMinRenderPoint> Trail(const TrackedBox &box, int32_t frames) const;

  private:
    std::vector<TrackedBox> boxes; // by frame, then by id
};

} // namespace overlay
