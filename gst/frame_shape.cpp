// SPDX-License-Identifier: MIT
// Colorimetry that caps leave out has been filled in by GStreamer's own rules.
#include "frame_shape.h"

namespace {

// The nearer of the two that the engine knows.
overlay::Matrix MatrixOf(GstVideoColorMatrix matrix) {
    switch (matrix) {
    case GST_VIDEO_COLOR_MATRIX_BT709:
    case GST_VIDEO_COLOR_MATRIX_SMPTE240M:
    case GST_VIDEO_COLOR_MATRIX_BT2020:
        return overlay::Matrix::Bt709;
    default:
        return overlay::Matrix::Bt601;
    }
}

} // namespace

overlay::FrameShape ShapeOf(const GstVideoInfo &info) {
    overlay::FrameShape shape;
    shape.width = info.width;
    shape.height = info.height;
    shape.hasChroma = GST_VIDEO_INFO_N_COMPONENTS(&info) > 1;
    shape.colours.range = info.colorimetry.range == GST_VIDEO_COLOR_RANGE_0_255
                              ? overlay::Range::Full
                              : overlay::Range::Limited;
    shape.colours.matrix = MatrixOf(info.colorimetry.matrix);
    return shape;
}
