// SPDX-License-Identifier: MIT
// As large as the library measures, which is also what shows if it measures wrongly.
#include "cbfdump/picture.h"

#include "cbf.h"
#include "common/failure.h"

namespace cbfdump {

constexpr int64_t kMaxPixels = int64_t{1} << 28;

Picture BlankPicture(const std::string &path, int64_t width, int64_t height) {
    if (width > kMaxPixels || height > kMaxPixels || width * height > kMaxPixels)
        throw tool::Failure(tool::kBadData, path + ": the picture would have " +
                                                std::to_string(width) + " x " +
                                                std::to_string(height) + " pixels");
    return {static_cast<int32_t>(width), static_cast<int32_t>(height),
            std::vector<uint8_t>(static_cast<size_t>(width * height), kPaperLuma)};
}

OrnMinRenderImage ImageOf(Picture &picture) {
    OrnMinRenderImage image = {};
    image.width = picture.width;
    image.height = picture.height;
    image.stride = picture.width;
    image.yPlane = picture.luma.data();
    return image;
}

OrnMinRenderRect Measure(const OrnMinRenderFont *font, const std::string &text) {
    OrnMinRenderPoint pen = {0, 0};
    OrnMinRenderRect rect = {};
    OrnMinRenderGetTextRect(nullptr, font, text.c_str(), &pen, 0, &rect);
    return rect;
}

Picture DrawText(const std::string &path, OrnMinRenderFont *font, int32_t direction,
                 const std::string &text, bool outlined) {
    OrnMinRenderSetFontDirection(font, direction);
    const OrnMinRenderRect rect = Measure(font, text);
    const int32_t margin = outlined ? cbf::kOutlineLeft : 0;
    const int64_t width = int64_t{rect.right} - rect.left + 2 * margin;
    const int64_t height = int64_t{rect.bottom} - rect.top + 2 * margin;
    Picture picture = BlankPicture(path, width, height);
    const OrnMinRenderImage image = ImageOf(picture);
    OrnMinRenderPoint pen = {margin - rect.left, margin - rect.top};
    const bool vertical =
        direction == OrnMinRenderTextDirection::Down || direction == OrnMinRenderTextDirection::Up;
    const int32_t lineStart = vertical ? pen.y : pen.x;
    if (outlined)
        OrnMinRenderDrawOutlineTextY8(nullptr, &image, font, text.c_str(), &pen, lineStart,
                                      kOutlineLuma, kInkLuma);
    else
        OrnMinRenderDrawTextY8(nullptr, &image, font, text.c_str(), &pen, lineStart, kInkLuma);
    return picture;
}

} // namespace cbfdump
