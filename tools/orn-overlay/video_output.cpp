// SPDX-License-Identifier: MIT
// Everything but the video passes as it is, as far as the container can hold it.
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
    AvOptions options;
    if (av_dict_parse_string(options.Address(), target.options.c_str(), "=", ":", 0) < 0)
        throw tool::Failure(tool::kBadUsage,
                            "--encoder-options: expected NAME=VALUE:NAME=VALUE..., not '" +
                                target.options + "'");
    encoder = std::make_unique<Encoder>(*format->oformat, target.name, target.encoder, options,
                                        clip, shape);
    ChooseShift(clip.Format());
    AddStreams(clip);
    Begin(options);
}

// Broadcasts, whose clock may have begun long ago, should not begin with hours of nothing.
void Film::ChooseShift(const AVFormatContext &source) {
    constexpr int64_t kFarAway = int64_t{10} * AV_TIME_BASE;
    if ((source.iformat->flags & AVFMT_TS_DISCONT) && !IsA(*format, "mpegts,mpeg") &&
        source.start_time != AV_NOPTS_VALUE && source.start_time > kFarAway)
        shift = source.start_time;
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
    AvChecked(avcodec_parameters_from_context(stream.codecpar, &encoder->Context()), target.name);
    stream.time_base = encoder->TimeBase();
    stream.avg_frame_rate = encoder->Context().framerate;
    stream.sample_aspect_ratio = encoder->Context().sample_aspect_ratio;
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
    const AVCodecDescriptor *kind = avcodec_descriptor_get(encoder->Context().codec_id);
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
                                                 encoder->Context().codec->name +
                                                 " nor the container knows '" + unknown->key + "'");
}

void Film::WriteFrame(FramePtr frame, int64_t pts, int64_t duration) {
    encoder->Give(std::move(frame), pts, duration);
    MuxEncoded();
}

void Film::MuxEncoded() {
    while (const PacketPtr packet = encoder->Take())
        Mux(*packet, videoTrack);
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
    encoder->Give(nullptr, 0, 0);
    MuxEncoded();
    AvChecked(av_write_trailer(format.get()), target.name);
    if (format->oformat->flags & AVFMT_NOFILE)
        return;
    const int written = format->pb->error;
    const int closed = avio_closep(&format->pb);
    AvChecked(std::min(written, closed), target.name);
}
