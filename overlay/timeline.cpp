// SPDX-License-Identifier: MIT
// Ranges are sorted by their first frame once; a mark moves along them with the frames.
#include "timeline.h"

#include <algorithm>
#include <numeric>
#include <utility>

namespace overlay {

Timeline::Timeline(std::vector<FrameRange> list) : ranges(std::move(list)), byStart(ranges.size()) {
    std::iota(byStart.begin(), byStart.end(), size_t{0});
    std::stable_sort(byStart.begin(), byStart.end(),
                     [this](size_t a, size_t b) { return ranges[a].first < ranges[b].first; });
}

const std::vector<size_t> &Timeline::At(int64_t frame) {
    if (frame < current) {
        nextStart = 0;
        active.clear();
    }
    current = frame;
    const auto isOver = [this, frame](size_t i) { return ranges[i].last < frame; };
    active.erase(std::remove_if(active.begin(), active.end(), isOver), active.end());
    Start(frame);
    return active;
}

// After a jump, what starts here may be over already, and has different first frames.
void Timeline::Start(int64_t frame) {
    const auto oldCount = static_cast<ptrdiff_t>(active.size());
    for (; nextStart < byStart.size() && ranges[byStart[nextStart]].first <= frame; ++nextStart)
        if (ranges[byStart[nextStart]].last >= frame)
            active.push_back(byStart[nextStart]);
    const auto started = active.begin() + oldCount;
    std::sort(started, active.end());
    std::inplace_merge(active.begin(), started, active.end());
}

} // namespace overlay
