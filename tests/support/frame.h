// SPDX-License-Identifier: MIT
// A frame in guarded memory, and the comparison of a drawing with what a predicate says of each
// pixel and chroma sample, over every byte: padding and guards included.
#pragma once

#include "orn_min_render.h"

#include <cstring>
#include <functional>
#include <gtest/gtest.h>
#include <memory>
#include <random>
#include <string>
#include <vector>

constexpr uint8_t kPaper = 0x55;
constexpr OrnMinRenderColour kInk = {200, 11, 22};
constexpr int kGuard = 96;

inline int ChromaSide(int luma) {
    return luma <= 0 ? 0 : (luma + 1) / 2;
}

struct Frame {
    std::vector<uint8_t> luma;
    std::vector<uint8_t> chroma;
    OrnMinRenderImage image = {};

    // planes: bit 0 luma, bit 1 chroma. padding: bytes by which the stride exceeds an even width.
    Frame(int width, int height, unsigned planes = 3, int padding = 6) {
        image.width = width;
        image.height = height;
        image.stride = 2 * ChromaSide(width) + padding;
        luma.assign(static_cast<size_t>(image.stride * height + 2 * kGuard), kPaper);
        chroma.assign(static_cast<size_t>(image.stride * ChromaSide(height) + 2 * kGuard), kPaper);
        image.yPlane = planes & 1 ? luma.data() + kGuard : nullptr;
        image.uvPlane = planes & 2 ? chroma.data() + kGuard : nullptr;
    }
    Frame(const Frame &) = delete;

    void Randomise(std::mt19937 &random) {
        for (auto *plane : {&luma, &chroma})
            for (uint8_t &byte : *plane)
                byte = static_cast<uint8_t>(random());
    }
    uint8_t &Y(int64_t x, int64_t y) {
        return luma[static_cast<size_t>(kGuard + y * image.stride + x)];
    }
    uint8_t *UV(int64_t cx, int64_t cy) {
        return &chroma[static_cast<size_t>(kGuard + cy * image.stride + 2 * cx)];
    }
    void SetUV(int64_t cx, int64_t cy, OrnMinRenderColour colour = kInk) {
        UV(cx, cy)[0] = colour.u;
        UV(cx, cy)[1] = colour.v;
    }
    bool operator==(const Frame &other) const {
        return luma == other.luma && chroma == other.chroma;
    }
    // Ink as '#', anything else as '.': luma rows, and beside them the chroma rows.
    std::string Picture() {
        std::string picture;
        for (int y = 0; y < image.height; ++y) {
            for (int x = 0; x < image.width; ++x)
                picture += Y(x, y) == kInk.y ? '#' : '.';
            if (y < ChromaSide(image.height))
                picture += ' ';
            for (int cx = 0; y < ChromaSide(image.height) && cx < ChromaSide(image.width); ++cx)
                picture += UV(cx, y)[0] == kInk.u && UV(cx, y)[1] == kInk.v ? '#' : '.';
            picture += '\n';
        }
        return picture;
    }
};

// The one context of a test program.
inline OrnMinRenderContext *Context() {
    static const std::unique_ptr<OrnMinRenderContext, decltype(&OrnMinRenderDestroyContext)>
        context(OrnMinRenderCreateContext(), OrnMinRenderDestroyContext);
    return context.get();
}

using Image = const OrnMinRenderImage *;
using Int = int64_t;
using Ints = std::vector<Int>;

inline Ints Range(Int first, Int last) {
    Ints range;
    for (; first <= last; ++first)
        range.push_back(first);
    return range;
}

// Calls test with every choice of one value from each set, until one fails.
template <class Test> void ForAll(const std::vector<Ints> &sets, Test test) {
    std::vector<size_t> at(sets.size());
    for (size_t digit = 0; digit < sets.size();) {
        Ints values;
        for (size_t i = 0; i < sets.size(); ++i)
            values.push_back(sets[i][at[i]]);
        test(values);
        if (testing::Test::HasFatalFailure()) {
            ADD_FAILURE() << "in case " << testing::PrintToString(values);
            return;
        }
        for (digit = 0; digit < sets.size() && ++at[digit] == sets[digit].size(); ++digit)
            at[digit] = 0;
    }
}

// Draws on paper and compares: luma(x, y) and chroma(cx, cy) say what must be ink.
template <class Draw, class LumaInk, class ChromaInk>
testing::AssertionResult Draws(int width, int height, unsigned planes, Draw draw, LumaInk luma,
                               ChromaInk chroma) {
    Frame drawn(width, height, planes);
    Frame expected(width, height, planes);
    draw(&drawn.image);
    for (int y = 0; planes & 1 && y < height; ++y)
        for (int x = 0; x < width; ++x)
            if (luma(x, y))
                expected.Y(x, y) = kInk.y;
    for (int cy = 0; planes & 2 && cy < ChromaSide(height); ++cy)
        for (int cx = 0; cx < ChromaSide(width); ++cx)
            if (chroma(cx, cy))
                expected.SetUV(cx, cy);
    if (drawn == expected)
        return testing::AssertionSuccess();
    return testing::AssertionFailure()
           << width << " x " << height << ", planes " << planes << "\ndrawn:\n"
           << drawn.Picture() << "expected:\n"
           << expected.Picture() << "(the same: bytes outside the frame were written)";
}

inline bool NoInk(int, int) {
    return false;
}

// Which pixels and chroma samples must be ink.
struct Predicate {
    std::function<bool(Int, Int)> luma, chroma;
};

template <class Draw> void Check(Int w, Int h, Int planes, const Predicate &p, Draw draw) {
    ASSERT_TRUE(Draws(int(w), int(h), unsigned(planes), draw, p.luma, p.chroma));
}
