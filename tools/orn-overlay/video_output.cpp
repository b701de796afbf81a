// SPDX-License-Identifier: MIT
// Time stamps pass in the clip's own time base, which encoders carry through; the few that count
// frames at a fixed rate get numbers instead, and their packets get the time stamps back.
#include "video_output.h"

#include "common/streams.h"
#include "common/text.h"

#include <algorithm>
#include <cstring>

extern "C" {
#include <libavutil/avstring.h>
#include <libavutil/opt.h>
}

namespace {

constexpr AVRational kUsualRate = {25, 1};
constexpr AVRational kMicroseconds = {1, AV_TIME_BASE};

bool IsA(const AVFormatContext &film, const char *names) {
    return av_match_name(film.oformat->name, names) != 0;
}

const AVOutputFormat *ContainerOf(const FilmTarget &target) {
    if (target.name == "/dev/null")
        return av_guess_format("null", nullptr, nullptr);
    const bool isPipe = target.address == "pipe:1";
    const AVOutputFormat *container = av_guess_format(
        isPipe ? "yuv4mpegpipe" : nullptr, isPipe ? nullptr : target.name.c_str(), nullptr);
    if (!container)
        throw tool::Failure(tool::kBadUsage,
                            target.name +
                                ": its name should end as a video's does: .mp4, .mkv ...");
    if (container->flags & AVFMT_NOFILE)
        throw tool::Failure(tool::kBadUsage,
                            target.name + ": isn't a video by its name; pictures need --frame or "
                                          "--sheet, and a name that ends in .png");
    return container;
}

AVCodecID CodecFor(const AVOutputFormat &container) {
    const bool takesH264 = avformat_query_codec(&container, AV_CODEC_ID_H264, 0) == 1 ||
                           std::strcmp(container.name, "mpegts") == 0; // which doesn't tell
    return takesH264 ? AV_CODEC_ID_H264 : container.video_codec;
}

bool Takes(const AVCodec &encoder, AVPixelFormat wanted) {
    for (const AVPixelFormat *one = encoder.pix_fmts; one && *one != AV_PIX_FMT_NONE; ++one)
        if (*one == wanted)
            return true;
    return !encoder.pix_fmts;
}

// Of what hardly tells, the kinds of streams that it has a usual codec for.
bool CanHold(const AVFormatContext &film, const AVCodecParameters &stream) {
    const int answer = avformat_query_codec(film.oformat, stream.codec_id, 0);
    if (stream.codec_type == AVMEDIA_TYPE_ATTACHMENT)
        return std::strcmp(film.oformat->name, "matroska") == 0;
    if (answer >= 0)
        return answer > 0;
    switch (stream.codec_type) {
    case AVMEDIA_TYPE_AUDIO:
        return film.oformat->audio_codec != AV_CODEC_ID_NONE;
    case AVMEDIA_TYPE_SUBTITLE:
        return film.oformat->subtitle_codec != AV_CODEC_ID_NONE;
    default:
        return IsA(film, "mpegts");
    }
}

int64_t Bounded(int64_t time) {
    constexpr int64_t kMost = int64_t{1} << 60;
    return std::clamp(time, -kMost, kMost);
}

const char *KindOf(const AVCodecParameters &stream) {
    const char *kind = av_get_media_type_string(stream.codec_type);
    return kind ? kind : "unknown";
}

// The old tag, where the new container gives it the same meaning.
uint32_t TagFor(const AVFormatContext &film, const AVCodecParameters &stream) {
    const AVCodecTag *const *tags = film.oformat->codec_tag;
    const bool keeps = !tags || av_codec_get_id(tags, stream.codec_tag) == stream.codec_id ||
                       av_codec_get_tag(tags, stream.codec_id) == 0;
    return keeps ? stream.codec_tag : 0;
}

void CopySideData(const AVStream &from, AVStream &to, AVPacketSideDataType except) {
    for (int i = 0; i < from.nb_side_data; ++i) {
        const AVPacketSideData &data = from.side_data[i];
        if (data.type == except)
            continue;
        std::memcpy(NotNull(av_stream_new_side_data(&to, data.type, data.size)), data.data,
                    data.size);
    }
}

void CopyMetadata(const AVDictionary *from, AVDictionary **to, std::vector<const char *> except) {
    av_dict_copy(to, from, 0);
    for (const char *key : except)
        av_dict_set(to, key, nullptr, 0);
}

} // namespace

void FilmDestroyer::operator()(AVFormatContext *film) const {
    if (!(film->oformat->flags & AVFMT_NOFILE))
        avio_closep(&film->pb);
    avformat_free_context(film);
}

