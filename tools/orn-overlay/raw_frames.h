// SPDX-License-Identifier: MIT
// Raw frames from standard input to standard output, one at a time.
#pragma once

#include "options.h"

#include "overlay/frame_memory.h"

#include <cstdint>
#include <orn_min_render.h>
#include <vector>

class RawFrames {
  public:
    explicit RawFrames(const Options &options);

    // The frame that was read last.
    OrnMinRenderImage Image();

    // Reads the next frame. False at the end of the input. Throws tool::Failure, also when the
    // frame is cut short.
    bool Read();

    // Writes the frame. Throws tool::Failure.
    void Write();

    int64_t Count() const { // of frames that were read
        return count;
    }

  private:
    size_t ReadBytes(); // of the next frame; fewer at the end, or with the reason in errno
    bool WriteBytes();  // false with the reason in errno

    overlay::RawLayout input;
    overlay::RawLayout output;
    overlay::FrameMemory frame;
    std::vector<uint8_t>
        rows; // of one frame as in the stream, when its rows lie otherwise in memory
    int64_t count = 0;
};
