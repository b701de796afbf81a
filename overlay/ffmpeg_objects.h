// SPDX-License-Identifier: MIT
// FFmpeg's objects, which are released at the end of their block.
#pragma once

#include <memory>

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace overlay {

// For functions that take the address of a pointer and leave null there.
template <auto destroy> struct AvDestroyer {
    template <typename Object> void operator()(Object *object) const {
        destroy(&object);
    }
};

using FramePtr = std::unique_ptr<AVFrame, AvDestroyer<av_frame_free>>;
using PacketPtr = std::unique_ptr<AVPacket, AvDestroyer<av_packet_free>>;
using CodecPtr = std::unique_ptr<AVCodecContext, AvDestroyer<avcodec_free_context>>;

} // namespace overlay
