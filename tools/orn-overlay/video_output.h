// SPDX-License-Identifier: MIT
// A film as it goes out: frames to the encoder, other packets of the clip as they are.
#pragma once

#include "video_fit.h"

#include <map>
#include <vector>

struct FilmDestroyer {
    void operator()(AVFormatContext *film) const;
};

// Where a film goes, and how it is made.
struct FilmTarget {
    std::string name;    // for messages, and its end tells the container
    std::string address; // that is written to
    std::string encoder; // empty: what suits the container
    std::string options;
};

class Film {
  public:
    // Drops the streams of the clip that the film can't hold, and tells of it. Throws
    // tool::Failure.
    Film(Clip &clip, const FilmShape &shape, const FilmTarget &to);
    Film(const Film &) = delete;
    Film &operator=(const Film &) = delete;

    // NV12 if the encoder takes that, otherwise planar 4:2:0.
    AVPixelFormat Layout() const {
        return layout;
    }
    // The frame's buffers may still be read later. Both throw tool::Failure.
    void WriteFrame(FramePtr frame, int64_t pts, int64_t duration);
    void WritePacket(PacketPtr packet);

    // Without it, the film has no end and may not be playable. Throws tool::Failure.
    void Finish();

  private:
    static constexpr int64_t kBeforeAll = INT64_MIN / 2;

    struct Stamp {
        int64_t pts;
        int64_t duration;
    };
    struct Track {       // a stream of the film
        AVRational from; // time base of its packets
        int64_t lastDts = kBeforeAll;
    };

    void ChooseEncoder(const std::string &name);
    void ChooseLayout(const FilmShape &shape);
    void CheckSize(int width, int height) const;
    void ChooseTimeBase(const Clip &clip);
    void OpenEncoder(const FilmShape &shape, AvOptions &options);
    void AddStreams(Clip &clip);
    void AddVideo(const AVStream &source);
    bool AddCopy(const AVStream &source);
    void CopyChapters(const AVFormatContext &source);
    void Begin(AvOptions &options);
    void Encode(const AVFrame *frame);
    void Restamp(AVPacket &packet);
    void Mux(AVPacket &packet, size_t track);

    const FilmTarget target;
    std::unique_ptr<AVFormatContext, FilmDestroyer> format;
    const AVCodec *encoder = nullptr;
    CodecPtr codec;
    AVPixelFormat layout = AV_PIX_FMT_NONE;
    AVPixelFormat marked = AV_PIX_FMT_NONE; // what the encoder calls the layout
    AVRational rate{0, 1};
    AVRational clipBase{1, 1};
    AVRational encoderBase{1, 1};
    int64_t shift = 0;   // of time stamps, in microseconds: the film begins that much earlier
    bool counts = false; // the encoder is given numbers of frames for time stamps
    int64_t frames = 0;
    int64_t lastPts = kBeforeAll;
    std::map<int64_t, Stamp> inside; // the encoder: by the time stamps it was given
    std::vector<int> places;         // the clip's streams in the film; -1: not there
    std::vector<Track> tracks;
    size_t videoTrack = 0;
};
