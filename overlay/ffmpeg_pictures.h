// SPDX-License-Identifier: MIT
// PNG and JPEG files, read by FFmpeg's libraries: for clients that have them, and not a part of the
// engine itself.
#pragma once

#include "still.h"

namespace overlay {

// A PictureDecoder. May be called by any thread.
Pixels DecodePicture(std::string_view content, int32_t width, int32_t height);

} // namespace overlay
