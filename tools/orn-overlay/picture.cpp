// SPDX-License-Identifier: MIT
// Each frame is converted and scaled straight to its place.
#include "picture.h"

#include "common/output_file.h"

#include <algorithm>

extern "C" {
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

namespace {

constexpr int kSheetWidth = 1920;

int TileWidth(int frameWidth, int columns) {
    return columns == 1 ? frameWidth : std::max(1, std::min(frameWidth, kSheetWidth / columns));
}

} // namespace

void SwsDestroyer::operator()(SwsContext *scaler) const {
    sws_freeContext(scaler);
}

Picture::Picture(const FilmShape &ofShape, const Sheet &ofSheet)
    : shape(ofShape.frames), sheet(ofSheet), tileWidth(TileWidth(shape.width, sheet.columns)),
      tileHeight(
          static_cast<int>(std::max<int64_t>(1, int64_t{shape.height} * tileWidth / shape.width))),
      scaler(NotNull(sws_getContext(
          shape.width, shape.height, AV_PIX_FMT_NV12, tileWidth, tileHeight, AV_PIX_FMT_RGB24,
          SWS_BICUBIC | SWS_ACCURATE_RND | SWS_FULL_CHR_H_INT, nullptr, nullptr, nullptr))),
      pixels(NewFrame()) {
    const bool isHd = shape.colours.matrix == overlay::Matrix::Bt709;
    const int *from = sws_getCoefficients(isHd ? SWS_CS_ITU709 : SWS_CS_ITU601);
    sws_setColorspaceDetails(scaler.get(), from, shape.colours.range == overlay::Range::Full, from,
                             1, 0, 1 << 16, 1 << 16);
    pixels->format = AV_PIX_FMT_RGB24;
    pixels->width = tileWidth * sheet.columns;
    pixels->height = tileHeight * sheet.rows;
    if (int64_t{pixels->width} * pixels->height > kMaxFramePixels)
        throw tool::Failure(tool::kBadUsage, "--sheet: the picture would be too large");
    AvChecked(av_frame_get_buffer(pixels.get(), 0), "--sheet");
    std::fill_n(pixels->data[0], static_cast<ptrdiff_t>(pixels->linesize[0]) * pixels->height,
                uint8_t{0});
}

void Picture::Add(const OrnMinRenderImage &image) {
    const auto stride = static_cast<int>(image.stride);
    const uint8_t *from[] = {image.yPlane, image.uvPlane, nullptr, nullptr};
    const int fromStrides[] = {stride, stride, 0, 0};
    const int x = count % sheet.columns * tileWidth;
    const int y = count / sheet.columns * tileHeight;
    uint8_t *to[] = {pixels->data[0] + ptrdiff_t{y} * pixels->linesize[0] + ptrdiff_t{3} * x,
                     nullptr, nullptr, nullptr};
    sws_scale(scaler.get(), from, fromStrides, 0, shape.height, to, pixels->linesize);
    ++count;
}

void Picture::Write(const std::string &path) const {
    const AVCodec *png = avcodec_find_encoder(AV_CODEC_ID_PNG);
    if (!png)
        throw tool::Failure(tool::kBadData, path + ": FFmpeg has no PNG encoder");
    const CodecPtr codec = NotNull(CodecPtr(avcodec_alloc_context3(png)));
    codec->width = pixels->width;
    codec->height = pixels->height;
    codec->pix_fmt = AV_PIX_FMT_RGB24;
    codec->time_base = {1, 1};
    const PacketPtr packet = NewPacket();
    AvChecked(avcodec_open2(codec.get(), png, nullptr), path);
    AvChecked(avcodec_send_frame(codec.get(), pixels.get()), path);
    AvChecked(avcodec_send_frame(codec.get(), nullptr), path);
    AvChecked(avcodec_receive_packet(codec.get(), packet.get()), path);
    tool::OutputFile file(path);
    file.Write(packet->data, static_cast<size_t>(packet->size));
    file.Publish();
}
