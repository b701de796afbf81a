// SPDX-License-Identifier: MIT
// A file is decoded as it is, turned into RGBA, and scaled with its colours weighted by how opaque
// they are: what is transparent may have any colour, which must not bleed into what is not.
#include "ffmpeg_pictures.h"

#include "ffmpeg_objects.h"
#include "messages.h"

#include <algorithm>
#include <memory>
#include <new>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
#include <libswscale/swscale.h>
}

namespace overlay {

namespace {

constexpr char kTooMany[] = "more than 8192 x 4320 pixels";
static_assert(kMaxPicturePixels == int64_t{8192} * 4320);

struct SwsDestroyer {
    void operator()(SwsContext *scaler) const {
        sws_freeContext(scaler);
    }
};

struct Size {
    int32_t width;
    int32_t height;
};

template <typename Pointer> Pointer NotNull(Pointer pointer) {
    if (!pointer)
        throw std::bad_alloc();
    return pointer;
}

// Of the two formats, by their first bytes.
AVCodecID CodecOf(std::string_view content) {
    if (content.substr(0, 8) == "\x89PNG\r\n\x1A\n")
        return AV_CODEC_ID_PNG;
    if (content.substr(0, 3) == "\xFF\xD8\xFF")
        return AV_CODEC_ID_MJPEG;
    throw Failure("is neither a PNG nor a JPEG picture");
}

CodecPtr OpenDecoder(std::string_view content) {
    const AVCodec *codec = avcodec_find_decoder(CodecOf(content));
    if (!codec)
        throw Failure("FFmpeg's libraries have no decoder for it");
    CodecPtr decoder = NotNull(CodecPtr(avcodec_alloc_context3(codec)));
    decoder->thread_count = 1;
    decoder->max_pixels = kMaxPicturePixels;
    decoder->err_recognition = AV_EF_CRCCHECK | AV_EF_BITSTREAM | AV_EF_BUFFER | AV_EF_EXPLODE;
    decoder->log_level_offset = AV_LOG_MAX_OFFSET; // the failure says enough
    if (avcodec_open2(decoder.get(), codec, nullptr) < 0)
        throw std::bad_alloc();
    return decoder;
}

FramePtr Decoded(std::string_view content) {
    const CodecPtr decoder = OpenDecoder(content);
    const PacketPtr packet = NotNull(PacketPtr(av_packet_alloc()));
    FramePtr frame = NotNull(FramePtr(av_frame_alloc()));
    if (av_new_packet(packet.get(), static_cast<int>(content.size())) < 0)
        throw std::bad_alloc();
    std::copy(content.begin(), content.end(), packet->data);
    int result = avcodec_send_packet(decoder.get(), packet.get());
    if (result == 0)
        result = avcodec_receive_frame(decoder.get(), frame.get());
    if (result == AVERROR(ENOMEM))
        throw std::bad_alloc();
    if (result < 0)
        throw Failure(std::string("is damaged, or has ") + kTooMany);
    return frame;
}

// A side that isn't given follows from the other one.
Size SizeFor(const AVFrame &frame, Size wanted) {
    const auto sideFor = [](int64_t other, int64_t from, int64_t to) {
        return static_cast<int32_t>(
            std::clamp<int64_t>((2 * other * to + from) / (2 * from), 1, INT32_MAX));
    };
    if (wanted.width == 0 && wanted.height == 0)
        wanted = {frame.width, frame.height};
    else if (wanted.width == 0)
        wanted.width = sideFor(wanted.height, frame.height, frame.width);
    else if (wanted.height == 0)
        wanted.height = sideFor(wanted.width, frame.width, frame.height);
    if (std::max(wanted.width, wanted.height) > kMaxFrameSide ||
        int64_t{wanted.width} * wanted.height > kMaxPicturePixels)
        throw Failure(std::string("would be drawn with ") + kTooMany + ", or " +
                      std::to_string(kMaxFrameSide) + " in a row or column");
    return wanted;
}

// The formats of JPEG under names that tell no range: that of the others is full here as well.
AVPixelFormat FormatOf(const AVFrame &frame) {
    switch (frame.format) {
    case AV_PIX_FMT_YUVJ420P:
        return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P:
        return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ440P:
        return AV_PIX_FMT_YUV440P;
    case AV_PIX_FMT_YUVJ444P:
        return AV_PIX_FMT_YUV444P;
    default:
        return static_cast<AVPixelFormat>(frame.format);
    }
}

// The frame as RGBA of another size.
FramePtr Converted(const AVFrame &frame, Size size) {
    const std::unique_ptr<SwsContext, SwsDestroyer> scaler(NotNull(sws_getContext(
        frame.width, frame.height, FormatOf(frame), size.width, size.height, AV_PIX_FMT_RGBA,
        SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT | SWS_FULL_CHR_H_INP, nullptr, nullptr,
        nullptr)));
    const int *equations = sws_getCoefficients(SWS_CS_ITU601);
    sws_setColorspaceDetails(scaler.get(), equations, 1, equations, 1, 0, 1 << 16, 1 << 16);
    FramePtr converted = NotNull(FramePtr(av_frame_alloc()));
    converted->format = AV_PIX_FMT_RGBA;
    converted->width = size.width;
    converted->height = size.height;
    if (av_frame_get_buffer(converted.get(), 0) < 0)
        throw std::bad_alloc();
    if (sws_scale(scaler.get(), frame.data, frame.linesize, 0, frame.height, converted->data,
                  converted->linesize) != size.height)
        throw std::bad_alloc();
    return converted;
}

template <typename Change> void ForEachPixel(AVFrame &frame, Change change) {
    for (int y = 0; y < frame.height; ++y) {
        uint8_t *pixel = frame.data[0] + ptrdiff_t{y} * frame.linesize[0];
        for (int x = 0; x < frame.width; ++x, pixel += 4)
            change(pixel);
    }
}

void WeightColours(AVFrame &frame) {
    ForEachPixel(frame, [](uint8_t *pixel) {
        for (int i = 0; i < 3; ++i)
            pixel[i] = static_cast<uint8_t>((pixel[i] * pixel[3] + 127) / 255);
    });
}

void UnweightColours(AVFrame &frame) {
    ForEachPixel(frame, [](uint8_t *pixel) {
        for (int i = 0; i < 3 && pixel[3] > 0; ++i)
            pixel[i] = static_cast<uint8_t>(std::min(255, pixel[i] * 255 / pixel[3]));
    });
}

} // namespace

Pixels DecodePicture(std::string_view content, int32_t width, int32_t height) {
    FramePtr frame = Decoded(content);
    const Size size = SizeFor(*frame, {width, height});
    frame = Converted(*frame, {frame->width, frame->height});
    if (size.width != frame->width || size.height != frame->height) {
        WeightColours(*frame);
        frame = Converted(*frame, size);
        UnweightColours(*frame);
    }
    Pixels pixels{size.width, size.height, {}};
    pixels.rgba.reserve(4 * static_cast<size_t>(size.width) * static_cast<size_t>(size.height));
    for (int y = 0; y < size.height; ++y) {
        const uint8_t *row = frame->data[0] + ptrdiff_t{y} * frame->linesize[0];
        pixels.rgba.insert(pixels.rgba.end(), row, row + 4 * ptrdiff_t{size.width});
    }
    return pixels;
}

} // namespace overlay
