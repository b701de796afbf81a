// Tracked boxes: rows of comma-separated values as in MOTChallenge, frame,id,left,top,width,height,
// confidence and whatever follows, looked up by frame.
#pragma once

#include "overlay_words.h"

#include <cstdint>
#include <limits>
#include <optional>
#include <orn_min_render.h>
#include <string>
#include <string_view>
#include <vector>

struct TrackSettings {
    // The number by which the file calls the first frame. Boxes may lie before a given one; if none
    // is given, it is 1, and a row before that is an error.
    std::optional<int64_t> firstFrame;
    int64_t maxGap = 0; // frames; rows of an id that lie no further apart are joined
    double minConfidence = -std::numeric_limits<double>::infinity();
};

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
    };

    Tracks() = default;

    // Reads a whole file. A row that can't be understood gives an error in place of a box.
    Tracks(std::string_view content, const TrackSettings &settings, FileErrors &errors);

    // The boxes of a frame, by id.
    Boxes At(int64_t frame) const;

    // Where the feet (the middle of the lower edge) of a box have been, from where it is now back
    // in time, over so many frames or until the track was not there.
    std::vector<OrnMinRenderPoint> Trail(const TrackedBox &box, int32_t frames) const;

  private:
    void FillGaps(int64_t maxGap);

    std::vector<TrackedBox> boxes; // by frame, then by id
};
