// SPDX-License-Identifier: MIT
// Tracked boxes, looked up by frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <orn_min_render.h>
#include <vector>

namespace overlay {

// Edges in pixels, right and bottom being the first outside.
struct TrackedBox {
    int64_t frame; // from 0; below, before the first
    int64_t id;    // negative: not tracked, just detected
    double left;
    double top;
    double right;
    double bottom;
    double confidence;
};

// Rounded to whole pixels.
OrnMinRenderRect RectOf(const TrackedBox &box);

class Tracks {
  public:
    struct Boxes {
        const TrackedBox *first;
        const TrackedBox *last; // one past them
        const TrackedBox *begin() const {
            return first;
        }
        const TrackedBox *end() const {
            return last;
        }
        bool Empty() const {
            return first == last;
        }
    };

    Tracks() = default;

    // Boxes in any order. Where two of one id lie at most maxGap frames apart, there is one in
    // every frame between them, too; not with 0 or 1.
    explicit Tracks(std::vector<TrackedBox> boxes, int64_t maxGap = 0);

    // Takes the boxes of one more frame, whatever frames they name. All others are forgotten unless
    // it comes after them, and in time those that lie more than kKeptFrames before it.
    static constexpr int64_t kKeptFrames = 1000;
    void Append(int64_t frame, const std::vector<TrackedBox> &ofFrame);

    // The boxes of a frame, by id.
    Boxes At(int64_t frame) const;

    // Where the feet (the middle of the lower edge) of a box have been, from where it is now back
    // in time, over so many frames or until the track was not there.
    std::vector<OrnMinRenderPoint> Trail(const TrackedBox &box, int32_t frames) const;

  private:
    std::vector<TrackedBox> boxes; // by frame, then by id
};

} // namespace overlay
