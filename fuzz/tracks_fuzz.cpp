// SPDX-License-Identifier: MIT
// Tables of tracks: the first two bytes are the settings. Boxes don't depend on the order in which
// frames are asked for, and trails reach no further back than they are asked to.
#include "input.h"
#include "overlay/tracks_csv.h"

#include <cstdlib>
#include <cstring>

static void Require(bool holds) {
    if (!holds)
        abort();
}

static void CompareBoxes(overlay::Tracks &one, overlay::Tracks &other, int64_t frame) {
    const auto &boxes = one.At(frame);
    Require(boxes.size() == other.At(frame).size());
    for (size_t i = 0; i < boxes.size(); ++i) {
        Require(std::memcmp(&boxes[i], &other.At(frame)[i], sizeof boxes[i]) == 0);
        Require(boxes[i].frame == frame && (i == 0 || boxes[i - 1].id <= boxes[i].id));
        const OrnMinRenderRect rect = overlay::RectOf(boxes[i]);
        Require(rect.left <= rect.right && rect.top <= rect.bottom); // and no NaN
        Require(one.Trail(boxes[i], 9).size() <= 10);
    }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    Input input{data, data + size};
    const overlay::TrackSettings settings{input.Byte() % 4, input.Byte() % 32};
    const std::string table(input.at, input.end);
    overlay::Errors errors;
    overlay::Tracks inOrder = overlay::ParseTracks(table, "tracks", settings, {}, errors);
    overlay::Tracks jumping = inOrder;
    for (int64_t frame = 0; frame < 40; ++frame) {
        jumping.At(40 - frame);
        CompareBoxes(inOrder, jumping, frame);
    }
    return 0;
}
