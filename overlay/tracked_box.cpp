// SPDX-License-Identifier: MIT
#include "tracked_box.h"

#include "place.h"

#include <algorithm>
#include <cmath>

namespace overlay {

namespace {

int32_t Pixel(double edge) {
    constexpr double kFar = 1e12; // keeps the int64 whole; Saturated does the rest
    return Saturated(static_cast<int64_t>(std::floor(std::clamp(edge, -kFar, kFar) + 0.5)));
}

double Between(double from, double to, double share) {
    return from + share * (to - from);
}

} // namespace

TrackedBox Scaled(TrackedBox box, double width, double height) {
    box.left *= width;
    box.top *= height;
    box.right *= width;
    box.bottom *= height;
    return box;
}

TrackedBox BoxBetween(const TrackedBox &from, const TrackedBox &to, int64_t frame) {
    const double share =
        static_cast<double>(frame - from.frame) / static_cast<double>(to.frame - from.frame);
    return {frame,
            from.id,
            Between(from.left, to.left, share),
            Between(from.top, to.top, share),
            Between(from.right, to.right, share),
            Between(from.bottom, to.bottom, share),
            Between(from.confidence, to.confidence, share),
            from.className};
}

OrnMinRenderRect RectOf(const TrackedBox &box) {
    return {Pixel(box.left), Pixel(box.top), Pixel(box.right), Pixel(box.bottom)};
}

OrnMinRenderPoint FeetOf(const TrackedBox &box) {
    return {Pixel((box.left + box.right) / 2), Pixel(box.bottom)};
}

} // namespace overlay
