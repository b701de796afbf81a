// SPDX-License-Identifier: MIT
// Time stamps pass in the clip's own time base, which encoders carry through; the few that count
// frames at a fixed rate get numbers instead, and their packets get the time stamps back.
#include "video_encoder.h"

#include "common/text.h"

#include <algorithm>
#include <cstring>

extern "C" {
#include <libavutil/avstring.h>
}

namespace {

constexpr AVRational kUsualRate = {25, 1};

AVCodecID CodecFor(const AVOutputFormat &container) {
    const bool takesH264 = avformat_query_codec(&container, AV_CODEC_ID_H264, 0) == 1 ||
                           std::strcmp(container.name, "mpegts") == 0; // which doesn't tell
    return takesH264 ? AV_CODEC_ID_H264 : container.video_codec;
}

const AVCodec *UsualEncoder(const AVOutputFormat &container) {
    const AVCodecID id = CodecFor(container);
    const AVCodec *usual = avcodec_find_encoder_by_name("libx264");
    return id == AV_CODEC_ID_H264 && usual ? usual : avcodec_find_encoder(id);
}

// By its own name, or by that of its codec.
const AVCodec *EncoderNamed(const std::string &name) {
    const AVCodec *encoder = avcodec_find_encoder_by_name(name.c_str());
    const AVCodecDescriptor *codec = avcodec_descriptor_get_by_name(name.c_str());
    return encoder || !codec ? encoder : avcodec_find_encoder(codec->id);
}

bool Takes(const AVCodec &encoder, AVPixelFormat wanted) {
    for (const AVPixelFormat *one = encoder.pix_fmts; one && *one != AV_PIX_FMT_NONE; ++one)
        if (*one == wanted)
            return true;
    return !encoder.pix_fmts;
}

} // namespace

Encoder::Encoder(const AVOutputFormat &forContainer, const std::string &subject,
                 const std::string &wanted, AvOptions &options, const Clip &clip,
                 const FilmShape &shape)
    : container(forContainer) {
    Choose(subject, wanted);
    CheckSize(shape.frames.width, shape.frames.height);
    ChooseLayout(shape);
    ChooseTimeBase(clip);
    Open(shape, options);
}

void Encoder::Choose(const std::string &subject, const std::string &wanted) {
    codec = wanted.empty() ? UsualEncoder(container) : EncoderNamed(wanted);
    if (!codec || codec->type != AVMEDIA_TYPE_VIDEO)
        throw tool::Failure(tool::kBadUsage,
                            wanted.empty()
                                ? subject + ": FFmpeg has no encoder for its container"
                                : "--encoder: FFmpeg has no video encoder '" + wanted + "'");
    if (!wanted.empty() && avformat_query_codec(&container, codec->id, 0) == 0)
        throw tool::Failure(tool::kBadUsage,
                            subject + ": its container can't hold what " + wanted + " makes");
    name = subject + ": " + codec->name;
}

// These two count in steps of two pixels, and some encoders would just cut the film.
void Encoder::CheckSize(int width, int height) const {
    const bool isEven = (width | height) % 2 == 0;
    if (!isEven && (codec->id == AV_CODEC_ID_H264 || codec->id == AV_CODEC_ID_HEVC))
        throw tool::Failure(tool::kBadData,
                            name + tool::Format(" takes no odd size such as %d x %d; --encoder "
                                                "ffv1 does, and --size changes it",
                                                width, height));
}

// Full range has a name of its own with some encoders.
void Encoder::ChooseLayout(const FilmShape &shape) {
    layout = marked = AV_PIX_FMT_YUV420P;
    if (std::strcmp(container.name, "yuv4mpegpipe") != 0 && Takes(*codec, AV_PIX_FMT_NV12))
        layout = marked = AV_PIX_FMT_NV12;
    else if (Takes(*codec, AV_PIX_FMT_YUVJ420P) && shape.range == AVCOL_RANGE_JPEG)
        marked = AV_PIX_FMT_YUVJ420P;
    else if (!Takes(*codec, AV_PIX_FMT_YUV420P))
        throw tool::Failure(tool::kBadUsage,
                            name + " takes no frames of 8-bit YUV 4:2:0; another --encoder does");
}

// Even: containers that know a rate and no time stamps.
void Encoder::ChooseTimeBase(const Clip &clip) {
    clipBase = clip.TimeBase();
    rate = clip.Rate().num > 0 ? clip.Rate() : kUsualRate;
    const bool isEven =
        (container.flags & AVFMT_NOTIMESTAMPS) || av_match_name(container.name, "avi,yuv4mpegpipe");
    counts = !isEven && (codec->supported_framerates ||
                         (codec->id == AV_CODEC_ID_MPEG4 && clipBase.den > UINT16_MAX));
    ownBase = isEven || counts ? av_inv_q(rate) : clipBase;
}

void Encoder::Open(const FilmShape &shape, AvOptions &options) {
    context = NotNull(CodecPtr(avcodec_alloc_context3(codec)));
    context->width = shape.frames.width;
    context->height = shape.frames.height;
    context->pix_fmt = marked;
    context->time_base = ownBase;
    context->framerate = rate;
    context->sample_aspect_ratio = shape.pixelAspect;
    context->color_range = shape.range;
    context->colorspace = shape.matrix;
    context->color_primaries = shape.primaries;
    context->color_trc = shape.transfer;
    context->chroma_sample_location = shape.chromaPlace;
    context->thread_count = 0; // as many as there are processors
    if (container.flags & AVFMT_GLOBALHEADER)
        context->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (counts) // packets come in the order of the frames, so that time stamps can be put back
        options.Set("bf", "0");
    AvChecked(avcodec_open2(context.get(), codec, options.Address()), name);
}

void Encoder::Give(FramePtr frame, int64_t pts, int64_t duration) {
    if (frame) {
        const int64_t own = av_rescale_q(pts, clipBase, ownBase);
        lastPts = counts ? frames : std::max(own, lastPts + 1);
        if (counts)
            inside[lastPts] = {pts, duration};
        else
            inside[lastPts] = {lastPts, av_rescale_q(duration, clipBase, ownBase)};
        ++frames;
        frame->pts = lastPts;
        frame->format = marked;
        frame->pict_type = AV_PICTURE_TYPE_NONE; // the encoder chooses
        av_frame_remove_side_data(frame.get(), AV_FRAME_DATA_DISPLAYMATRIX);
    }
    AvChecked(avcodec_send_frame(context.get(), frame.get()), name);
}

PacketPtr Encoder::Take() {
    PacketPtr packet = NewPacket();
    const int result = avcodec_receive_packet(context.get(), packet.get());
    if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
        return nullptr;
    AvChecked(result, name);
    Restamp(*packet);
    return packet;
}

void Encoder::Restamp(AVPacket &packet) {
    const auto found = inside.find(packet.pts);
    if (found == inside.end())
        return;
    packet.duration = found->second.duration;
    packet.pts = found->second.pts;
    if (counts)
        packet.dts = packet.pts;
    inside.erase(found);
}
