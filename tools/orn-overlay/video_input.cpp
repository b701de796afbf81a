// SPDX-License-Identifier: MIT
// What a clip says of itself may be damaged or made to harm: sizes are checked before anything is
// decoded, and time stamps are kept where sums of them can't overflow.
#include "video_input.h"

#include "signals.h"

#include "common/text.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <vector>

extern "C" {
#include <libavutil/avstring.h>
#include <libavutil/time.h>
}

namespace {

constexpr int64_t kPatience = 10; // seconds without anything from a network
constexpr int64_t kMaxPts = int64_t{1} << 61;
constexpr int64_t kMaxDuration = int64_t{1} << 40;
constexpr double kMaxRate = 1e6;

std::string AddressOf(const std::string &name) {
    if (name == "-")
        return "pipe:0";
    return std::filesystem::exists(name) ? "file:" + name : name; // "a:b.mp4" is no protocol
}

bool IsA(const AVFormatContext &format, const char *name) {
    return av_match_name(name, format.iformat->name) != 0;
}

int64_t Clamped(int64_t value, int64_t most) {
    return std::clamp(value, -most, most);
}

// FFmpeg takes some from the clip as they are, and no enumerator may have such a value.
template <typename Enumerator>
void KeepKnown(Enumerator &value, Enumerator unknown, Enumerator end) {
    int number = 0;
    static_assert(sizeof number == sizeof value);
    std::memcpy(&number, &value, sizeof number);
    if (number < 0 || number >= end)
        value = unknown;
}

void KeepKnownColours(AVCodecParameters &video) {
    KeepKnown(video.color_range, AVCOL_RANGE_UNSPECIFIED, AVCOL_RANGE_NB);
    KeepKnown(video.color_space, AVCOL_SPC_UNSPECIFIED, AVCOL_SPC_NB);
    KeepKnown(video.color_primaries, AVCOL_PRI_UNSPECIFIED, AVCOL_PRI_NB);
    KeepKnown(video.color_trc, AVCOL_TRC_UNSPECIFIED, AVCOL_TRC_NB);
    KeepKnown(video.chroma_location, AVCHROMA_LOC_UNSPECIFIED, AVCHROMA_LOC_NB);
}

} // namespace

Clip::Clip(const Options &options)
    : name(options.input == "-" ? "standard input" : options.input),
      address(AddressOf(options.input)) {
    Open();
    FindVideo();
    timeBase = video->time_base;
    rate = av_guess_frame_rate(format.get(), video, nullptr);
    if (rate.num <= 0 || rate.den <= 0 || av_q2d(rate) > kMaxRate)
        rate = {0, 1};
    evenly = options.framesPerSecond.has_value();
    if (evenly) {
        rate = av_d2q(options.framesPerSecond->numerator, 1000000);
        rate = av_div_q(rate, {static_cast<int>(options.framesPerSecond->denominator), 1});
        timeBase = av_inv_q(rate);
    }
    if (IsA(*format, "mov"))
        promised = avformat_index_get_entries_count(video);
}

// Files and pipes may keep us waiting: what feeds a pipe may have much to do.
int Clip::Interrupted(void *clip) {
    const Clip &self = *static_cast<const Clip *>(clip);
    const bool isNetwork = self.address.find("://") != std::string::npos;
    return StopRequested() || (isNetwork && av_gettime_relative() > self.patienceEnds);
}

void Clip::Open() {
    AVFormatContext *opened = NotNull(avformat_alloc_context());
    opened->interrupt_callback = {Interrupted, this};
    patienceEnds = av_gettime_relative() + kPatience * AV_TIME_BASE;
    AvOptions settings;
    settings.Set("rtsp_flags", "prefer_tcp"); // lost packets would smear over many frames
    const int result = avformat_open_input(&opened, address.c_str(), nullptr, settings.Address());
    format.reset(opened);
    if (result < 0)
        throw tool::Failure(tool::kBadData,
                            name + ": can't be opened as a video: " + ReasonOfEnd(result) +
                                (address == "pipe:0" ? " (raw frames come without -i)" : ""));
}

