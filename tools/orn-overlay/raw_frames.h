// SPDX-License-Identifier: MIT
// Raw frames from standard input to standard output, one at a time, or with some that wait.
#pragma once

#include "options.h"

#include "overlay/frame_memory.h"

#include <cstdint>
#include <deque>
#include <exception>
#include <orn_min_render.h>
#include <vector>

class RawFrames {
  public:
    explicit RawFrames(const Options &options);

    // Reads until so many frames wait behind the one that is to be drawn next, or the input ends.
    // False when all are written. Throws tool::Failure for what went wrong with the input, once all
    // frames before that are written.
    bool ReadAhead(int64_t behind);

    // The frame to be drawn next.
    OrnMinRenderImage Image();

    // Writes it. Throws tool::Failure.
    void Write();

  private:
    bool Read(overlay::FrameMemory &frame);        // false at the end
    size_t ReadBytes(overlay::FrameMemory &frame); // fewer at the end, or with the reason in errno
    bool WriteBytes(overlay::FrameMemory &frame);  // false with the reason in errno

    overlay::RawLayout input;
    overlay::RawLayout output;
    overlay::FrameShape shape;
    std::deque<overlay::FrameMemory> waiting; // the first is to be drawn next
    std::deque<overlay::FrameMemory> spare;
    std::vector<uint8_t> rows; // of one frame as in the stream, if they lie otherwise in memory
    int64_t count = 0;         // of frames that were read
    bool ended = false;
    std::exception_ptr failure; // of the input
};