Film::Film(Clip &clip, const FilmShape &shape, const FilmTarget &to) : target(to) {
    AVFormatContext *opened = nullptr;
    avformat_alloc_output_context2(&opened, ContainerOf(target), nullptr, target.address.c_str());
    format.reset(NotNull(opened));
    ChooseEncoder(target.encoder);
    ChooseLayout(shape);
    CheckSize(shape.frames.width, shape.frames.height);
    ChooseTimeBase(clip);
    AvOptions options;
    if (av_dict_parse_string(options.Address(), target.options.c_str(), "=", ":", 0) < 0)
        throw tool::Failure(tool::kBadUsage,
                            "--encoder-options: expected NAME=VALUE:NAME=VALUE..., "
                            "not '" +
                                target.options + "'");
    OpenEncoder(shape, options);
    AddStreams(clip);
    Begin(options);
}

void Film::ChooseEncoder(const std::string &name) {
    const AVCodecDescriptor *codecOfName = avcodec_descriptor_get_by_name(name.c_str());
    if (name.empty()) {
        const AVCodecID id = CodecFor(*format->oformat);
        const AVCodec *usual = avcodec_find_encoder_by_name("libx264");
        encoder = id == AV_CODEC_ID_H264 && usual ? usual : avcodec_find_encoder(id);
    } else {
        encoder = avcodec_find_encoder_by_name(name.c_str());
        if (!encoder && codecOfName)
            encoder = avcodec_find_encoder(codecOfName->id);
    }
    if (!encoder || encoder->type != AVMEDIA_TYPE_VIDEO)
        throw tool::Failure(tool::kBadUsage,
                            name.empty() ? target.name + ": FFmpeg has no encoder for its container"
                                         : "--encoder: FFmpeg has no video encoder '" + name + "'");
    if (!name.empty() && avformat_query_codec(format->oformat, encoder->id, 0) == 0)
        throw tool::Failure(tool::kBadUsage,
                            target.name + ": its container can't hold what " + name + " makes");
}

// Full range has a name of its own with some encoders.
void Film::ChooseLayout(const FilmShape &shape) {
    layout = AV_PIX_FMT_YUV420P;
    marked = layout;
    if (!IsA(*format, "yuv4mpegpipe") && Takes(*encoder, AV_PIX_FMT_NV12))
        layout = marked = AV_PIX_FMT_NV12;
    else if (Takes(*encoder, AV_PIX_FMT_YUVJ420P) && shape.range == AVCOL_RANGE_JPEG)
        marked = AV_PIX_FMT_YUVJ420P;
    else if (!Takes(*encoder, AV_PIX_FMT_YUV420P))
        throw tool::Failure(tool::kBadUsage,
                            encoder->name + std::string(": takes no frames of 8-bit YUV 4:2:0; "
                                                        "another --encoder does"));
}

// Even: containers and codecs that know a rate and no time stamps.
void Film::ChooseTimeBase(const Clip &clip) {
    clipBase = clip.TimeBase();
    rate = clip.Rate().num > 0 ? clip.Rate() : kUsualRate;
    const bool isEven =
        (format->oformat->flags & AVFMT_NOTIMESTAMPS) || IsA(*format, "avi,yuv4mpegpipe");
    const bool countsFrames = encoder->supported_framerates ||
                              (encoder->id == AV_CODEC_ID_MPEG4 && clipBase.den > UINT16_MAX);
    counts = countsFrames && !isEven;
    encoderBase = isEven || counts ? av_inv_q(rate) : clipBase;
    const int64_t start = clip.Format().start_time;
    constexpr int64_t kFarAway = int64_t{10} * AV_TIME_BASE;
    if ((clip.Format().iformat->flags & AVFMT_TS_DISCONT) && !IsA(*format, "mpegts,mpeg") &&
        start != AV_NOPTS_VALUE && start > kFarAway)
        shift = start;
}

// These two count in steps of two pixels, and some encoders would just cut the film.
void Film::CheckSize(int width, int height) const {
    const bool isEven = (width | height) % 2 == 0;
    if (!isEven && (encoder->id == AV_CODEC_ID_H264 || encoder->id == AV_CODEC_ID_HEVC))
        throw tool::Failure(tool::kBadData,
                            target.name + tool::Format(": %s takes no odd size such as %d x %d; "
                                                       "--encoder ffv1 does, and --size changes it",
                                                       encoder->name, width, height));
}

