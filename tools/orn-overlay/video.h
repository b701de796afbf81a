// SPDX-License-Identifier: MIT
// Overlays in a clip: a film like it, or a picture of some of its frames. All other files of videos
// serve this; where the program is built without FFmpeg's libraries, no_video.cpp stands for them.
#pragma once

#include "options.h"

#include "overlay/engine.h"

// The engine has its script, fonts and tracks, and will be told of the frames. Throws
// tool::Failure.
void DrawVideo(overlay::Engine &engine, const Options &options);

// Reads PNG and JPEG files for the engine; null without FFmpeg's libraries.
overlay::PictureDecoder PictureFileDecoder();
