// SPDX-License-Identifier: MIT
#include "layer.h"

#include "colour.h"

namespace overlay {

namespace {

// Calls take(overlay) for all; a Failure becomes an error of the overlay's line.
template <typename Take> Errors ForAll(Layer &layer, Take take) {
    Errors errors;
    for (Overlay &overlay : layer.overlays) {
        try {
            take(overlay);
        } catch (const Failure &failure) {
            errors.push_back({layer.file, overlay.line, failure.what()});
        }
    }
    return errors;
}

} // namespace

void MixColours(Overlay &overlay, const ColourSpace &colours) {
    for (Paint &paint : overlay.paints)
        paint.colour = ColourOf(paint.rgb, colours);
    if (overlay.still && overlay.still->Scaled())
        overlay.still->Scaled()->Mix(colours);
}

void Layer::Retime() {
    std::vector<FrameRange> ranges;
    for (const Overlay &overlay : overlays)
        ranges.push_back(overlay.frames);
    timeline = Timeline(std::move(ranges));
}

void Layer::MixColours(const ColourSpace &colours) {
    for (Overlay &overlay : overlays)
        overlay::MixColours(overlay, colours);
}

Errors Layer::OpenPictures(const FrameShape &shape) {
    return ForAll(*this, [&shape](Overlay &overlay) {
        if (overlay.picture)
            overlay.picture->Open(shape.hasChroma);
        if (overlay.still)
            overlay.still->ScaleFor(shape.height);
    });
}

Errors Layer::ChooseFonts(int32_t frameHeight) {
    FontStore loaded;
    return ForAll(*this, [&loaded, frameHeight](Overlay &overlay) {
        if (overlay.fontChoice.FollowsFrames())
            overlay.font =
                loaded.Get(overlay.fontChoice.PathFor(frameHeight), overlay.textStyle.direction);
    });
}

} // namespace overlay