void Clip::FindVideo() {
    std::vector<AVDictionary *> settings(format->nb_streams);
    for (AVDictionary *&entry : settings)
        av_dict_set_int(&entry, "max_pixels", kMaxFramePixels, 0);
    patienceEnds = av_gettime_relative() + 2 * kPatience * AV_TIME_BASE;
    const int known = avformat_find_stream_info(format.get(), settings.data());
    for (AVDictionary *&entry : settings)
        av_dict_free(&entry);
    AvChecked(known, name);
    const AVCodec *decoder = nullptr;
    int found = av_find_best_stream(format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    if (found == AVERROR_DECODER_NOT_FOUND)
        found = av_find_best_stream(format.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (found < 0)
        throw tool::Failure(tool::kBadData, name + ": has no video");
    video = format->streams[found];
    if (video->disposition & AV_DISPOSITION_ATTACHED_PIC)
        throw tool::Failure(tool::kBadData, name + ": has no video but its cover");
    KeepKnownColours(*video->codecpar);
    OpenDecoder(decoder);
}

void Clip::OpenDecoder(const AVCodec *decoder) {
    const AVCodecParameters &known = *video->codecpar;
    if (!decoder)
        throw tool::Failure(tool::kBadData, name + ": its video's codec is unknown (" +
                                                avcodec_get_name(known.codec_id) + ")");
    if (int64_t{known.width} * known.height > kMaxFramePixels)
        throw tool::Failure(tool::kBadData,
                            name + tool::Format(": its frames of %d x %d pixels are too large",
                                                known.width, known.height));
    if (known.width <= 0 || known.height <= 0 || known.format < 0)
        throw tool::Failure(tool::kBadData, name + ": no frame of its video can be decoded");
    codec = NotNull(CodecPtr(avcodec_alloc_context3(decoder)));
    AvChecked(avcodec_parameters_to_context(codec.get(), &known), name);
    codec->pkt_timebase = video->time_base;
    codec->thread_count = 0; // as many as there are processors
    codec->max_pixels = kMaxFramePixels;
    AvChecked(avcodec_open2(codec.get(), decoder, nullptr), name);
}

void Clip::Drop(unsigned stream) {
    format->streams[stream]->discard = AVDISCARD_ALL;
}

double Clip::Length() const {
    if (video->duration > 0)
        return static_cast<double>(video->duration) * av_q2d(video->time_base);
    return format->duration > 0 ? static_cast<double>(format->duration) / AV_TIME_BASE : 0;
}

std::optional<ClipItem> Clip::Read() {
    while (!StopRequested()) {
        if (std::optional<ClipFrame> picture = ReceiveFrame())
            return ClipItem{std::move(*picture), nullptr};
        if (drained)
            break;
        PacketPtr packet = ReadPacket();
        if (packet && packet->stream_index != video->index)
            return ClipItem{{}, std::move(packet)};
        Decode(packet.get());
    }
    if (StopRequested())
        return std::nullopt;
    if (!reason.empty())
        throw tool::Failure(tool::kBadData,
                            name + ": at " + ClockText(last.Seconds()) + ": " + reason);
    if (frames == 0)
        throw tool::Failure(tool::kBadData, name + ": no frame of its video can be decoded");
    return std::nullopt;
}

std::optional<ClipFrame> Clip::ReadFrame() {
    while (std::optional<ClipItem> item = Read())
        if (item->picture.frame)
            return std::move(item->picture);
    return std::nullopt;
}

// Null at the end, and where the clip can't be read further.
PacketPtr Clip::ReadPacket() {
    PacketPtr packet = NewPacket();
    patienceEnds = av_gettime_relative() + kPatience * AV_TIME_BASE;
    int result = av_read_frame(format.get(), packet.get());
    while (result == AVERROR(EAGAIN) && !Interrupted(this)) {
        av_usleep(1000);
        result = av_read_frame(format.get(), packet.get());
    }
    if (result < 0) {
        if (result != AVERROR_EOF || EndsEarly())
            reason = ReasonOfEnd(result);
        return nullptr;
    }
    MendClock(*packet);
    const AVStream &stream = *format->streams[packet->stream_index];
    const bool isLasting = stream.codecpar->codec_type == AVMEDIA_TYPE_SUBTITLE; // for a while
    if (packet->pts != AV_NOPTS_VALUE && !isLasting)
        packetsTime =
            std::max(packetsTime, static_cast<double>(packet->pts) * av_q2d(stream.time_base));
    packets += packet->stream_index == video->index;
    return packet;
}

// A clock that jumps back, as where broadcasts were joined, goes on instead.
void Clip::MendClock(AVPacket &packet) {
    clocks.resize(format->nb_streams);
    Clock &clock = clocks[static_cast<size_t>(packet.stream_index)];
    if (packet.dts == AV_NOPTS_VALUE)
        return;
    const int64_t told = Clamped(packet.dts, kMaxPts);
    const int64_t second = av_rescale_q(1, {1, 1}, format->streams[packet.stream_index]->time_base);
    if (told + clock.late < clock.next - second)
        clock.late = Clamped(clock.next - told, kMaxPts);
    packet.dts = told + clock.late;
    if (packet.pts != AV_NOPTS_VALUE)
        packet.pts = Clamped(packet.pts, kMaxPts) + clock.late;
    clock.next = Clamped(packet.dts, kMaxPts) + Clamped(packet.duration, kMaxDuration);
}

std::string Clip::ReasonOfEnd(int result) const {
    if (StopRequested())
        return "interrupted";
    if (result == AVERROR_EXIT)
        return tool::Format("nothing has come for %d seconds", static_cast<int>(kPatience));
    if (result == AVERROR_EOF)
        return "it has been cut short";
    char text[AV_ERROR_MAX_STRING_SIZE] = "";
    av_strerror(result, text, sizeof text);
    return text;
}

// Only where the container says for certain how much there is: a good clip mustn't be refused.
bool Clip::EndsEarly() const {
    constexpr double kInexact = 0.5; // seconds; the last packet is that long at most
    const bool tellsLength = IsA(*format, "matroska") || IsA(*format, "avi");
    return packets < promised || (tellsLength && packetsTime + kInexact < Length());
}

// What can't be decoded is counted, and what follows it is tried: cameras lose packets.
void Clip::Decode(const AVPacket *packet) {
    const int result = avcodec_send_packet(codec.get(), packet);
    if (result == AVERROR(ENOMEM))
        throw std::bad_alloc();
    if (result < 0 && result != AVERROR_EOF)
        NoteDamage();
}

void Clip::NoteDamage() {
    if (damaged++ == 0)
        firstDamage = last.EndSeconds();
}

std::string Clip::Damages() const {
    return damaged == 0 ? ""
                        : name +
                              tool::Format(": is damaged in %lld places, first at ",
                                           static_cast<long long>(damaged)) +
                              ClockText(firstDamage) + ": frames are missing or wrong";
}

std::optional<ClipFrame> Clip::ReceiveFrame() {
    ClipFrame picture;
    picture.frame = NewFrame();
    int result = avcodec_receive_frame(codec.get(), picture.frame.get());
    while (result < 0 && result != AVERROR(EAGAIN) && result != AVERROR_EOF) {
        if (result == AVERROR(ENOMEM))
            throw std::bad_alloc();
        NoteDamage();
        result = avcodec_receive_frame(codec.get(), picture.frame.get());
    }
    drained = result == AVERROR_EOF;
    if (result < 0)
        return std::nullopt;
    Stamp(picture);
    return picture;
}

// A clock that is missing or runs backward goes on by the frame's duration.
void Clip::Stamp(ClipFrame &picture) {
    const AVFrame &frame = *picture.frame;
    picture.number = frames++;
    picture.duration = Clamped(frame.pkt_duration, kMaxDuration);
    if (evenly)
        picture.duration = 1;
    else if (picture.duration <= 0 && rate.num > 0)
        picture.duration = Clamped(av_rescale_q(1, av_inv_q(rate), timeBase), kMaxDuration);
    picture.duration = std::max<int64_t>(1, picture.duration);
    picture.pts = Clamped(frame.best_effort_timestamp, kMaxPts);
    const bool isMissing = evenly || frame.best_effort_timestamp == AV_NOPTS_VALUE;
    if (picture.number == 0)
        firstPts = picture.pts = isMissing ? 0 : picture.pts;
    else if (isMissing || picture.pts <= last.pts)
        picture.pts = last.pts + last.duration;
    picture.seconds = static_cast<double>(picture.duration) * av_q2d(timeBase);
    picture.time = TimeOf(picture.pts);
    last.pts = picture.pts;
    last.duration = picture.duration;
    last.seconds = picture.seconds;
    last.time = picture.time;
}

// Kept in whole numbers, so that what a frame rate expresses exactly stays exact.
overlay::FrameTime Clip::TimeOf(int64_t pts) const {
    const int64_t unit = std::max(1, timeBase.num);
    return {Clamped(pts - firstPts, INT64_MAX / unit) * unit, static_cast<double>(timeBase.den)};
}
