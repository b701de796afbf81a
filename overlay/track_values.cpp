// SPDX-License-Identifier: MIT
#include "track_values.h"

#include "words.h"

#include <cmath>

namespace overlay {

namespace {

constexpr int64_t kUsualFirst = 1;
constexpr double kMaxShare = 2; // a box that a tracker foresees may lie outside of the frame
constexpr double kMaxWhole = 4294967295.0; // of frames, ids and classes

[[noreturn]] void Refuse(const char *name, double value, const std::string &reason) {
    char text[40];
    std::snprintf(text, sizeof text, "%.17g", value);
    throw Failure("bad " + std::string(name) + " " + Quoted(text) + ": " + reason);
}

} // namespace

double CheckedReal(double value, const char *name) {
    if (!(std::fabs(value) <= kMaxTrackReal))
        Refuse(name, value, "expected a number from -1e12 to 1e12");
    return value;
}

double CheckedShare(double value, const char *name) {
    if (!(std::fabs(value) <= kMaxShare))
        Refuse(name, value, "expected a part of 1, the frame's width or height, not pixels");
    return value;
}

int64_t CheckedWhole(double value, const char *name) {
    if (value != std::floor(value) || !(std::fabs(value) <= kMaxWhole))
        Refuse(name, value, "expected a whole number");
    return static_cast<int64_t>(value);
}

int64_t CheckedFrame(double value, const TrackSettings &settings, const InputNames &names) {
    const int64_t frame = CheckedWhole(value, "frame") - settings.firstFrame.value_or(kUsualFirst);
    if (frame < 0 && !settings.firstFrame)
        Refuse("frame", value, "the first one is 1, unless " + names.firstFrame + " is given");
    return frame;
}

void SetCorners(TrackedBox &box, double left, double top, double right, double bottom) {
    box.left = CheckedReal(left, "left");
    box.top = CheckedReal(top, "top");
    box.right = CheckedReal(right, "right");
    box.bottom = CheckedReal(bottom, "bottom");
    if (right < left)
        Refuse("right", right, "it lies left of the left edge");
    if (bottom < top)
        Refuse("bottom", bottom, "it lies above the top edge");
}

void SetSides(TrackedBox &box, double left, double top, double width, double height) {
    box.left = CheckedReal(left, "left");
    box.top = CheckedReal(top, "top");
    if (CheckedReal(width, "width") < 0)
        Refuse("width", width, "expected 0 or more");
    if (CheckedReal(height, "height") < 0)
        Refuse("height", height, "expected 0 or more");
    box.right = left + width;
    box.bottom = top + height;
}

void SetClassName(TrackedBox &box, std::string_view name) {
    if (!IsDrawableUtf8(name))
        throw Failure("the name of the class is not UTF-8");
    box.className = name;
}

void SetClassNumber(TrackedBox &box, double number, const TrackSettings &settings) {
    const int64_t whole = CheckedWhole(number, "class");
    if (whole >= 0) // below, it is not known
        box.className = NameOfClass(settings.classes, whole);
}

} // namespace overlay
