// SPDX-License-Identifier: MIT
// Runs a fixed set of calls under callgrind, or in an emulator that lists every instruction:
// numbers that a busy machine does not change. Called by scripts/instructions: instructions
// FONT.cbf
#include "orn_min_render.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <vector>
#ifdef __x86_64__
#include <valgrind/callgrind.h>
#endif

// In an emulator's list, what lies between these two belongs to the job whose name is printed.
extern "C" __attribute__((noinline)) void CountingBegins() {
    __asm__ volatile("");
}
extern "C" __attribute__((noinline)) void CountingEnds() {
    __asm__ volatile("");
}

namespace {

constexpr int kWidth = 640;
constexpr int kHeight = 480;
constexpr OrnMinRenderColour kColour = {100, 50, 200};

struct Bench {
    std::vector<uint8_t> memory = std::vector<uint8_t>(kWidth * kHeight * 3 / 2);
    OrnMinRenderImage image = {};
    OrnMinRenderContext *context = OrnMinRenderCreateContext();
    OrnMinRenderFont *font;

    explicit Bench(const char *fontPath) : font(OrnMinRenderLoadCbfFont(fontPath)) {
        image.width = kWidth;
        image.height = kHeight;
        image.stride = kWidth;
        image.yPlane = memory.data();
        image.uvPlane = memory.data() + kWidth * kHeight;
    }
};

// The first call of a job warms what it needs; the others are counted.
#ifdef __x86_64__
template <class Job> void Count(const char *name, Job job) {
    constexpr int kCalls = 100;
    job();
    CALLGRIND_ZERO_STATS;
    for (int i = 0; i < kCalls; ++i)
        job();
    CALLGRIND_DUMP_STATS_AT(name);
}
#else
template <class Job> void Count(const char *name, Job job) {
    job();
    CountingBegins();
    job();
    CountingEnds();
    std::puts(name);
}
#endif

std::vector<OrnMinRenderPoint> Blob() {
    std::vector<OrnMinRenderPoint> points;
    for (int i = 0; i < 500; ++i) {
        const double angle = i * 2 * M_PI / 500;
        const double radius = 150 + 20 * std::sin(9 * angle);
        points.push_back({static_cast<int32_t>(320 + radius * std::cos(angle)),
                          static_cast<int32_t>(240 + radius * std::sin(angle))});
    }
    return points;
}

std::vector<uint32_t> Rings() {
    std::vector<uint32_t> words(128);
    for (int y = 0; y < 64; ++y)
        for (int x = 0; x < 64; ++x)
            if (((x - 32) * (x - 32) + (y - 32) * (y - 32)) / 64 % 3 == 0)
                words[static_cast<size_t>(2 * y + x / 32)] |= 0x80000000u >> x % 32;
    return words;
}

void CountLines(Bench &b) {
    Count("hline",
          [&] { OrnMinRenderDrawHLineYUV420SP(b.context, &b.image, 21, 300, 51, kColour, 0); });
    Count("hline-dashed",
          [&] { OrnMinRenderDrawHLineYUV420SP(b.context, &b.image, 21, 300, 51, kColour, 1); });
    Count("vline",
          [&] { OrnMinRenderDrawVLineYUV420SP(b.context, &b.image, 51, 21, 300, kColour, 0); });
    Count("line", [&] {
        OrnMinRenderDrawLineYUV420SP(b.context, &b.image, {20, 30}, {420, 310}, kColour, 0);
    });
}

void CountShapes(Bench &b) {
    const OrnMinRenderRect small = {40, 50, 56, 66};
    const OrnMinRenderRect large = {40, 50, 240, 170};
    const OrnMinRenderPoint radii = {12, 12};
    const OrnMinRenderPoint triangle[] = {{100, 20}, {400, 150}, {180, 400}};
    const auto blob = Blob();
    Count("fill-16", [&] { OrnMinRenderFillRectYUV420SP(b.context, &b.image, &small, kColour); });
    Count("fill-200", [&] { OrnMinRenderFillRectYUV420SP(b.context, &b.image, &large, kColour); });
    Count("frame", [&] { OrnMinRenderDrawFrameYUV420SP(b.context, &b.image, &large, kColour, 0); });
    Count("ellipse",
          [&] { OrnMinRenderDrawEllipseYUV420SP(b.context, &b.image, &large, kColour); });
    Count("disc", [&] { OrnMinRenderFillEllipseYUV420SP(b.context, &b.image, &large, kColour); });
    Count("roundbox",
          [&] { OrnMinRenderDrawRoundRectYUV420SP(b.context, &b.image, &large, &radii, kColour); });
    Count("roundfill",
          [&] { OrnMinRenderFillRoundRectYUV420SP(b.context, &b.image, &large, &radii, kColour); });
    Count("triangle",
          [&] { OrnMinRenderFillPolygonYUV420SP(b.context, &b.image, triangle, 3, kColour); });
    Count("blob", [&] {
        OrnMinRenderFillPolygonYUV420SP(b.context, &b.image, blob.data(), blob.size(), kColour);
    });
}

void CountPictures(Bench &b) {
    const auto words = Rings();
    const OrnMinRenderRect same = {33, 41, 97, 105};
    const OrnMinRenderRect enlarged = {33, 41, 233, 241};
    Bench source("");
    Count("bitmap",
          [&] { OrnMinRenderDrawBitmapYUV420SP(&b.image, &same, 64, 64, words.data(), kColour); });
    Count("bitmap-200-half", [&] {
        OrnMinRenderDrawBitmapSemiTransparentYUV420SP(&b.image, &enlarged, 64, 64, words.data(),
                                                      kColour);
    });
    Count("blit", [&] { OrnMinRenderBltYUV420SP(&b.image, enlarged, &source.image, {10, 10}); });
}

void CountText(Bench &b, const char *fontPath) {
    const char *text = "The quick brown fox, 0123456789";
    Count("text", [&] {
        OrnMinRenderPoint pen = {20, 100};
        OrnMinRenderDrawTextY8(b.context, &b.image, b.font, text, &pen, 20, 200);
    });
    Count("text-outlined", [&] {
        OrnMinRenderPoint pen = {20, 100};
        OrnMinRenderDrawOutlineTextY8(b.context, &b.image, b.font, text, &pen, 20, 16, 200);
    });
    Count("measure", [&] {
        OrnMinRenderPoint pen = {20, 100};
        OrnMinRenderRect rect;
        OrnMinRenderGetTextRect(b.context, b.font, text, &pen, 20, &rect);
    });
    Count("fit", [&] { std::free(OrnMinRenderFixTextWidth(b.context, b.font, text, 60)); });
    Count("decode", [&] {
        OrnMinRenderPoint pen = {20, 100};
        OrnMinRenderSetFontDirection(b.font, 7);
        OrnMinRenderSetFontDirection(b.font, 0);
        OrnMinRenderDrawTextY8(b.context, &b.image, b.font, text, &pen, 20, 200);
    });
    Count("load", [&] { OrnMinRenderDestroyFont(OrnMinRenderLoadCbfFont(fontPath)); });
}

} // namespace

int main(int argc, char **argv) {
    if (argc != 2)
        return std::fputs("usage: instructions FONT.cbf\n", stderr), 2;
    Bench bench(argv[1]);
    if (!bench.font || !bench.context)
        return std::fprintf(stderr, "instructions: %s: no font\n", argv[1]), 1;
    CountLines(bench);
    CountShapes(bench);
    CountPictures(bench);
    CountText(bench, argv[1]);
    return 0;
}
