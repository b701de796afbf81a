// SPDX-License-Identifier: MIT
// The encoder of a film: chosen for its container, given frames, giving packets.
#pragma once

#include "video_fit.h"

#include <map>

class Encoder {
  public:
    // subject: what messages begin with. wanted: FFmpeg's name of it, or empty for what suits the
    // container. Takes out of the options what it knows. Throws tool::Failure.
    Encoder(const AVOutputFormat &forContainer, const std::string &subject,
            const std::string &wanted, AvOptions &options, const Clip &clip,
            const FilmShape &shape);

    // NV12 if the encoder takes that, otherwise planar 4:2:0.
    AVPixelFormat Layout() const {
        return layout;
    }
    const AVCodecContext &Context() const {
        return *context;
    }
    AVRational TimeBase() const { // of the packets
        return counts ? clipBase : ownBase;
    }

    // A frame with its time stamp in the clip's time base, or null after the last one. The frame's
    // buffers may still be read later. Throws tool::Failure.
    void Give(FramePtr frame, int64_t pts, int64_t duration);

    // Null when the next frame must be given first. Throws tool::Failure.
    PacketPtr Take();

  private:
    struct Stamp {
        int64_t pts;
        int64_t duration;
    };

    void Choose(const std::string &subject, const std::string &wanted);
    void CheckSize(int width, int height) const;
    void ChooseLayout(const FilmShape &shape);
    void ChooseTimeBase(const Clip &clip);
    void Open(const FilmShape &shape, AvOptions &options);
    void Restamp(AVPacket &packet);

    const AVOutputFormat &container;
    std::string name; // for messages
    const AVCodec *codec = nullptr;
    CodecPtr context;
    AVPixelFormat layout = AV_PIX_FMT_NONE;
    AVPixelFormat marked = AV_PIX_FMT_NONE; // what the encoder calls the layout
    AVRational rate{0, 1};
    AVRational clipBase{1, 1};
    AVRational ownBase{1, 1};
    bool counts = false; // it is given numbers of frames for time stamps
    int64_t frames = 0;
    int64_t lastPts = INT64_MIN / 2;
    std::map<int64_t, Stamp> inside; // of frames, by the time stamps that they were given with
};
