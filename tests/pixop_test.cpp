// SPDX-License-Identifier: MIT
// Pixel writers, span painters and the building blocks of rectangles, which trust what they are
// given.
#include "axis_aligned.h"

namespace {

TEST(Spans, CountPointsAndLeaveEmptySpansAlone) {
    const OrnMinRenderScanline spans[] = {{{1, 2}, {3, 2}}, {{2, 0}, {2, 0}}, {{0, 3}, {4, 3}}};
    for (int count = -2; count <= 6; ++count) { // an odd one counts its last point alone
        const auto ink = [=](Int x, Int y) {
            return (count >= 1 && y == 2 && x >= 1 && x < 3) || (count >= 5 && y == 3 && x < 4);
        };
        Check(6, 4, 1, {ink, NoInk},
              [&](Image i) { OrnMinRenderDrawScanlinesY8(i, spans, count, kInk.y); });
        Check(12, 8, 2, {NoInk, ink},
              [&](Image i) { OrnMinRenderDrawScanlinesUV(i, spans, count, kInk); });
    }
}

// All that lie inside the frame. Empty ones paint nothing: rounded outward they would paint a
// chroma sample that holds nothing of them.
TEST(BuildingBlocks, FillRectanglesInsideTheFrame) {
    ForAll({Range(0, 5), Range(0, 5), Range(0, 7), Range(0, 7), Range(0, 3)}, [](const Ints &v) {
        const OrnMinRenderRect rect = {int(v[0]), int(v[2]), int(v[1]), int(v[3])};
        if (rect.left > rect.right || rect.top > rect.bottom)
            return;
        const Predicate filled = FilledRect(5, 7, rect);
        Check(5, 7, v[4], {filled.luma, NoInk},
              [&](Image i) { OrnMinRenderFillRectY8Impl(nullptr, i, &rect, kInk.y); });
        Check(5, 7, v[4], {NoInk, filled.chroma},
              [&](Image i) { OrnMinRenderFillRectUVImpl(nullptr, i, &rect, kInk); });
    });
}

TEST(BuildingBlocks, WriteSinglePixels) {
    ForAll({Range(0, 4), Range(0, 6)}, [](const Ints &v) {
        const int x = int(v[0]), y = int(v[1]);
        const auto here = [=](Int px, Int py) { return px == x && py == y; };
        Check(5, 7, 1, {here, NoInk}, [=](Image i) { OrnMinRenderSetYPixel(i, x, y, kInk.y); });
        Check(10, 14, 2, {NoInk, here}, [=](Image i) { OrnMinRenderSetUVPixel(i, x, y, kInk); });
    });
}

} // namespace