void Film::OpenEncoder(const FilmShape &shape, AvOptions &options) {
    codec = NotNull(CodecPtr(avcodec_alloc_context3(encoder)));
    codec->width = shape.frames.width;
    codec->height = shape.frames.height;
    codec->pix_fmt = marked;
    codec->time_base = encoderBase;
    codec->framerate = rate;
    codec->sample_aspect_ratio = shape.pixelAspect;
    codec->color_range = shape.range;
    codec->colorspace = shape.matrix;
    codec->color_primaries = shape.primaries;
    codec->color_trc = shape.transfer;
    codec->chroma_sample_location = shape.chromaPlace;
    codec->thread_count = 0; // as many as there are processors
    if (format->oformat->flags & AVFMT_GLOBALHEADER)
        codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if (counts) // packets come in the order of the frames, so that time stamps can be put back
        options.Set("bf", "0");
    AvChecked(avcodec_open2(codec.get(), encoder, options.Address()),
              target.name + ": " + encoder->name);
}

void Film::AddStreams(Clip &clip) {
    const AVFormatContext &from = clip.Format();
    for (unsigned i = 0; i < from.nb_streams; ++i) {
        places.push_back(static_cast<int>(tracks.size()));
        if (from.streams[i] == &clip.Video()) {
            AddVideo(clip.Video());
        } else if (!AddCopy(*from.streams[i])) {
            places.back() = -1;
            clip.Drop(i);
        }
    }
    CopyMetadata(from.metadata, &format->metadata,
                 {"major_brand", "minor_version", "compatible_brands", "encoder"});
    CopyChapters(from);
}

void Film::AddVideo(const AVStream &source) {
    AVStream &stream = *NotNull(avformat_new_stream(format.get(), nullptr));
    AvChecked(avcodec_parameters_from_context(stream.codecpar, codec.get()), target.name);
    stream.time_base = counts ? clipBase : encoderBase;
    stream.avg_frame_rate = rate;
    stream.sample_aspect_ratio = codec->sample_aspect_ratio;
    stream.disposition = source.disposition;
    CopyMetadata(source.metadata, &stream.metadata, {"rotate", "encoder"});
    CopySideData(source, stream, AV_PKT_DATA_DISPLAYMATRIX); // frames are upright now
    videoTrack = tracks.size();
    tracks.push_back({stream.time_base});
}

bool Film::AddCopy(const AVStream &source) {
    const AVCodecParameters &known = *source.codecpar;
    if (!CanHold(*format, known)) {
        if (!IsA(*format, "null"))
            tool::Say(
                kProgram,
                tool::Format("note: stream %d of the clip (%s, %s) is left out: %s can't hold it",
                             source.index, KindOf(known), avcodec_get_name(known.codec_id),
                             format->oformat->name));
        return false;
    }
    AVStream &stream = *NotNull(avformat_new_stream(format.get(), nullptr));
    AvChecked(avcodec_parameters_copy(stream.codecpar, &known), target.name);
    stream.codecpar->codec_tag = TagFor(*format, known);
    stream.time_base = source.time_base;
    stream.avg_frame_rate = source.avg_frame_rate;
    stream.sample_aspect_ratio = source.sample_aspect_ratio;
    stream.disposition = source.disposition;
    CopyMetadata(source.metadata, &stream.metadata, {});
    CopySideData(source, stream, AV_PKT_DATA_NB);
    tracks.push_back({source.time_base});
    return true;
}

// The film owns its chapters, as the library allocates them.
void Film::CopyChapters(const AVFormatContext &source) {
    if (source.nb_chapters == 0)
        return;
    format->chapters =
        static_cast<AVChapter **>(NotNull(av_calloc(source.nb_chapters, sizeof *format->chapters)));
    for (; format->nb_chapters < source.nb_chapters; ++format->nb_chapters) {
        const AVChapter &old = *source.chapters[format->nb_chapters];
        auto *chapter = static_cast<AVChapter *>(NotNull(av_mallocz(sizeof(AVChapter))));
        format->chapters[format->nb_chapters] = chapter;
        const int64_t early = av_rescale_q(shift, kMicroseconds, old.time_base);
        chapter->id = old.id;
        chapter->time_base = old.time_base;
        chapter->start = old.start - early;
        chapter->end = old.end - early;
        av_dict_copy(&chapter->metadata, old.metadata, 0);
    }
}

