// SPDX-License-Identifier: MIT
// A picture with transparent parts, drawn as it is into every frame.
#pragma once

#include "frame.h"

#include <functional>
#include <orn_min_render.h>
#include <string_view>
#include <vector>

namespace overlay {

constexpr int64_t kMaxPicturePixels = int64_t{8192} * 4320;

// Bytes R, G, B and A for each pixel, row after row. A of 0 is transparent, 255 is not.
struct Pixels {
    int32_t width = 0;
    int32_t height = 0;
    std::vector<uint8_t> rgba;
};

// Turns the content of a file into at most kMaxPicturePixels pixels, scaled to a width and a
// height. Of these, 0 is what keeps the picture's shape; with both 0 it keeps its size. Throws
// Failure, with the reason alone.
using PictureDecoder =
    std::function<Pixels(std::string_view content, int32_t width, int32_t height)>;

class Still {
  public:
    // What is less than half opaque is left out, what is more covers.
    explicit Still(Pixels ofPicture);

    // Gives the pixels the luma and the chroma that they have in frames like these.
    void Mix(const ColourSpace &colours);

    // Once it is mixed. Chroma samples that both share are the picture's where it covers half of
    // their pixels or more.
    void Draw(const OrnMinRenderImage &image, OrnMinRenderPoint corner) const;

  private:
    // Bytes of a plane that are drawn, of a row that may have several such runs.
    struct Run {
        int32_t row;
        int32_t first;
        int32_t end;
    };
    struct Plane {
        int32_t rowBytes = 0;
        std::vector<uint8_t> bytes;
        std::vector<Run> runs; // downward, then to the right
    };

    template <typename Visit> void VisitSample(int32_t column, int32_t row, Visit visit) const;
    const uint8_t *PixelAt(int32_t x, int32_t y) const; // its R, G, B, A
    bool IsOpaque(int32_t x, int32_t y) const;
    bool IsSampleOpaque(int32_t column, int32_t row) const;
    uint32_t MeanAt(int32_t column, int32_t row) const;
    static void DrawPlane(const Plane &plane, OrnMinRenderImage image, OrnMinRenderPoint corner);

    Pixels pixels;
    Plane luma;
    Plane chroma;
};

} // namespace overlay
