// SPDX-License-Identifier: MIT
// Frames and filled rectangles against naive per-pixel references, over all small worlds.
#include "axis_aligned.h"

#include <climits>

namespace {

Predicate FrameLines(Int w, Int h, const OrnMinRenderRect &r, Int style, bool chroma) {
    const Int right = Int{r.right} - 1, bottom = Int{r.bottom} - 1;
    const Predicate lines[] = {HLine(w, h, r.left, r.right, r.top, style, chroma),
                               HLine(w, h, r.left, r.right, bottom, style, chroma),
                               VLine(w, h, r.left, r.top, bottom + 2, style, chroma),
                               VLine(w, h, right, r.top, bottom + 2, style, chroma)};
    const std::vector<Predicate> all(std::begin(lines), std::end(lines));
    const auto any = [all](auto member) {
        return [=](Int x, Int y) {
            return std::any_of(all.begin(), all.end(),
                               [=](const Predicate &p) { return (p.*member)(x, y); });
        };
    };
    return {any(&Predicate::luma), any(&Predicate::chroma)};
}

TEST(FramesAndFills, MatchTheReferenceInAllSmallWorlds) {
    const Ints ends = {INT_MIN, -2, -1, 0, 1, 2, 4, 5, 8, INT_MAX};
    ForAll({{1, 4, 7}, {1, 3, 6}, ends, ends, ends, ends}, [&](const Ints &v) {
        const Int w = v[0], h = v[1], planes = unsigned(v[2] + v[4]) % 3 + 1;
        const OrnMinRenderRect rect = {int(v[2]), int(v[3]), int(v[4]), int(v[5])};
        const int style = int((v[2] + v[3] + v[4] + v[5]) & 3);
        auto *context = Context();
        Check(w, h, planes, FrameLines(w, h, rect, style, true),
              [&](Image i) { OrnMinRenderDrawFrameYUV420SP(context, i, &rect, kInk, style); });
        Check(w, h, planes, FrameLines(w, h, rect, style, false),
              [&](Image i) { OrnMinRenderDrawFrameY8(context, i, &rect, kInk.y, style); });
        const Predicate filled = FilledRect(w, h, rect);
        Check(w, h, planes, filled,
              [&](Image i) { OrnMinRenderFillRectYUV420SP(context, i, &rect, kInk); });
        Check(w, h, planes, {filled.luma, NoInk},
              [&](Image i) { OrnMinRenderFillRectY8(context, i, &rect, kInk.y); });
    });
}

TEST(TallFrames, EveryRowIsFilled) {
    const OrnMinRenderRect rect = {1, -50, 63, 9000};
    Check(64, 5000, 3, {[](Int x, Int) { return x >= 1 && x < 63; }, [](Int, Int) { return true; }},
          [&](Image i) { OrnMinRenderFillRectYUV420SP(Context(), i, &rect, kInk); });
}

} // namespace
