// SPDX-License-Identifier: MIT
// A frame is complete when its line says so or when a later one begins. With gaps to be filled, the
// boxes between two rows are made when the second one comes, which is the latest moment for them.
#include "track_stream.h"

#include "tracks.h"
#include "words.h"

#include <algorithm>
#include <utility>

namespace overlay {

namespace {

constexpr size_t kMaxBoxesOfFrame = 65536;
constexpr size_t kMaxIds = 65536; // that gaps are filled for at a time

} // namespace

TrackStream::TrackStream(const TrackSettings &settings, const InputNames &names, std::string name,
                         const FrameShape &ofFrames)
    : lines(settings, names), splitter(kMaxLine), file(std::move(name)), shape(ofFrames),
      maxGap(settings.maxGap) {
}

Errors TrackStream::Feed(std::string_view bytes) {
    Errors errors;
    splitter.Feed(bytes, [&](std::string_view line, size_t number, bool isTooLong) {
        TakeLine(line, number, isTooLong, errors);
    });
    return errors;
}

void TrackStream::TakeLine(std::string_view line, size_t number, bool isTooLong, Errors &errors) {
    const auto take = [this](std::string_view text, size_t) {
        std::vector<TrackedBox> boxes;
        const std::optional<TrackLines::Line> read = lines.Take(text, boxes);
        if (read)
            AddBoxes(*read, boxes);
    };
    Errors ofLine;
    if (isTooLong)
        ofLine.push_back(
            {file, 0, "the line has more than " + std::to_string(kMaxLine) + " bytes"});
    else
        ParseLines(line, file, ofLine, take);
    for (Error &error : ofLine) {
        error.line = number;
        errors.push_back(std::move(error));
    }
}

void TrackStream::AddBoxes(const TrackLines::Line &line, std::vector<TrackedBox> &boxes) {
    if (line.frame <= completeTo || (current && line.frame < *current))
        GoBack();
    if (frames[line.frame].size() + boxes.size() > kMaxBoxesOfFrame)
        throw Failure("the frame has more than " + std::to_string(kMaxBoxesOfFrame) + " boxes");
    if (current && line.frame > *current)
        Complete(line.frame - 1);
    current = line.frame;
    for (TrackedBox &box : boxes) {
        if (lines.Format() == TrackFormat::Yolo)
            box = Scaled(box, shape.width, shape.height);
        FillGapBefore(box);
        Add(std::move(box));
    }
    if (line.isWhole)
        Complete(line.frame);
}

void TrackStream::GoBack() {
    if (!anyOrder)
        throw Failure("the row comes too late: rows must be sorted by frame, and a later frame "
                      "has come already");
    frames.clear();
    waiting = 0;
    lastOfId.clear();
    current.reset();
    newest.reset();
    completeTo = kNothing;
}

void TrackStream::FillGapBefore(const TrackedBox &box) {
    if (maxGap < 2 || box.id < 0)
        return;
    const auto last = lastOfId.find(box.id);
    if (last != lastOfId.end() && box.frame - last->second.frame <= maxGap)
        for (int64_t frame = last->second.frame + 1; frame < box.frame; ++frame)
            Add(BoxBetween(last->second, box, frame));
    if (last != lastOfId.end())
        last->second = box;
    else if (lastOfId.size() < kMaxIds)
        lastOfId.emplace(box.id, box);
}

void TrackStream::Add(TrackedBox box) {
    const int64_t frame = box.frame;
    frames[frame].push_back(std::move(box));
    ++waiting;
}

void TrackStream::Complete(int64_t frame) {
    completeTo = std::max(completeTo, frame);
    newest = current;
    for (auto last = lastOfId.begin(); last != lastOfId.end();)
        last = last->second.frame < frame - maxGap ? lastOfId.erase(last) : std::next(last);
}

Errors TrackStream::End() {
    Errors errors;
    splitter.End([&](std::string_view line, size_t number, bool isTooLong) {
        TakeLine(line, number, isTooLong, errors);
    });
    newest = current;
    ended = true;
    return errors;
}

void TrackStream::Pause() {
    newest = current;
}

std::optional<TrackStream::Frame> TrackStream::Take(int64_t upTo) {
    const auto first = frames.begin();
    if (first == frames.end() || first->first > upTo || !Has(first->first))
        return std::nullopt;
    Frame frame{first->first, std::move(first->second)};
    waiting -= frame.boxes.size();
    frames.erase(first);
    return frame;
}

std::optional<TrackStream::Frame> TrackStream::TakeNewest() {
    if (!newest)
        return std::nullopt;
    for (auto old = frames.begin(); old != frames.end() && old->first < *newest;) {
        waiting -= old->second.size();
        old = frames.erase(old);
    }
    Frame frame{*newest, frames[*newest]}; // which stays: there may be more of it
    newest.reset();
    return frame;
}

} // namespace overlay
