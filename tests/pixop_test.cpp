// SPDX-License-Identifier: MIT
// Span painters and the building blocks of rectangles, which trust what they are given.
#include "frame.h"

namespace {

TEST(Spans, CountPointsAndLeaveEmptySpansAlone) {
    const OrnMinRenderScanline spans[] = {{{1, 2}, {3, 2}}, {{2, 0}, {2, 0}}, {{0, 3}, {4, 3}}};
    for (int count : {-2, 0, 2, 4, 6}) {
        const auto ink = [=](Int x, Int y) {
            return (count >= 2 && y == 2 && x >= 1 && x < 3) || (count >= 6 && y == 3 && x < 4);
        };
        Check(6, 4, 1, {ink, NoInk},
              [&](Image i) { OrnMinRenderDrawScanlinesY8(i, spans, count, kInk.y); });
        Check(12, 8, 2, {NoInk, ink},
              [&](Image i) { OrnMinRenderDrawScanlinesUV(i, spans, count, kInk); });
    }
}

TEST(Spans, ChromaRunsOfEveryLengthPaintWholePairs) {
    ForAll({Range(0, 8), Range(8, 60)}, [](const Ints &v) {
        const OrnMinRenderScanline span = {{int(v[0]), 0}, {int(v[1]), 0}};
        Check(120, 2, 2, {NoInk, [&](Int cx, Int) { return cx >= v[0] && cx < v[1]; }},
              [&](Image i) { OrnMinRenderDrawScanlinesUV(i, &span, 2, kInk); });
    });
}

// Rounded outward they would paint a chroma sample that holds nothing of them.
TEST(BuildingBlocks, EmptyRectanglesAtOddCoordinatesPaintNothing) {
    for (const OrnMinRenderRect rect : {OrnMinRenderRect{3, 1, 3, 5}, OrnMinRenderRect{1, 3, 5, 3}})
        Check(8, 8, 3, {NoInk, NoInk}, [&](Image i) {
            OrnMinRenderFillRectY8Impl(Context(), i, &rect, kInk.y);
            OrnMinRenderFillRectUVImpl(Context(), i, &rect, kInk);
        });
}

} // namespace
