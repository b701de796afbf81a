#include "overlay_frame.h"

#include "overlay_words.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sys/stat.h>

namespace {

// How many frames a file holds. Throws Failure unless they are whole ones, and one at least.
int64_t CountFrames(std::FILE *file, const std::string &path, const FrameShape &shape) {
    struct stat status {};
    if (!file || fstat(fileno(file), &status) != 0)
        throw FileFailure(path);
    const auto bytes = static_cast<size_t>(S_ISREG(status.st_mode) ? status.st_size : 0);
    const FrameLayout layout(shape);
    const size_t frameBytes = layout.Bytes(layout.input);
    if (bytes == 0 || bytes % frameBytes != 0)
        throw Failure(path + ": its " + std::to_string(bytes) + " bytes are no whole frames of " +
                      std::to_string(frameBytes));
    return static_cast<int64_t>(bytes / frameBytes);
}

} // namespace

FrameLayout::FrameLayout(const FrameShape &shape)
    : width(static_cast<size_t>(shape.width)), height(static_cast<size_t>(shape.height)),
      chromaRows(shape.format == Format::YUV420SP ? (height + 1) / 2 : 0),
      input(StridesOf(shape.inputStride)), output(StridesOf(shape.outputStride)),
      stride(std::max({input.luma, input.chroma, output.luma, output.chroma})) {
}

// Without padding, luma rows of odd width are a byte shorter than those of the chroma plane.
FrameLayout::Strides FrameLayout::StridesOf(int64_t padded) const {
    if (padded > 0)
        return {static_cast<size_t>(padded), static_cast<size_t>(padded)};
    return {width, chromaRows > 0 ? (width + 1) / 2 * 2 : width};
}

Frame::Frame(const FrameShape &shape)
    : layout(shape), memory(layout.stride * (layout.height + layout.chromaRows)) {
}

OrnMinRenderImage Frame::Image() {
    OrnMinRenderImage image{};
    image.width = static_cast<int32_t>(layout.width);
    image.height = static_cast<int32_t>(layout.height);
    image.stride = static_cast<int64_t>(layout.stride);
    image.yPlane = memory.data();
    image.uvPlane = layout.chromaRows > 0 ? memory.data() + layout.stride * layout.height : nullptr;
    return image;
}

// Passes the runs of bytes that are contiguous in memory and stream alike, until one falls short.
template <typename Pass> size_t Frame::Transfer(const FrameLayout::Strides &strides, Pass pass) {
    if (strides.luma == layout.stride && strides.chroma == layout.stride)
        return pass(memory.data(), memory.size());
    size_t total = 0;
    for (size_t y = 0; y < layout.height + layout.chromaRows; ++y) {
        const size_t length = y < layout.height ? strides.luma : strides.chroma;
        const size_t count = pass(memory.data() + y * layout.stride, length);
        total += count;
        if (count < length)
            break;
    }
    return total;
}

size_t Frame::Read(std::FILE *file) {
    return Transfer(layout.input, [file](uint8_t *bytes, size_t count) {
        return std::fread(bytes, 1, count, file);
    });
}

size_t Frame::Write(std::FILE *file) {
    return Transfer(layout.output, [file](const uint8_t *bytes, size_t count) {
        return std::fwrite(bytes, 1, count, file);
    });
}

Clip::Clip(const std::string &name, const FrameShape &shape)
    : path(name), file(std::fopen(name.c_str(), "rb"), std::fclose),
      count(CountFrames(file.get(), name, shape)), frame(shape), image(frame.Image()) {
}

const OrnMinRenderImage &Clip::FrameAt(int64_t index) {
    index %= count;
    if (index == shown)
        return image;
    const auto offset = static_cast<off_t>(index) * static_cast<off_t>(frame.InputBytes());
    errno = 0;                                 // stays so at the end of the file
    const bool following = index == shown + 1; // seeking would drop what was read ahead
    if ((!following && fseeko(file.get(), offset, SEEK_SET) != 0) ||
        frame.Read(file.get()) < frame.InputBytes())
        throw Failure(path + ": " + (errno != 0 ? std::strerror(errno) : "it has become shorter"));
    shown = index;
    return image;
}
