// SPDX-License-Identifier: MIT
// Clips and pictures of all formats: frames come in one size, each later than the one before, and
// leave the canvas with the pixels that were shown to be drawn into, which are those that came. The
// first byte is the options.
#include "fence.h"
#include "font_files.h"
#include "input.h"
#include "orn-overlay/video_canvas.h"
#include "orn-overlay/video_fit.h"
#include "overlay/ffmpeg_pictures.h"
#include "overlay/messages.h"

namespace {

// Rows of luma, then rows of U and V in turn.
cbf::Bytes PixelsOf(const AVFrame &frame) {
    const int chromaRows = (frame.height + 1) / 2, columns = (frame.width + 1) / 2;
    cbf::Bytes pixels;
    for (int y = 0; y < frame.height; ++y) {
        const uint8_t *const row = frame.data[0] + ptrdiff_t{y} * frame.linesize[0];
        pixels.insert(pixels.end(), row, row + frame.width);
    }
    const bool planar = frame.format == AV_PIX_FMT_YUV420P;
    for (int y = 0; y < chromaRows; ++y)
        for (int i = 0; i < 2 * columns; ++i) {
            const int plane = planar ? 1 + i % 2 : 1;
            pixels.push_back(frame.data[plane][y * frame.linesize[plane] + (planar ? i / 2 : i)]);
        }
    return pixels;
}

cbf::Bytes PixelsOf(const OrnMinRenderImage &image) {
    AVFrame frame{};
    frame.format = AV_PIX_FMT_NV12;
    frame.width = image.width;
    frame.height = image.height;
    frame.data[0] = image.yPlane;
    frame.data[1] = image.uvPlane;
    frame.linesize[0] = frame.linesize[1] = int(image.stride);
    return PixelsOf(frame);
}

void ReadClip(const Options &options, AVPixelFormat layout) {
    constexpr int kMostFrames = 20;
    Clip clip(options);
    Fitting fitting(clip, options);
    const overlay::FrameShape &shape = fitting.Shape().frames;
    VideoCanvas canvas(shape, layout);
    int64_t end = INT64_MIN; // of the frame before
    for (int number = 0; number < kMostFrames; ++number) {
        std::optional<ClipFrame> read = clip.ReadFrame();
        if (!read)
            break;
        Require(read->number == number && read->pts > end && read->duration > 0, "time goes on");
        end = read->pts;
        FramePtr frame = fitting.Fit(std::move(read->frame));
        Require(frame->width == shape.width && frame->height == shape.height, "one size");
        const cbf::Bytes pixels = PixelsOf(*frame);
        Require(PixelsOf(canvas.Place(std::move(frame))) == pixels, "shown as it came");
        frame = canvas.Take();
        Require(frame->format == layout && PixelsOf(*frame) == pixels, "left as it was");
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    static const bool quiet = (KeepLibraryMessages(), true);
    Input input = {data, data + size};
    const int flags = quiet ? input.Byte() : 0;
    const TempFile file(cbf::Bytes(input.at, input.end));
    Options options;
    options.input = file.path;
    if (flags & 1)
        options.shape = {34, 17, true, {}};
    if (flags & 2)
        options.framesPerSecond = FrameRate{30000, 1001};
    try {
        if (flags & 4)
            overlay::DecodePicture({reinterpret_cast<const char *>(input.at), size - 1}, 9, 0);
        else
            ReadClip(options, flags & 8 ? AV_PIX_FMT_NV12 : AV_PIX_FMT_YUV420P);
    } catch (const tool::Failure &) {
    } catch (const overlay::Failure &) {
    }
    return 0;
}
