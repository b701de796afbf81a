// SPDX-License-Identifier: MIT
// Only rows are kept: what lies in a gap between two of them is computed when it is asked for, so
// that memory doesn't grow with the gaps.
#include "tracks.h"

#include <algorithm>
#include <tuple>
#include <utility>

namespace overlay {

namespace {

bool ComesFirst(const TrackedBox &a, const TrackedBox &b) {
    return std::tie(a.id, a.frame) < std::tie(b.id, b.frame);
}

} // namespace

Tracks::Tracks(std::vector<TrackedBox> boxes, int64_t gap) : rows(std::move(boxes)), maxGap(gap) {
    std::stable_sort(rows.begin(), rows.end(), ComesFirst);
    timeline = TimelineOfRows();
}

void Tracks::SetScale(double x, double y) {
    scaleX = x;
    scaleY = y;
    shownFrame.reset();
}

bool Tracks::IsJoinedToNext(size_t row) const {
    return row + 1 < rows.size() && rows[row].id >= 0 && rows[row].id == rows[row + 1].id &&
           rows[row + 1].frame - rows[row].frame <= maxGap;
}

Timeline Tracks::TimelineOfRows() const {
    std::vector<FrameRange> ranges(rows.size());
    for (size_t i = 0; i < rows.size(); ++i) {
        ranges[i] = {rows[i].frame, rows[i].frame};
        if (IsJoinedToNext(i) && rows[i + 1].frame > rows[i].frame)
            ranges[i].last = rows[i + 1].frame - 1;
    }
    return Timeline(std::move(ranges));
}

TrackedBox Tracks::BoxOf(size_t row, int64_t frame) const {
    return Scaled(rows[row].frame == frame ? rows[row]
                                           : BoxBetween(rows[row], rows[row + 1], frame),
                  scaleX, scaleY);
}

std::string Tracks::Repeats(int64_t first) const {
    const auto isRepeat = [](const TrackedBox &a, const TrackedBox &b) {
        return a.id >= 0 && a.id == b.id && a.frame == b.frame;
    };
    const auto row = std::adjacent_find(rows.begin(), rows.end(), isRepeat);
    if (row == rows.end())
        return "";
    size_t others = 0;
    for (auto next = row + 1; next + 1 < rows.end(); ++next)
        others += isRepeat(*next, *(next + 1));
    const std::string more = others == 1 ? "is 1" : "are " + std::to_string(others);
    return "frame " + std::to_string(row->frame + first) + " has two boxes of id " +
           std::to_string(row->id) + (others > 0 ? ", and there " + more + " more like this" : "");
}

const std::vector<TrackedBox> &Tracks::At(int64_t frame) {
    if (shownFrame == frame)
        return shown;
    shownFrame.reset(); // until all are there, should memory be short
    shown.clear();
    for (const size_t row : timeline.At(frame))
        shown.push_back(BoxOf(row, frame));
    shownFrame = frame;
    return shown;
}

// row is the first of the track that is not before the frame looked at last, so the one before it
// is the last one that comes earlier.
std::vector<OrnMinRenderPoint> Tracks::Trail(const TrackedBox &box, int32_t frames) const {
    std::vector<OrnMinRenderPoint> points{FeetOf(box)};
    auto row = static_cast<size_t>(std::lower_bound(rows.begin(), rows.end(), box, ComesFirst) -
                                   rows.begin());
    for (int64_t frame = box.frame - 1; box.id >= 0 && frame >= box.frame - frames; --frame) {
        while (row > 0 && rows[row - 1].id == box.id && rows[row - 1].frame >= frame)
            --row;
        const bool isRow = row < rows.size() && rows[row].id == box.id && rows[row].frame == frame;
        if (!isRow && (row == 0 || !IsJoinedToNext(row - 1)))
            break;
        points.push_back(FeetOf(BoxOf(isRow ? row : row - 1, frame)));
    }
    return points;
}

} // namespace overlay
