// SPDX-License-Identifier: MIT
// Caps as the engine of overlays understands them.
#pragma once

#include "overlay/frame.h"

#include <gst/video/video.h>

// The layouts that we can draw into; any other is for videoconvert.
#define ORN_VIDEO_CAPS                                                                             \
    "video/x-raw, format = (string) { NV12, NV21, I420, YV12, GRAY8 }, "                           \
    "width = (int) [ 1, 65535 ], height = (int) [ 1, 65535 ], "                                    \
    "framerate = (fraction) [ 0, max ]"

overlay::FrameShape ShapeOf(const GstVideoInfo &info);
