// SPDX-License-Identifier: MIT
// Overlays that come together, as a script or one by one under names, and what they need to know of
// the frames.
#pragma once

#include "messages.h"
#include "overlay.h"
#include "timeline.h"

namespace overlay {

// Gives an overlay its colours as frames hold them.
void MixColours(Overlay &overlay, const ColourSpace &colours);

struct Layer {
    std::string file; // for messages
    std::vector<Overlay> overlays;
    Timeline timeline; // of the overlays

    // To be called when the list has changed.
    void Retime();

    // Take what frames are like. What they return tells of what can't be drawn in such frames.
    void MixColours(const ColourSpace &colours);
    Errors OpenPictures(const FrameShape &shape);
    Errors ChooseFonts(int32_t frameHeight);
};

} // namespace overlay
