// SPDX-License-Identifier: MIT
// Boxes are kept in the order in which they are asked for, and found by bisection.
#include "tracks.h"

#include "place.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

namespace overlay {

namespace {

bool ComesFirst(const TrackedBox &a, const TrackedBox &b) {
    return std::tie(a.frame, a.id) < std::tie(b.frame, b.id);
}

double Between(double from, double to, double share) {
    return from + share * (to - from);
}

TrackedBox BoxBetween(const TrackedBox &from, const TrackedBox &to, int64_t frame) {
    const double share =
        static_cast<double>(frame - from.frame) / static_cast<double>(to.frame - from.frame);
    return {frame,
            from.id,
            Between(from.left, to.left, share),
            Between(from.top, to.top, share),
            Between(from.right, to.right, share),
            Between(from.bottom, to.bottom, share),
            Between(from.confidence, to.confidence, share)};
}

int32_t Pixel(double edge) {
    constexpr double kFar = 1e12; // keeps the int64 whole; Saturated does the rest
    return Saturated(static_cast<int64_t>(std::floor(std::clamp(edge, -kFar, kFar) + 0.5)));
}

OrnMinRenderPoint FeetOf(const TrackedBox &box) {
    return {Pixel((box.left + box.right) / 2), Pixel(box.bottom)};
}

// Every edge moves evenly from one row of an id to its next.
void FillGaps(std::vector<TrackedBox> &boxes, int64_t maxGap) {
    std::stable_sort(boxes.begin(), boxes.end(), [](const TrackedBox &a, const TrackedBox &b) {
        return std::tie(a.id, a.frame) < std::tie(b.id, b.frame);
    });
    const size_t rows = boxes.size();
    for (size_t i = 1; i < rows; ++i) {
        const TrackedBox from = boxes[i - 1];
        const TrackedBox to = boxes[i];
        const bool joined = from.id == to.id && from.id >= 0 && to.frame - from.frame <= maxGap;
        for (int64_t frame = from.frame + 1; joined && frame < to.frame; ++frame)
            boxes.push_back(BoxBetween(from, to, frame));
    }
}

} // namespace

OrnMinRenderRect RectOf(const TrackedBox &box) {
    return {Pixel(box.left), Pixel(box.top), Pixel(box.right), Pixel(box.bottom)};
}

Tracks::Tracks(std::vector<TrackedBox> all, int64_t maxGap) : boxes(std::move(all)) {
    if (maxGap > 1)
        FillGaps(boxes, maxGap);
    std::stable_sort(boxes.begin(), boxes.end(), ComesFirst);
}

// Boxes are forgotten many frames at a time, since the others have to move.
void Tracks::Append(int64_t frame, const std::vector<TrackedBox> &ofFrame) {
    if (!boxes.empty() && boxes.back().frame >= frame)
        boxes.clear();
    if (!boxes.empty() && boxes.front().frame < frame - 2 * kKeptFrames)
        boxes.erase(boxes.begin(), boxes.begin() + (At(frame - kKeptFrames).first - boxes.data()));
    const auto oldCount = static_cast<ptrdiff_t>(boxes.size());
    for (TrackedBox box : ofFrame) {
        box.frame = frame;
        boxes.push_back(box);
    }
    const auto added = boxes.begin() + oldCount;
    if (!std::is_sorted(added, boxes.end(), ComesFirst)) // sorting stably takes memory
        std::stable_sort(added, boxes.end(), ComesFirst);
}

Tracks::Boxes Tracks::At(int64_t frame) const {
    const auto isBefore = [](const TrackedBox &box, int64_t number) { return box.frame < number; };
    const TrackedBox *end = boxes.data() + boxes.size();
    const TrackedBox *first = std::lower_bound(boxes.data(), end, frame, isBefore);
    return {first, std::lower_bound(first, end, frame + 1, isBefore)};
}

std::vector<OrnMinRenderPoint> Tracks::Trail(const TrackedBox &box, int32_t frames) const {
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
