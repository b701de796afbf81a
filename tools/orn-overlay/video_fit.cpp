// SPDX-License-Identifier: MIT
// A graph of filters serves frames of one size and format. Where these change in the middle of a
// clip, another graph scales what follows to the size of the film.
#include "video_fit.h"

#include "common/streams.h"
#include "common/text.h"

#include <cmath>

extern "C" {
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

namespace {

constexpr int kHdHeight = 720; // from which on clips that say nothing mean BT.709

struct Turn {
    const char *filters;
    bool swapsSides;
};

// A display matrix turns by a quarter, a half or three quarters, and may mirror.
Turn TurnOf(const AVStream &stream) {
    size_t bytes = 0;
    const auto *matrix = reinterpret_cast<const int32_t *>(
        av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, &bytes));
    if (!matrix || bytes < 9 * sizeof(int32_t))
        return {"", false};
    const double angle = std::remainder(-av_display_rotation_get(matrix), 360); // clockwise
    const auto isNear = [angle](double other) { return std::abs(angle - other) < 1; };
    if (isNear(90))
        return {matrix[3] > 0 ? "transpose=cclock_flip," : "transpose=clock,", true};
    if (isNear(-90))
        return {matrix[3] < 0 ? "transpose=clock_flip," : "transpose=cclock,", true};
    if (isNear(180) || isNear(-180))
        return {matrix[4] < 0 ? "hflip,vflip," : "hflip,", false};
    return {matrix[4] < 0 ? "vflip," : "", false};
}

const AVPixFmtDescriptor &Describe(int format) {
    return *NotNull(av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format)));
}

bool IsRgb(int format) {
    return (Describe(format).flags & (AV_PIX_FMT_FLAG_RGB | AV_PIX_FMT_FLAG_PAL)) != 0;
}

overlay::Matrix MatrixOf(AVColorSpace space, int height) {
    switch (space) {
    case AVCOL_SPC_BT470BG:
    case AVCOL_SPC_SMPTE170M:
    case AVCOL_SPC_SMPTE240M:
    case AVCOL_SPC_FCC:
        return overlay::Matrix::Bt601;
    case AVCOL_SPC_UNSPECIFIED:
    case AVCOL_SPC_RGB:
        return height < kHdHeight ? overlay::Matrix::Bt601 : overlay::Matrix::Bt709;
    default: // of the two, the nearer one to what newer systems use
        return overlay::Matrix::Bt709;
    }
}

} // namespace

Fitting::Fitting(const Clip &ofClip, const Options &options) : clip(ofClip) {
    const AVCodecParameters &known = *clip.Video().codecpar;
    const Turn turn = TurnOf(clip.Video());
    turning = turn.filters;
    AVRational pixel =
        av_guess_sample_aspect_ratio(nullptr, const_cast<AVStream *>(&clip.Video()), nullptr);
    if (turn.swapsSides && pixel.num > 0)
        pixel = av_inv_q(pixel);
    if (turn.swapsSides)
        ChooseSize(options, known.height, known.width, pixel);
    else
        ChooseSize(options, known.width, known.height, pixel);
    ChooseColours(options, IsRgb(known.format));
    TellLosses();
}

// What is scaled keeps its looks, where the clip tells of the shape of its pixels.
void Fitting::ChooseSize(const Options &options, int uprightWidth, int uprightHeight,
                         AVRational pixel) {
    overlay::FrameShape &frames = shape.frames;
    const bool isScaled = options.shape.width > 0;
    frames.width = isScaled ? options.shape.width : uprightWidth;
    frames.height = isScaled ? options.shape.height : uprightHeight;
    if (int64_t{frames.width} * frames.height > kMaxFramePixels)
        throw tool::Failure(tool::kBadUsage, "--size: more pixels than a film may have");
    shape.pixelAspect = pixel;
    if (pixel.num > 0)
        shape.pixelAspect = av_mul_q(pixel, av_mul_q(av_make_q(uprightWidth, uprightHeight),
                                                     av_make_q(frames.height, frames.width)));
}

// What the clip says, or what the options say in its place. RGB becomes what most films are.
void Fitting::ChooseColours(const Options &options, bool isRgb) {
    const AVCodecParameters &known = *clip.Video().codecpar;
    overlay::ColourSpace &colours = shape.frames.colours;
    const bool isFull =
        !isRgb && (known.color_range == AVCOL_RANGE_JPEG || known.format == AV_PIX_FMT_YUVJ420P ||
                   known.format == AV_PIX_FMT_YUVJ422P || known.format == AV_PIX_FMT_YUVJ444P);
    colours.range = isFull ? overlay::Range::Full : overlay::Range::Limited;
    colours.matrix = MatrixOf(known.color_space, known.height);
    if (options.rangeIsGiven)
        colours.range = options.shape.colours.range;
    if (options.matrixIsGiven)
        colours.matrix = options.shape.colours.matrix;
    const bool nowFull = colours.range == overlay::Range::Full;
    shape.range = isRgb || isFull || options.rangeIsGiven
                      ? (nowFull ? AVCOL_RANGE_JPEG : AVCOL_RANGE_MPEG)
                      : known.color_range;
    shape.primaries = known.color_primaries;
    shape.transfer = known.color_trc;
    shape.chromaPlace = known.chroma_location;
    shape.matrix = known.color_space;
    if (isRgb || options.matrixIsGiven)
        shape.matrix =
            colours.matrix == overlay::Matrix::Bt709 ? AVCOL_SPC_BT709 : AVCOL_SPC_SMPTE170M;
}

