// SPDX-License-Identifier: MIT
// Pictures as files: PGM, or PNG, which the ffmpeg program makes.
#pragma once

#include "cbfdump/picture.h"

namespace cbfdump {

// A path that ends in ".pgm" gets that format, any other one PNG. Throws tool::Failure.
void WritePicture(const Picture &picture, const std::string &path);

} // namespace cbfdump
