// SPDX-License-Identifier: MIT
// The stepping, in integers, along a quarter of an ellipse, which the other three mirror. All that
// is round is drawn with it: a rounded rectangle's corners are the quarters of one ellipse.
#pragma once

#include <stdint.h>

namespace orn {

// An arc of an ellipse from one end of an axis to where the curve has turned by half, each step
// going onward by one, along the other axis, and some of them inward by one, too. The steep arc
// starts at an end of the horizontal axis, goes onward by rows and inward by columns. The flat arc
// is the same with rows and columns, width and height exchanged.
//
// After k steps of which j went inward, with the starting values m0, r0 and f0,
//     rise   = r0 + k * onwardStep
//     fall   = f0 - j * inwardStep
//     margin = m0 - k * r0 - onwardStep * k (k - 1) / 2 + j * f0 - inwardStep * j (j - 1) / 2
// and the sign of margin - rise tells on which side of the curve the middle between the next two
// columns lies: when it is negative, outside, the step goes inward. Where the curve has turned by
// half, the rise has grown past the fall.
struct Arc {
    int64_t onwardStep;
    int64_t inwardStep;
    int64_t rise;   // what a step onward takes from the margin
    int64_t fall;   // what a step inward gives back
    int64_t margin; // how far inside the curve
    int64_t excess; // of the rise over the fall up to which the arc goes on
};

// Beyond this width or height the terms would leave 64 bits; nothing is drawn.
constexpr int64_t kMaxEllipseSize = 65536;

// The arc of a curve whose equation leaves the given error at the start. The gradient of the curve
// is gradient there, and grows by onwardStep with every step until it passes the limit, which
// shrinks by inwardStep with every step inward.
inline Arc MakeArc(int64_t onwardStep, int64_t inwardStep, int64_t gradient, int64_t limit,
                   int64_t error) {
    const int64_t fall = -2 * error - inwardStep;
    return {2 * onwardStep, 2 * inwardStep, 2 * gradient, fall, -error, 2 * limit - fall};
}

// The steep arc of an outline, in doubled units: its radii are the width and the height. With
// x = width - j - 1/2 and y = k + 1/2, and but for the rounding of halves, the margin is negative
// where width^2 y^2 + height^2 x^2 - width^2 height^2 exceeds width^2 / 4 - height^2 (j + 3/4).
inline Arc OutlineArc(int64_t width, int64_t height) {
    const int64_t onwardStep = width * width / 2;
    const int64_t inwardStep = height * height / 2;
    return MakeArc(onwardStep, inwardStep, onwardStep, inwardStep * width + onwardStep,
                   height * height * (1 - width) / 2);
}

// The steep arc of a fill, whose radii a and b are half the width and half the height. With
// x = a - j - 1/2 and y = k, and but for the rounding of quarters, the margin is negative where
// a^2 y^2 + b^2 x^2 - a^2 b^2 exceeds -b^2 / 4.
inline Arc FillArc(int64_t width, int64_t height) {
    const int64_t onwardStep = width * width / 2;
    const int64_t inwardStep = height * height / 2;
    const int64_t gradient = width * width / 4;
    return MakeArc(onwardStep, inwardStep, gradient, width * inwardStep / 2 + gradient,
                   (1 - width) * height * height / 4);
}

// False where the curve has turned by half.
inline bool GoesOn(const Arc &arc) {
    return arc.rise <= arc.fall + arc.excess;
}

// Goes inward, where a step onward has led outside the curve.
inline bool StepInward(Arc *arc) {
    if (arc->margin >= 0)
        return false;
    arc->margin += arc->fall;
    arc->fall -= arc->inwardStep;
    return true;
}

// Goes onward; true: and inward.
inline bool Step(Arc *arc) {
    arc->margin -= arc->rise;
    arc->rise += arc->onwardStep;
    return StepInward(arc);
}

inline int64_t Distance(int32_t a, int32_t b) {
    return a < b ? int64_t{b} - a : int64_t{a} - b;
}

} // namespace orn
