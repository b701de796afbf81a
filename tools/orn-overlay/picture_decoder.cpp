// SPDX-License-Identifier: MIT
#include "picture_decoder.h"

#include "av.h"

#include "overlay/ffmpeg_pictures.h"

overlay::PictureDecoder PictureFileDecoder() {
    KeepLibraryMessages();
    return overlay::DecodePicture;
}