void Film::Begin(AvOptions &options) {
    // Frames that are large should not wait long for packets of streams that hardly have any.
    const AVCodecDescriptor *kind = avcodec_descriptor_get(encoder->id);
    if (kind && (kind->props & AV_CODEC_PROP_INTRA_ONLY))
        format->max_interleave_delta = AV_TIME_BASE / 2;
    if (IsA(*format, "matroska")) // holds the small negative times at which sound may begin
        format->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;
    av_opt_set_int(format.get(), "mpegts_copyts", 1, AV_OPT_SEARCH_CHILDREN); // where it exists
    if (!(format->oformat->flags & AVFMT_NOFILE))
        AvChecked(avio_open(&format->pb, target.address.c_str(), AVIO_FLAG_WRITE), target.name);
    AvChecked(avformat_write_header(format.get(), options.Address()), target.name);
    const AVDictionaryEntry *unknown =
        av_dict_get(*options.Address(), "", nullptr, AV_DICT_IGNORE_SUFFIX);
    if (unknown)
        throw tool::Failure(tool::kBadUsage, std::string("--encoder-options: neither ") +
                                                 encoder->name + " nor the container knows '" +
                                                 unknown->key + "'");
}

void Film::WriteFrame(FramePtr frame, int64_t pts, int64_t duration) {
    const int64_t own = av_rescale_q(pts, clipBase, encoderBase);
    const int64_t next = counts ? frames : std::max(own, lastPts + 1);
    inside[next] = {counts ? pts : next,
                    counts ? duration : av_rescale_q(duration, clipBase, encoderBase)};
    lastPts = next;
    ++frames;
    frame->pts = next;
    frame->format = marked;
    frame->pict_type = AV_PICTURE_TYPE_NONE; // the encoder chooses
    av_frame_remove_side_data(frame.get(), AV_FRAME_DATA_DISPLAYMATRIX);
    Encode(frame.get());
}

void Film::Encode(const AVFrame *frame) {
    AvChecked(avcodec_send_frame(codec.get(), frame), target.name + ": " + encoder->name);
    for (;;) {
        PacketPtr packet = NewPacket();
        const int result = avcodec_receive_packet(codec.get(), packet.get());
        if (result == AVERROR(EAGAIN) || result == AVERROR_EOF)
            return;
        AvChecked(result, target.name + ": " + encoder->name);
        Restamp(*packet);
        Mux(*packet, videoTrack);
    }
}

void Film::Restamp(AVPacket &packet) {
    const auto found = inside.find(packet.pts);
    if (found == inside.end())
        return;
    packet.duration = found->second.duration;
    packet.pts = found->second.pts;
    if (counts)
        packet.dts = packet.pts;
    inside.erase(found);
}

void Film::WritePacket(PacketPtr packet) {
    const auto stream = static_cast<size_t>(packet->stream_index);
    if (stream < places.size() && places[stream] >= 0) // others came up after the start
        Mux(*packet, static_cast<size_t>(places[stream]));
}

// Containers refuse time stamps that are missing or don't grow, as in clips that are damaged. What
// such a clip says is kept where sums of it can't overflow.
void Film::Mux(AVPacket &packet, size_t track) {
    Track &own = tracks[track];
    const AVStream &stream = *format->streams[track];
    const bool mayRepeat = (format->oformat->flags & AVFMT_TS_NONSTRICT) != 0;
    const int64_t early = Bounded(av_rescale_q(shift, kMicroseconds, stream.time_base));
    av_packet_rescale_ts(&packet, own.from, stream.time_base);
    const auto moved = [early](int64_t time, int64_t least) {
        return std::max(least, Bounded(time) - early);
    };
    const int64_t least = own.lastDts + !mayRepeat;
    if (packet.dts == AV_NOPTS_VALUE)
        packet.dts =
            packet.pts == AV_NOPTS_VALUE ? std::max<int64_t>(0, least) + early : packet.pts;
    packet.dts = moved(packet.dts, least);
    packet.pts = packet.pts == AV_NOPTS_VALUE ? packet.dts : moved(packet.pts, packet.dts);
    own.lastDts = packet.dts;
    packet.stream_index = static_cast<int>(track);
    packet.pos = -1;
    AvChecked(av_interleaved_write_frame(format.get(), &packet), target.name);
    if (format->pb)
        AvChecked(format->pb->error, target.name);
}

void Film::Finish() {
    Encode(nullptr);
    AvChecked(av_write_trailer(format.get()), target.name);
    if (format->oformat->flags & AVFMT_NOFILE)
        return;
    const int written = format->pb->error;
    const int closed = avio_closep(&format->pb);
    AvChecked(std::min(written, closed), target.name);
}
