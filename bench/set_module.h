// SPDX-License-Identifier: MIT
// What a module with one build of the library inside gives to orn_sets.
#pragma once

#include "jobs.h"

using SetPainters = bench::MakePainter (*)();

constexpr char kSetPaintersName[] = "OrnSetPainters";

extern "C" __attribute__((visibility("default"))) bench::MakePainter OrnSetPainters();
