// SPDX-License-Identifier: MIT
// Threads: each draws, with a context and a font of its own, into its own part of one frame, parts
// that adjoin in columns and in rows; and several measure with one font. Meant for ThreadSanitizer,
// and by itself the frame must be what one thread draws.
#include "font_files.h"
#include "frame.h"

#include <atomic>
#include <thread>

namespace {

constexpr int kPartsAcross = 4, kParts = 8;
constexpr int kPartWidth = 70, kPartHeight = 46; // both even, so that chroma is shared by no two

FontPtr BoxFont() {
    cbf::Font source;
    source.lineHeight = 12;
    source.fallback = {12, 10, 0, 10, 11, cbf::Bytes(120, 1)};
    return Load(cbf::WriteFont(source).bytes);
}

// Draws up to the very edges of the part by each kind of call, every time in other colours.
void DrawPart(Image image, int part, OrnMinRenderContext *context, OrnMinRenderFont *font) {
    const int x = part % kPartsAcross * kPartWidth, y = part / kPartsAcross * kPartHeight;
    const int right = x + kPartWidth, bottom = y + kPartHeight;
    const OrnMinRenderRect all = {x, y, right, bottom}, box = {x, y, right - 1, bottom - 1};
    const OrnMinRenderRect ring = {x + 1, y + 1, right - 2, bottom - 2};
    const OrnMinRenderPoint corners[] = {{x, y}, {right, y}, {right, bottom}, {x, bottom}};
    const std::vector<uint32_t> bits(3 * kPartHeight, 0xA5A5A5A5);
    for (int round = 0; round < 20; ++round) {
        const OrnMinRenderColour ink = {uint8_t(round * 11 + part), uint8_t(round), uint8_t(part)};
        const OrnMinRenderPoint radii = {20, round};
        OrnMinRenderFillPolygonYUV420SP(context, image, corners, 4, kInk);
        OrnMinRenderFillEllipseYUV420SP(context, image, &all, ink);
        OrnMinRenderFillRoundRectYUV420SP(context, image, &all, &radii, ink);
        OrnMinRenderDrawEllipseYUV420SP(context, image, &ring, kInk);
        OrnMinRenderDrawBitmapSemiTransparentYUV420SP(image, &all, kPartWidth, kPartHeight,
                                                      bits.data(), kInk);
        OrnMinRenderDrawFrameYUV420SP(context, image, &box, ink, round % 2);
        OrnMinRenderPoint pen = {x + 2, y + 12};
        OrnMinRenderSetFontDirection(font,
                                     round % 4 ? 0 : int32_t{OrnMinRenderTextDirection::Down});
        OrnMinRenderDrawOutlineTextY8(context, image, font, "AB", &pen, pen.x, 9, round);
    }
}

// Runs work(0), work(1), ... at the same time.
template <class Work> void InThreads(int count, Work work) {
    std::atomic<int> waiting{count};
    std::vector<std::thread> threads;
    for (int i = 0; i < count; ++i)
        threads.emplace_back([&, i] {
            for (--waiting; waiting > 0;)
                std::this_thread::yield();
            work(i);
        });
    for (auto &thread : threads)
        thread.join();
}

TEST(Threads, DrawIntoAdjoiningPixels) {
    Frame together(kPartsAcross * kPartWidth, kParts / kPartsAcross * kPartHeight, 3, 0);
    Frame expected(together.image.width, together.image.height, 3, 0);
    const FontPtr font = BoxFont();
    for (int part = 0; part < kParts; ++part)
        DrawPart(&expected.image, part, Context(), font.get());
    InThreads(kParts, [&](int part) {
        auto *context = OrnMinRenderCreateContext();
        DrawPart(&together.image, part, context, BoxFont().get());
        OrnMinRenderDestroyContext(context);
    });
    EXPECT_TRUE(together == expected);
}

TEST(Threads, MeasureWithOneFont) {
    const FontPtr font = BoxFont();
    InThreads(4, [&](int) {
        for (int i = 0; i < 200; ++i) {
            OrnMinRenderPoint pen = {0, 0};
            OrnMinRenderRect rect;
            OrnMinRenderGetTextRect(nullptr, font.get(), "ABC\nDEFG", &pen, 0, &rect);
            EXPECT_EQ(pen.x, 44);
            char *fitted = OrnMinRenderFixTextWidth(nullptr, font.get(), "AB CD EF", 30);
            EXPECT_STREQ(fitted, "AB \n- CD \n- EF");
            free(fitted);
        }
    });
}

} // namespace
