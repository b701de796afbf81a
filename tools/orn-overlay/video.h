// SPDX-License-Identifier: MIT
// Overlays in a clip: a film like it, or a picture of some of its frames. All other files of videos
// serve this; where the program is built without FFmpeg's libraries, no_video.cpp stands for them.
#pragma once

#include "options.h"
#include "overlays.h"

// The overlays are loaded, and begin here. Throws tool::Failure.
void DrawVideo(Overlays &overlays, const Options &options);
