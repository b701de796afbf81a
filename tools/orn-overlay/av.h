// SPDX-License-Identifier: MIT
// FFmpeg's libraries, as this program uses them: owners for what they allocate, and their errors as
// failures of the program.
#pragma once

#include "common/failure.h"

#include <memory>
#include <new>
#include <string>

#include "overlay/ffmpeg_objects.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/buffer.h>
}

using overlay::CodecPtr;
using overlay::FramePtr;
using overlay::PacketPtr;
using InputPtr = std::unique_ptr<AVFormatContext, overlay::AvDestroyer<avformat_close_input>>;
using PoolPtr = std::unique_ptr<AVBufferPool, overlay::AvDestroyer<av_buffer_pool_uninit>>;

template <typename Pointer> Pointer NotNull(Pointer pointer) {
    if (!pointer)
        throw std::bad_alloc();
    return pointer;
}

inline FramePtr NewFrame() {
    return NotNull(FramePtr(av_frame_alloc()));
}

inline PacketPtr NewPacket() {
    return NotNull(PacketPtr(av_packet_alloc()));
}

// Options by name, as the libraries take and consume them.
class AvOptions {
  public:
    AvOptions() = default;
    ~AvOptions() {
        av_dict_free(&entries);
    }
    AvOptions(const AvOptions &) = delete;
    AvOptions &operator=(const AvOptions &) = delete;

    void Set(const char *name, const std::string &value) {
        av_dict_set(&entries, name, value.c_str(), 0);
    }
    AVDictionary **Address() {
        return &entries;
    }

  private:
    AVDictionary *entries = nullptr;
};

// From here on the libraries print nothing, and their last word on an error is kept for AvFailure.
void KeepLibraryMessages();

// "subject: reason", for an error code of the libraries, with what they said of it since the last
// failure, if they did.
tool::Failure AvFailure(const std::string &subject, int error);

// The value, unless it is an error: then throws AvFailure.
int AvChecked(int value, const std::string &subject);

// As messages give a moment of a film: 00:01:02.3.
std::string ClockText(double seconds);