void Fitting::TellLosses() const {
    const AVCodecParameters &known = *clip.Video().codecpar;
    const AVPixFmtDescriptor &pixels = Describe(known.format);
    std::string losses;
    if (pixels.comp[0].depth > 8)
        losses += tool::Format("; its %d bits a sample become 8", pixels.comp[0].depth);
    if (IsRgb(known.format))
        losses += "; its RGB becomes YUV with chroma of half the resolution";
    else if (pixels.nb_components > 2 && pixels.log2_chroma_w + pixels.log2_chroma_h < 2)
        losses += "; its chroma gets half the resolution (4:2:0)";
    if (pixels.flags & AV_PIX_FMT_FLAG_ALPHA)
        losses += "; its transparency is lost";
    if (known.field_order > AV_FIELD_PROGRESSIVE)
        losses += "; it is interlaced: frames stay as they are, but aren't marked so";
    if (!losses.empty())
        tool::Say(kProgram, "note: " + clip.Name() + ": " + losses.substr(2));
}

bool Fitting::NeedsNothing(const AVFrame &frame) const {
    return turning.empty() && frame.width == shape.frames.width &&
           frame.height == shape.frames.height &&
           (frame.format == AV_PIX_FMT_YUV420P || frame.format == AV_PIX_FMT_NV12);
}

FramePtr Fitting::Fit(FramePtr frame) {
    if (frame->format == AV_PIX_FMT_YUVJ420P) // the same bytes; the range is known
        frame->format = AV_PIX_FMT_YUV420P;
    if (NeedsNothing(*frame))
        return frame;
    if (!graph || frame->width != width || frame->height != height || frame->format != format)
        BuildGraph(*frame);
    const std::string subject = clip.Name() + ": can't convert its frames";
    AvChecked(
        av_buffersrc_add_frame(avfilter_graph_get_filter(graph.get(), "buffer@in"), frame.get()),
        subject);
    FramePtr fitted = NewFrame();
    AvChecked(av_buffersink_get_frame(avfilter_graph_get_filter(graph.get(), "buffersink@out"),
                                      fitted.get()),
              subject);
    return fitted;
}

void Fitting::BuildGraph(const AVFrame &frame) {
    if (graph)
        tool::Say(kProgram,
                  "note: " + clip.Name() +
                      tool::Format(": its frames change to %d x %d", frame.width, frame.height));
    const std::string subject = clip.Name() + ": can't convert its frames";
    graph = NotNull(GraphPtr(avfilter_graph_alloc()));
    AVFilterInOut *inputs = nullptr;
    AVFilterInOut *outputs = nullptr;
    const int parsed =
        avfilter_graph_parse2(graph.get(), Filters(frame).c_str(), &inputs, &outputs);
    avfilter_inout_free(&inputs);
    avfilter_inout_free(&outputs);
    AvChecked(parsed, subject);
    AvChecked(avfilter_graph_config(graph.get(), nullptr), subject);
    width = frame.width;
    height = frame.height;
    format = frame.format;
}

// With equal ranges on both sides, YUV keeps its values; RGB has none yet. Grey becomes planar,
// since the scaler leaves the chroma of NV12 unset then.
std::string Fitting::Filters(const AVFrame &frame) const {
    const overlay::FrameShape &frames = shape.frames;
    const char *range = frames.colours.range == overlay::Range::Full ? "full" : "limited";
    const char *matrix = frames.colours.matrix == overlay::Matrix::Bt709 ? "bt709" : "bt601";
    const std::string colours =
        IsRgb(frame.format) ? tool::Format("out_range=%s:out_color_matrix=%s", range, matrix)
                            : tool::Format("in_range=%s:out_range=%s", range, range);
    const char *layout = Describe(frame.format).nb_components < 3 ? "yuv420p" : "nv12";
    return tool::Format("buffer@in=video_size=%dx%d:pix_fmt=%d:time_base=1/1,%s"
                        "scale=%d:%d:flags=bicubic:interl=-1:%s,format=%s,buffersink@out",
                        frame.width, frame.height, frame.format, turning.c_str(), frames.width,
                        frames.height, colours.c_str(), layout);
}
