// SPDX-License-Identifier: MIT
// What comes before every drawing function: places become pixels, ids become colours.
#include "canvas.h"

namespace overlay {

namespace {

// False when a place counts from what is not there.
bool ResolvePlaces(Canvas &canvas, const Overlay &overlay) {
    PlaceResolver resolver(canvas.surroundings);
    canvas.coordinates.clear();
    for (const Place &place : overlay.places) {
        const std::optional<int32_t> value = resolver.Resolve(place);
        if (!value)
            return false;
        canvas.coordinates.push_back(*value);
    }
    return true;
}

template <typename Boxes>
void DrawForBoxes(Canvas &canvas, const Overlay &overlay, const Boxes &boxes) {
    for (const TrackedBox &box : boxes) {
        if (!MeetsAll(overlay.conditions, box))
            continue;
        canvas.box = &box;
        canvas.surroundings.box = RectOf(box);
        if (ResolvePlaces(canvas, overlay))
            overlay.draw(canvas, overlay);
    }
}

} // namespace

void NoteGaps(Canvas &canvas, const Overlay &overlay, const std::string &text) {
    const std::string gaps = canvas.gaps.NewIn(canvas.context, overlay.font, overlay.line, text);
    if (!gaps.empty())
        canvas.notes.Add("", overlay.line, gaps);
}

OrnMinRenderColour ColourFor(const Canvas &canvas, const Paint &paint) {
    if (paint.own == Own::Nothing)
        return paint.colour;
    if (paint.own == Own::Class)
        return canvas
            .palette[canvas.classColours.Of(canvas.box->className) % canvas.palette.size()];
    const auto count = static_cast<int64_t>(canvas.palette.size());
    // The first id takes the first colour.
    return canvas.palette[static_cast<size_t>((canvas.box->id % count + count - 1) % count)];
}

void DrawOverlay(Canvas &canvas, const Overlay &overlay) {
    if (!overlay.perBox) {
        canvas.box = nullptr;
        if (ResolvePlaces(canvas, overlay))
            overlay.draw(canvas, overlay);
        return;
    }
    canvas.boxIsLive = false;
    DrawForBoxes(canvas, overlay, canvas.tracks.At(canvas.frameNumber));
    canvas.boxIsLive = true;
    DrawForBoxes(canvas, overlay, canvas.live.At(canvas.frameNumber));
}

} // namespace overlay
