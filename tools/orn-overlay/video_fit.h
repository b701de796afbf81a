// SPDX-License-Identifier: MIT
// Frames as the film needs them: upright, of one size, 8-bit 4:2:0. What a decoder gives is mostly
// that already; the rest passes through FFmpeg's filters.
#pragma once

#include "video_input.h"

#include "overlay/frame.h"

extern "C" {
#include <libavfilter/avfilter.h>
}

using GraphPtr = std::unique_ptr<AVFilterGraph, overlay::AvDestroyer<avfilter_graph_free>>;

// What the frames of a film have in common.
struct FilmShape {
    overlay::FrameShape frames;
    AVRational pixelAspect{0, 1};
    AVColorRange range = AVCOL_RANGE_UNSPECIFIED; // as the film is marked
    AVColorSpace matrix = AVCOL_SPC_UNSPECIFIED;
    AVColorPrimaries primaries = AVCOL_PRI_UNSPECIFIED;
    AVColorTransferCharacteristic transfer = AVCOL_TRC_UNSPECIFIED;
    AVChromaLocation chromaPlace = AVCHROMA_LOC_UNSPECIFIED;
};

class Fitting {
  public:
    // The clip must outlive it. Tells on standard error what the clip loses.
    Fitting(const Clip &ofClip, const Options &options);

    const FilmShape &Shape() const {
        return shape;
    }

    // The frame in the film's shape, NV12 or planar 4:2:0. Throws tool::Failure.
    FramePtr Fit(FramePtr frame);

  private:
    void ChooseSize(const Options &options, int uprightWidth, int uprightHeight, AVRational pixel);
    void ChooseColours(const Options &options, bool isRgb);
    void TellLosses() const;
    bool NeedsNothing(const AVFrame &frame) const;
    void BuildGraph(const AVFrame &frame);
    std::string Filters(const AVFrame &frame) const;

    const Clip &clip;
    std::string turning; // filters, each with a comma after it
    FilmShape shape;
    GraphPtr graph; // for frames like these:
    int width = 0;
    int height = 0;
    int format = AV_PIX_FMT_NONE;
};
