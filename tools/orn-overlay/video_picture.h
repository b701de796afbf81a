// SPDX-License-Identifier: MIT
// Some frames of a clip, with their overlays, as one PNG picture.
#pragma once

#include "options.h"
#include "overlays.h"

// The frame or the sheet that the options ask for. Throws tool::Failure.
void MakePicture(Overlays &overlays, const Options &options);
