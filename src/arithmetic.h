// SPDX-License-Identifier: MIT
// The integer helpers that all modules clip with: 64 bits in, and back to 32 bits only once a value
// is known to fit.
#pragma once

#include <stdint.h>

namespace orn {

inline int64_t Min(int64_t a, int64_t b) {
    return a < b ? a : b;
}

inline int64_t Max(int64_t a, int64_t b) {
    return a > b ? a : b;
}

// Values beyond the int32 limits stop there, so that a sum never wraps to the frame's other side.
inline int32_t Saturate(int64_t value) {
    return static_cast<int32_t>(Max(INT32_MIN, Min(value, INT32_MAX)));
}

// The nearest value in 0..size. A negative size counts as 0.
inline int32_t ClampToSize(int64_t value, int32_t size) {
    return static_cast<int32_t>(Max(0, Min(value, size)));
}

} // namespace orn
