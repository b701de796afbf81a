// Raw frames: in memory, as the library draws them, and in a stream or file, row after row of luma,
// then row after row of U,V pairs.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <orn_min_render.h>
#include <string>
#include <vector>

enum class Format { YUV420SP, Y8 };

constexpr int32_t kMaxSide = 65535;

struct FrameShape {
    int32_t width = 0; // 0: not known
    int32_t height = 0;
    Format format = Format::YUV420SP;
    int64_t inputStride = 0; // bytes from row to row of both planes; 0: rows without padding
    int64_t outputStride = 0;
};

// How frames of a shape lie. One stride serves both planes in memory, and rows of the input and of
// the output fit into it.
struct FrameLayout {
    explicit FrameLayout(const FrameShape &shape);

    struct Strides {
        size_t luma;
        size_t chroma;
    };

    size_t Bytes(const Strides &strides) const {
        return strides.luma * height + strides.chroma * chromaRows;
    }

    size_t width;
    size_t height;
    size_t chromaRows;
    Strides input;
    Strides output;
    size_t stride;

  private:
    Strides StridesOf(int64_t padded) const;
};

class Frame {
  public:
    explicit Frame(const FrameShape &shape);

    OrnMinRenderImage Image();

    size_t InputBytes() const {
        return layout.Bytes(layout.input);
    }
    size_t OutputBytes() const {
        return layout.Bytes(layout.output);
    }

    // Both return the number of bytes that went through: InputBytes() or OutputBytes(), or less at
    // the end of the file or after an error.
    size_t Read(std::FILE *file);
    size_t Write(std::FILE *file);

  private:
    template <typename Pass> size_t Transfer(const FrameLayout::Strides &strides, Pass pass);

    FrameLayout layout;
    std::vector<uint8_t> memory;
};

// The frames of a file, without padding, from the first one over and over.
class Clip {
  public:
    // Throws Failure, also when the file does not hold whole frames of the shape.
    Clip(const std::string &path, const FrameShape &shape);

    // Frame index modulo their number. Throws Failure when it can't be read any more.
    const OrnMinRenderImage &FrameAt(int64_t index);

  private:
    using File = std::unique_ptr<std::FILE, int (*)(std::FILE *)>;

    std::string path;
    File file;
    int64_t count;
    Frame frame; // allocated when the file is known to hold one
    OrnMinRenderImage image;
    int64_t shown = -1; // the frame in memory
};
