// SPDX-License-Identifier: MIT
// Padding of the input stays in memory with its frame, so that it passes to an output of the same
// stride.
#include "raw_frames.h"

#include "common/failure.h"

#include <cstdio>
#include <string>

namespace {

constexpr size_t kStreamBuffer = size_t{1} << 20;

} // namespace

RawFrames::RawFrames(const Options &options)
    : input(options.shape, options.inputStride),
      output(options.shape, options.outputStride.value_or(options.inputStride)),
      frame(options.shape, input, output) {
    for (std::FILE *stream : {stdin, stdout})
        std::setvbuf(stream, nullptr, _IOFBF, kStreamBuffer);
}

OrnMinRenderImage RawFrames::Image() {
    return frame.Image();
}

bool RawFrames::Read() {
    const size_t bytes = frame.Transfer(
        input, [](uint8_t *row, size_t rowBytes) { return std::fread(row, 1, rowBytes, stdin); });
    if (std::ferror(stdin))
        throw tool::SystemFailure("standard input");
    if (bytes > 0 && bytes < input.Bytes())
        throw tool::Failure(tool::kBadData, "standard input: frame " + std::to_string(count) +
                                                " is cut short: " + std::to_string(bytes) + " of " +
                                                std::to_string(input.Bytes()) +
                                                " bytes; are size and format right?");
    count += bytes > 0;
    return bytes > 0;
}

// Flushed, so that a reader sees the frame before the next one has come.
void RawFrames::Write() {
    const size_t bytes = frame.Transfer(output, [](const uint8_t *row, size_t rowBytes) {
        return std::fwrite(row, 1, rowBytes, stdout);
    });
    if (bytes < output.Bytes() || std::fflush(stdout) != 0)
        throw tool::SystemFailure("standard output");
}
