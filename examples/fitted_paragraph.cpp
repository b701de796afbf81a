// SPDX-License-Identifier: MIT
// Writes a text into a Y8 frame, broken into lines that fit, on a background of its own:
// fitted_paragraph FONT.cbf WIDTH TEXT > out.pgm (a frame of 320 x 200)
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <orn_min_render.h>
#include <vector>

namespace {

constexpr int32_t kMargin = 6; // outlines reach 3 pixels beyond the measured text

void DrawParagraph(OrnMinRenderContext *context, const OrnMinRenderImage &image,
                   OrnMinRenderFont *font, OrnMinRenderPoint corner, int32_t width,
                   const char *text) {
    const std::unique_ptr<char, decltype(&std::free)> fitted(
        OrnMinRenderFixTextWidth(context, font, text, width), std::free);
    if (!fitted)
        return;
    OrnMinRenderPoint pen{0, 0};
    OrnMinRenderRect ink{};
    OrnMinRenderGetTextRect(context, font, fitted.get(), &pen, 0, &ink);
    pen = {corner.x + kMargin - ink.left, corner.y + kMargin - ink.top};
    const OrnMinRenderRect background{corner.x, corner.y,
                                      corner.x + ink.right - ink.left + 2 * kMargin,
                                      corner.y + ink.bottom - ink.top + 2 * kMargin};
    OrnMinRenderFillRectY8(context, &image, &background, 40);
    OrnMinRenderDrawOutlineTextY8(context, &image, font, fitted.get(), &pen, pen.x, 40, 235);
}

} // namespace

int main(int argc, char **argv) {
    const int32_t textWidth = argc == 4 ? std::atoi(argv[2]) : 0;
    if (textWidth <= 0) {
        std::fprintf(stderr, "usage: fitted_paragraph FONT.cbf WIDTH TEXT > out.pgm\n");
        return 2;
    }
    const std::unique_ptr<OrnMinRenderContext, decltype(&OrnMinRenderDestroyContext)> context(
        OrnMinRenderCreateContext(), OrnMinRenderDestroyContext);
    const std::unique_ptr<OrnMinRenderFont, decltype(&OrnMinRenderDestroyFont)> font(
        OrnMinRenderLoadCbfFont(argv[1]), OrnMinRenderDestroyFont);
    if (!context || !font) {
        std::fprintf(stderr, "fitted_paragraph: %s: no CBF font\n", argv[1]);
        return 1;
    }
    constexpr int32_t kWidth = 320, kHeight = 200;
    std::vector<uint8_t> luma(kWidth * kHeight, 128);
    OrnMinRenderImage image{};
    image.width = kWidth;
    image.height = kHeight;
    image.stride = kWidth;
    image.yPlane = luma.data();
    DrawParagraph(context.get(), image, font.get(), {16, 12}, textWidth, argv[3]);
    std::printf("P5\n%d %d\n255\n", kWidth, kHeight);
    return std::fwrite(luma.data(), 1, luma.size(), stdout) != luma.size();
}
