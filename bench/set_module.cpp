// SPDX-License-Identifier: MIT
// The way into a module for orn_sets.
#include "set_module.h"

bench::MakePainter OrnSetPainters() {
    return bench::MakeLibrary;
}
