// SPDX-License-Identifier: MIT
// Pictures in files of their own, such as PNG and JPEG.
#pragma once

#include "overlay/still.h"

// Reads them for the engine; null without FFmpeg's libraries.
overlay::PictureDecoder PictureFileDecoder();
