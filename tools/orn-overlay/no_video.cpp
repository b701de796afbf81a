// SPDX-License-Identifier: MIT
#include "picture_decoder.h"
#include "video.h"

#include "common/failure.h"

overlay::PictureDecoder PictureFileDecoder() {
    return nullptr;
}

void DrawVideo(Overlays & /*overlays*/, const Options & /*options*/) {
    throw tool::Failure(tool::kBadUsage,
                        "this build reads raw frames only, without -i and -o: it was "
                        "made with ORN_MIN_RENDER_VIDEO=OFF");
}
