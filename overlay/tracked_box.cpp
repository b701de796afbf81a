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

} // namespace

OrnMinRenderRect RectOf(const TrackedBox &box) {
    return {Pixel(box.left), Pixel(box.top), Pixel(box.right), Pixel(box.bottom)};
}

OrnMinRenderPoint FeetOf(const TrackedBox &box) {
    return {Pixel((box.left + box.right) / 2), Pixel(box.bottom)};
}

} // namespace overlay
