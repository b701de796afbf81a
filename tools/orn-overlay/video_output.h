// SPDX-License-Identifier: MIT
// A film as it goes out: a container with what the encoder makes and with packets of the clip.
#pragma once

#include "video_encoder.h"

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

    AVPixelFormat Layout() const { // of frames, as the encoder takes them
        return encoder->Layout();
    }
    // As Encoder::Give. Both throw tool::Failure.
    void WriteFrame(FramePtr frame, int64_t pts, int64_t duration);
    void WritePacket(PacketPtr packet);

    // Without it, the film has no end and may not be playable. Throws tool::Failure.
    void Finish();

  private:
    struct Track {       // a stream of the film
        AVRational from; // time base of its packets
        int64_t lastDts = INT64_MIN / 2;
    };

    void ChooseShift(const AVFormatContext &source);
    void AddStreams(Clip &clip);
    void AddVideo(const AVStream &source);
    bool AddCopy(const AVStream &source);
    void CopyChapters(const AVFormatContext &source);
    void Begin(AvOptions &options);
    void MuxEncoded();
    void Mux(AVPacket &packet, size_t track);

    const FilmTarget target;
    std::unique_ptr<AVFormatContext, FilmDestroyer> format;
    std::unique_ptr<Encoder> encoder;
    int64_t shift = 0;       // of time stamps, in microseconds: the film begins that much earlier
    std::vector<int> places; // the clip's streams in the film; -1: not there
    std::vector<Track> tracks;
    size_t videoTrack = 0;
};
