// SPDX-License-Identifier: MIT
// A clip as it comes in: the decoded frames of its video, and the packets of all else.
#pragma once

#include "av.h"
#include "options.h"

#include <optional>
#include <vector>

// Larger frames aren't decoded, whatever a clip claims: a decoder keeps more than a dozen of them.
constexpr int64_t kMaxFramePixels = int64_t{8192} * 4320;

struct ClipFrame {
    FramePtr frame;
    int64_t number = 0; // of the decoded frames, from 0
    int64_t pts = 0;    // in the clip's time base; greater than that of the frame before
    int64_t duration = 0;
    double seconds = 0;      // the same as duration
    overlay::FrameTime time; // since the first frame

    double Seconds() const {
        return static_cast<double>(time.ticks) / time.ticksPerSecond;
    }
    double EndSeconds() const {
        return Seconds() + seconds;
    }
};

// A frame, or else a packet of another stream.
struct ClipItem {
    ClipFrame picture;
    PacketPtr packet;
};

class Clip {
  public:
    // Throws tool::Failure where there is no video that can be decoded.
    explicit Clip(const Options &options);
    Clip(const Clip &) = delete;
    Clip &operator=(const Clip &) = delete;

    // The next frame or packet; none at the end, or when StopRequested. Throws tool::Failure, once
    // all frames before what is wrong have been given.
    std::optional<ClipItem> Read();

    // The next frame, whatever packets come between.
    std::optional<ClipFrame> ReadFrame();

    // Packets of this stream aren't wanted.
    void Drop(unsigned stream);

    const AVFormatContext &Format() const {
        return *format;
    }
    const AVStream &Video() const {
        return *video;
    }
    AVRational TimeBase() const { // of the frames
        return timeBase;
    }
    AVRational Rate() const { // frames a second; 0/1 where nothing tells
        return rate;
    }
    const std::string &Name() const { // for messages
        return name;
    }
    double Length() const;       // in seconds; 0 where the clip doesn't tell
    std::string Damages() const; // a message; empty where nothing was damaged so far

  private:
    struct Clock {        // of a stream, in its time base
        int64_t late = 0; // by so much we are later than what the clip tells
        int64_t next = INT64_MIN / 2;
    };

    static int Interrupted(void *clip);
    void Open();
    void FindVideo();
    void OpenDecoder(const AVCodec *decoder);
    PacketPtr ReadPacket();
    void MendClock(AVPacket &packet);
    void NoteDamage();
    void Decode(const AVPacket *packet);
    std::optional<ClipFrame> ReceiveFrame();
    void Stamp(ClipFrame &picture);
    std::string ReasonOfEnd(int result) const;
    bool EndsEarly() const;
    overlay::FrameTime TimeOf(int64_t pts) const;

    std::string name;
    std::string address;
    int64_t patienceEnds = 0; // in the clock of av_gettime_relative
    InputPtr format;
    AVStream *video = nullptr;
    CodecPtr codec;
    AVRational timeBase{1, 1};
    AVRational rate{0, 1};
    bool evenly = false; // frames follow each other at the rate of the options

    std::vector<Clock> clocks;
    int64_t promised = 0; // packets of the video, where the clip lists them all
    int64_t packets = 0;
    double packetsTime = 0; // of the furthest, in seconds
    std::string reason;     // why the clip can't be read to its end
    bool drained = false;   // the decoder has nothing left
    int64_t damaged = 0;
    double firstDamage = 0; // seconds

    int64_t frames = 0;
    int64_t firstPts = 0;
    ClipFrame last; // without the frame itself
};
