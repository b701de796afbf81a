// SPDX-License-Identifier: MIT
// Which overlays a frame shows. Work per frame depends on those that start, are shown or end there,
// not on all that there are.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace overlay {

struct FrameRange {
    int64_t first = 0;
    int64_t last = 0; // included
};

class Timeline {
  public:
    Timeline() = default;
    explicit Timeline(std::vector<FrameRange> ranges);

    // Positions in the list of ranges, in its order, valid until the next call. Frames may be asked
    // for in any order; a step back looks at all ranges again.
    const std::vector<size_t> &At(int64_t frame);

  private:
    void Start(int64_t frame);

    std::vector<FrameRange> ranges;
    std::vector<size_t> byStart; // by first frame, then in the order of the list
    size_t nextStart = 0;
    int64_t current = 0;
    std::vector<size_t> active;
};

} // namespace overlay
