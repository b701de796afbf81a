// SPDX-License-Identifier: MIT
// Numbers of frames, as scripts and tracks count them.
#pragma once

#include <cstdint>
#include <gst/video/video.h>

class FrameNumbers {
  public:
    // The next frame is number 0.
    void Restart();

    // The number of the next frame. Where its time stamp shows that frames of a constant rate are
    // missing before it, these have numbers, too.
    int64_t Next(GstClockTime timeStamp, const GstVideoInfo &info);

  private:
    int64_t next = 0;
    GstClockTime last = GST_CLOCK_TIME_NONE; // time stamp of the frame before
};
