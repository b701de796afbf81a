// SPDX-License-Identifier: MIT
// Padding of the input stays in memory with its frame, so that it passes to an output of the same
// stride.
#include "raw_frames.h"

#include "common/failure.h"
#include "common/streams.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

#include <unistd.h>

RawFrames::RawFrames(const Options &options)
    : input(options.shape, options.inputStride),
      output(options.shape, options.outputStride.value_or(options.inputStride)),
      shape(options.shape) {
    spare.emplace_back(shape, input, output);
    const size_t bytes = std::max(input.Bytes(), output.Bytes());
    rows.resize(spare[0].HasLayout(input) && spare[0].HasLayout(output) ? 0 : bytes);
}

bool RawFrames::ReadAhead(int64_t behind) {
    try {
        while (!ended && static_cast<int64_t>(waiting.size()) <= behind) {
            if (spare.empty())
                spare.emplace_back(shape, input, output);
            ended = !Read(spare.front());
            if (ended)
                break;
            waiting.push_back(std::move(spare.front()));
            spare.pop_front();
        }
    } catch (...) {
        failure = std::current_exception();
        ended = true;
    }
    if (waiting.empty() && failure)
        std::rethrow_exception(failure);
    return !waiting.empty();
}

OrnMinRenderImage RawFrames::Image() {
    return waiting.front().Image();
}

size_t RawFrames::ReadBytes(overlay::FrameMemory &frame) {
    const auto read = [](uint8_t *bytes, size_t size) {
        return tool::ReadFully(STDIN_FILENO, bytes, size);
    };
    if (frame.HasLayout(input))
        return frame.Transfer(input, read);
    const size_t bytes = read(rows.data(), input.Bytes());
    const uint8_t *next = rows.data();
    frame.Transfer(input, [&next](uint8_t *row, size_t size) {
        std::memcpy(row, next, size);
        next += size;
        return size;
    });
    return bytes;
}

bool RawFrames::Read(overlay::FrameMemory &frame) {
    const size_t bytes = ReadBytes(frame);
    if (bytes < input.Bytes() && errno)
        throw tool::SystemFailure("standard input");
    if (bytes > 0 && bytes < input.Bytes())
        throw tool::Failure(tool::kBadData, "standard input: frame " + std::to_string(count) +
                                                " is cut short: " + std::to_string(bytes) + " of " +
                                                std::to_string(input.Bytes()) +
                                                " bytes; are size and format right?");
    count += bytes > 0;
    return bytes > 0;
}

bool RawFrames::WriteBytes(overlay::FrameMemory &frame) {
    const auto write = [](const uint8_t *bytes, size_t size) {
        return tool::WriteFully(STDOUT_FILENO, bytes, size) ? size : 0;
    };
    if (frame.HasLayout(output))
        return frame.Transfer(output, write) == output.Bytes();
    uint8_t *next = rows.data();
    frame.Transfer(output, [&next](const uint8_t *row, size_t size) {
        std::memcpy(next, row, size);
        next += size;
        return size;
    });
    return write(rows.data(), output.Bytes()) == output.Bytes();
}

// What is written is not held back, so that a reader sees the frame before the next one has come.
void RawFrames::Write() {
    if (!WriteBytes(waiting.front()))
        throw tool::SystemFailure("standard output");
    spare.push_back(std::move(waiting.front()));
    waiting.pop_front();
}
