// SPDX-License-Identifier: MIT
#include "live_boxes.h"

#include <algorithm>
#include <tuple>

namespace overlay {

namespace {

bool ComesFirst(const TrackedBox &a, const TrackedBox &b) {
    return std::tie(a.frame, a.id) < std::tie(b.frame, b.id);
}

} // namespace

// Boxes are forgotten many frames at a time, since the others have to move.
void LiveBoxes::Append(int64_t frame, const std::vector<TrackedBox> &ofFrame) {
    if (!boxes.empty() && boxes.back().frame >= frame)
        boxes.clear();
    if (!boxes.empty() && boxes.front().frame < frame - 2 * kKeptFrames)
        boxes.erase(boxes.begin(), boxes.begin() + (At(frame - kKeptFrames).first - boxes.data()));
    const auto oldCount = static_cast<ptrdiff_t>(boxes.size());
    for (const TrackedBox &box : ofFrame) {
        boxes.push_back(box);
        boxes.back().frame = frame;
    }
    const auto added = boxes.begin() + oldCount;
    if (!std::is_sorted(added, boxes.end(), ComesFirst)) // sorting stably takes memory
        std::stable_sort(added, boxes.end(), ComesFirst);
}

LiveBoxes::Boxes LiveBoxes::At(int64_t frame) const {
    const auto isBefore = [](const TrackedBox &box, int64_t number) { return box.frame < number; };
    const TrackedBox *end = boxes.data() + boxes.size();
    const TrackedBox *first = std::lower_bound(boxes.data(), end, frame, isBefore);
    return {first, std::lower_bound(first, end, frame + 1, isBefore)};
}

bool LiveBoxes::HasRepeat(int64_t frame) const {
    const Boxes ofFrame = At(frame);
    return std::adjacent_find(ofFrame.begin(), ofFrame.end(),
                              [](const TrackedBox &a, const TrackedBox &b) {
                                  return a.id >= 0 && a.id == b.id;
                              }) != ofFrame.end();
}

std::vector<OrnMinRenderPoint> LiveBoxes::Trail(const TrackedBox &box, int32_t frames) const {
    std::vector<OrnMinRenderPoint> points{FeetOf(box)};
    TrackedBox wanted = box;
    while (box.id >= 0 && box.frame - wanted.frame < frames) {
        --wanted.frame;
        const auto found = std::lower_bound(boxes.begin(), boxes.end(), wanted, ComesFirst);
        if (found == boxes.end() || ComesFirst(wanted, *found))
            break;
        points.push_back(FeetOf(*found));
    }
    return points;
}

} // namespace overlay
