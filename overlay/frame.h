// SPDX-License-Identifier: MIT
// What the engine has to be told of frames: their shape, and when each of them is shown.
#pragma once

#include <cstdint>

namespace overlay {

constexpr int32_t kMaxFrameSide = 65535;

enum class Range { Full, Limited };
enum class Matrix { Bt601, Bt709 };

// How the bytes of the frames mean colours.
struct ColourSpace {
    Range range = Range::Full;
    Matrix matrix = Matrix::Bt601;
};

struct FrameShape {
    int32_t width = 0; // luma pixels, 1 to kMaxFrameSide
    int32_t height = 0;
    bool hasChroma = true; // U,V pairs of half the resolution, or luma alone
    ColourSpace colours;
};

// Which planes of a frame: each value has those of the ones before it.
enum class Planes { None, Luma, LumaAndChroma };

// A moment since the first frame, exact in the clock of whoever counts: frames at a frame rate, or
// time stamps in parts of a second. ticksPerSecond is positive.
struct FrameTime {
    int64_t ticks = 0;
    double ticksPerSecond = 1;
};

} // namespace overlay
