// SPDX-License-Identifier: MIT
// Files of tracks in all formats: the first three bytes are the settings. Boxes don't depend on the
// order in which frames are asked for, and trails reach no further back than they are asked to. A
// file that is sorted gives the same boxes when it arrives piece by piece.
#include "input.h"
#include "overlay/track_stream.h"
#include "overlay/tracks.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>

using overlay::TrackedBox;

static void Require(bool holds) {
    if (!holds)
        abort();
}

static auto TupleOf(const TrackedBox &box) {
    return std::tie(box.frame, box.id, box.left, box.top, box.right, box.bottom, box.confidence,
                    box.className);
}

static bool AreEqual(const std::vector<TrackedBox> &one, const std::vector<TrackedBox> &other) {
    return std::equal(
        one.begin(), one.end(), other.begin(), other.end(),
        [](const TrackedBox &a, const TrackedBox &b) { return TupleOf(a) == TupleOf(b); });
}

static void CheckFrame(overlay::Tracks &tracks, int64_t frame) {
    const auto &boxes = tracks.At(frame);
    for (size_t i = 0; i < boxes.size(); ++i) {
        Require(boxes[i].frame == frame && (i == 0 || boxes[i - 1].id <= boxes[i].id));
        const OrnMinRenderRect rect = overlay::RectOf(boxes[i]);
        Require(rect.left <= rect.right && rect.top <= rect.bottom); // and no NaN
        Require(tracks.Trail(boxes[i], 9).size() <= 10);
    }
}

// Without gaps to be filled, which a whole file fills by the ids of all rows.
static void CompareWithStream(const std::string &file, size_t piece,
                              const overlay::TrackSettings &settings) {
    overlay::TrackStream stream(settings, {}, "tracks", {1, 1, false, {}});
    size_t wrong = 0;
    for (size_t at = 0; at < file.size(); at += piece)
        wrong += stream.Feed(file.substr(at, piece)).size();
    wrong += stream.End().size();
    overlay::Errors errors;
    const overlay::ParsedTracks parsed =
        overlay::ParseTracks({{file, "tracks"}}, settings, {}, errors);
    std::vector<TrackedBox> streamed;
    while (const auto frame = stream.Take(INT64_MAX))
        streamed.insert(streamed.end(), frame->boxes.begin(), frame->boxes.end());
    const auto isEarlier = [](const TrackedBox &a, const TrackedBox &b) {
        return a.frame < b.frame;
    };
    Require(std::is_sorted(streamed.begin(), streamed.end(), isEarlier));
    Require(wrong > 0 || !errors.empty() || AreEqual(streamed, parsed.boxes));
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input{data, data + size};
    overlay::TrackSettings settings{input.Byte() % 4, input.Byte() % 32};
    const size_t choice = static_cast<size_t>(input.Byte());
    settings.format = static_cast<overlay::TrackFormat>(choice % 6);
    const std::string file(input.at, input.end);
    overlay::Errors errors;
    overlay::Tracks inOrder(overlay::ParseTracks({{file, "tracks"}}, settings, {}, errors).boxes,
                            settings.maxGap);
    overlay::Tracks jumping = inOrder;
    for (int64_t frame = 0; frame < 40; ++frame) {
        jumping.At(40 - frame);
        CheckFrame(inOrder, frame);
        Require(AreEqual(inOrder.At(frame), jumping.At(frame)));
    }
    if (file.find('\r') == file.npos && settings.maxGap == 0)
        CompareWithStream(file, 1 + choice / 6, settings);
    return 0;
}
