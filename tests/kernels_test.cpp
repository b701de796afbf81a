// SPDX-License-Identifier: MIT
// The innermost loops: what those for special instructions write against what the plain ones do.
#include "frame.h"
#include "pixop.h"

namespace {

// On machines with the instructions for them, the wide stores; elsewhere both are the same.
TEST(Stores, WideOnesWriteWhatThePlainOnesDo) {
    std::mt19937 random(13);
    const auto pick = [&](int from, int to) {
        return from + int(random() % unsigned(to - from + 1));
    };
    for (int i = 0; i < 20000; ++i) {
        Frame wide(i % 9 ? 160 : 9000, 12, 3, 8), plain(i % 9 ? 160 : 9000, 12, 3, 8);
        wide.Randomise(random);
        plain.luma = wide.luma;
        const auto stride = wide.image.stride;
        const bool luma = random() % 2;
        const Pattern pattern = luma ? LumaPattern(uint8_t(random()))
                                     : ChromaPattern({0, uint8_t(random()), uint8_t(random())});
        const ptrdiff_t step = luma ? 1 : 2, first = pick(0, 40) * step;
        const auto at = [&](Frame &frame) { return frame.image.yPlane + first; };
        if (i % 3 == 0) {
            const int bytes = int(step) * pick(0, int((wide.image.width - first) / step));
            FillRows(at(wide), stride, 12, bytes, pattern);
            FillRowsPlain(at(plain), stride, 12, bytes, pattern);
        } else if (i % 3 == 1) {
            std::vector<OrnMinRenderScanline> spans;
            for (int n = pick(0, 60); n > 0; --n) {
                const int start = pick(0, 50), y = pick(0, 11);
                spans.push_back({{start, y}, {pick(start, 80), y}});
            }
            PaintSpans({wide.image.yPlane, stride, step}, spans.data(), int(spans.size()), pattern);
            PaintSpansPlain({plain.image.yPlane, stride, step}, spans.data(), int(spans.size()),
                            pattern);
        } else {
            std::vector<uint32_t> words(12 * 3);
            for (auto &word : words)
                word = random() % 8 ? uint32_t(random() & random()) : ~0u;
            const Mask mask = {words.data(),
                               pick(0, 2),
                               12,
                               luma ? pick(1, 3) : 1,
                               BitRange(pick(0, 31), 32),
                               BitRange(0, pick(1, 32))};
            PaintMask(at(wide), stride, mask, {pattern, step, i % 2 == 0});
            PaintMaskPlain(at(plain), stride, mask, {pattern, step, i % 2 == 0});
        }
        ASSERT_EQ(wide.luma, plain.luma) << i;
    }
}

} // namespace
