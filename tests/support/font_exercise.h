// SPDX-License-Identifier: MIT
// All that is done with a font file, however broken: for tests of single files and for the fuzzer.
#pragma once

#include "cbf/bytes.h"

// A broken promise of the library stops the program.
void ExerciseFont(const cbf::Bytes &file);
