// SPDX-License-Identifier: MIT
// Whole CBF files through all that is done with a font.
#include "font_exercise.h"
#include "input.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size) {
    ExerciseFont(cbf::Bytes(data, data + size));
    return 0;
}
