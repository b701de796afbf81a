// SPDX-License-Identifier: MIT
// Where labels go so that they cover little of each other and of tracked boxes, and don't jump from
// frame to frame.
#pragma once

#include <cstddef>
#include <cstdint>
#include <orn_min_render.h>
#include <vector>

namespace overlay {

class LabelPlaces {
  public:
    // A label that looks for a place.
    struct Request {
        size_t line;             // of the script
        int64_t id;              // of its tracked box; below 0: told apart by nothing
        OrnMinRenderRect around; // the tracked box, or a point
        OrnMinRenderRect asked;  // where it goes if nothing speaks against it
    };

    // Places are kept from the frame before, or from one that lies not much further back. A frame
    // that is drawn once more is drawn as before.
    void BeginFrame(int64_t number, int32_t width, int32_t height);

    // Everything of this frame that labels should not cover. Beyond the first kMaxRects of either
    // kind it doesn't count, and labels beyond them go where they are asked to, so that the work of
    // a frame is bounded.
    static constexpr size_t kMaxRects = 256;
    bool HasBoxes() const {
        return !boxes.empty();
    }
    void AddBox(const OrnMinRenderRect &box) {
        Add(box, boxes);
    }
    void AddLabel(const OrnMinRenderRect &label) {
        Add(label, labels);
    }

    // Returns a rectangle of the asked one's size, inside of the frame if that is large enough.
    OrnMinRenderRect Choose(const Request &request);

    // Of this frame, as far as they lie in it, in the order in which they were added.
    const std::vector<OrnMinRenderRect> &Labels() const {
        return labels;
    }

  private:
    struct Kept {
        size_t line;
        int64_t id;
        size_t place;
    };

    struct Obstacle {
        OrnMinRenderRect rect;
        int64_t costOfPixel;
    };

    OrnMinRenderRect At(const Request &request, size_t place) const;
    void Add(const OrnMinRenderRect &rect, std::vector<OrnMinRenderRect> &to) const;
    OrnMinRenderRect ReachOf(const Request &request) const;
    void LookAround(const OrnMinRenderRect &reach, const Request &request);
    int64_t Covered(const OrnMinRenderRect &rect, int64_t limit) const;
    size_t PlaceBefore(const Request &request) const;

    OrnMinRenderRect frame{};
    int64_t current = 0;
    std::vector<OrnMinRenderRect> boxes;
    std::vector<OrnMinRenderRect> labels;
    std::vector<Obstacle> near; // of the label that looks for a place
    std::vector<Kept> before;   // of the frame before
    std::vector<Kept> now;
};

} // namespace overlay
