// SPDX-License-Identifier: MIT
// How much memory is in use, and was at most. Needs the linker's --wrap for malloc, calloc, realloc
// and free.
#pragma once

#include <cstddef>

// Bytes in use now, from which the peak counts from now on.
size_t ResetPeak();
size_t PeakBytes();
