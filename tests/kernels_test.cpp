// SPDX-License-Identifier: MIT
// The innermost loops of every set of instructions that the machine has, over all alignments and
// lengths, in memory between pages without access: those that store must store what the plain ones
// do, and those that collect bits what a loop over the samples collects.
#include "fence.h"
#include "kernels/kernels.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <random>
#include <vector>

using namespace orn;

namespace {

constexpr size_t kRoom = 8192;
constexpr ptrdiff_t kAlignments = 64;

std::vector<kernels::Set> BetterSets() {
    std::vector<kernels::Set> sets;
    for (int set = 1; set <= int(kernels::kLastSet); ++set)
        if (kernels::Has(kernels::Set(set)))
            sets.push_back(kernels::Set(set));
    return sets;
}

// Runs test(set) for every set but the plain one.
template <class Test> void ForBetterSets(Test test) {
    if (BetterSets().empty())
        GTEST_SKIP() << "this processor, or this build, has the plain loops alone";
    for (const kernels::Set set : BetterSets()) {
        SCOPED_TRACE("set " + std::to_string(int(set)));
        test(set);
    }
}

// The same noise twice. A drawing of so many bytes is made in both, at a distance from the lower or
// from the upper end; both must then hold the same bytes.
class Rooms {
  public:
    template <class Draw>
    void Compare(ptrdiff_t distance, ptrdiff_t bytes, bool atEnd, kernels::Set set, Draw draw) {
        for (auto *room : {&better, &plain}) {
            uint8_t *first = atEnd ? room->end - distance - bytes : room->first + distance;
            draw(first, room == &better ? set : kernels::Set::Plain);
        }
        ASSERT_EQ(memcmp(better.first, plain.first, kRoom), 0)
            << bytes << " bytes, " << distance << " from the " << (atEnd ? "end" : "start");
    }

  private:
    Fenced better{kRoom}, plain{kRoom};
};

class Kernels : public testing::Test {
  protected:
    int Pick(int from, int to) {
        return from + int(random() % unsigned(to - from + 1));
    }
    Pattern RandomPattern(bool luma) {
        const auto byte = [&] { return uint8_t(random()); };
        return luma ? LumaPattern(byte()) : ChromaPattern({0, byte(), byte()});
    }
    std::vector<uint32_t> RandomWords(size_t count) {
        std::vector<uint32_t> words(count);
        for (auto &word : words)
            word = random() % 8 ? uint32_t(random() & random()) : ~0u;
        return words;
    }

    std::mt19937 random{13};
    Rooms rooms;
};

TEST_F(Kernels, FillRows) {
    ForBetterSets([&](kernels::Set set) {
        for (const bool luma : {true, false})
            for (ptrdiff_t distance = 0; distance < kAlignments; distance += luma ? 1 : 2)
                for (ptrdiff_t length = 0; length < 300 && !HasFatalFailure();
                     length += luma ? 1 : 2) {
                    const Pattern pattern = RandomPattern(luma);
                    const int rows = Pick(1, 3);
                    const ptrdiff_t stride = 2 * Pick(int(length) / 2, 400) + luma;
                    rooms.Compare(distance, (rows - 1) * stride + length, length % 4 < 2, set,
                                  [&](uint8_t *first, kernels::Set s) {
                                      kernels::FillRows(first, stride, rows, length, pattern, s);
                                  });
                }
    });
}

// Around the lengths from which other ways of filling are chosen.
TEST_F(Kernels, FillLongRows) {
    constexpr size_t kLong = 17000;
    const Fenced better(kLong), plain(kLong);
    ForBetterSets([&](kernels::Set set) {
        for (const ptrdiff_t length : {16382, 16383, 16384, 16386, 16999})
            for (const bool luma : {true, false}) {
                const ptrdiff_t bytes = luma ? length : length & ~1;
                const Pattern pattern = RandomPattern(luma);
                kernels::FillRows(better.first, 0, 1, bytes, pattern, set);
                kernels::FillRows(plain.first, 0, 1, bytes, pattern, kernels::Set::Plain);
                ASSERT_EQ(memcmp(better.first, plain.first, kLong), 0) << length;
            }
    });
}

TEST_F(Kernels, PaintSpans) {
    constexpr int kRows = 16;
    ForBetterSets([&](kernels::Set set) {
        for (int i = 0; i < 6000 && !HasFatalFailure(); ++i) {
            const bool luma = i % 2;
            const ptrdiff_t sampleBytes = luma ? kLumaBytes : kChromaBytes;
            const int columns = Pick(1, 90);
            const int64_t stride = columns * sampleBytes + 2 * Pick(0, 40) + luma;
            std::vector<OrnMinRenderScanline> spans;
            for (int n = Pick(0, 60); n > 0; --n) {
                const int y = Pick(0, kRows - 1);
                spans.push_back({{Pick(0, columns), y}, {Pick(0, columns), y}}); // some reversed
            }
            const Pattern pattern = RandomPattern(luma);
            rooms.Compare(Pick(0, kAlignments / 2) * 2 + luma,
                          (kRows - 1) * stride + columns * sampleBytes, i % 4 < 2, set,
                          [&](uint8_t *first, kernels::Set s) {
                              kernels::PaintSpans({first, stride, sampleBytes}, spans.data(),
                                                  int(spans.size()), pattern, s);
                          });
        }
    });
}

// Every first and every last bit, with the sample of the first one that counts at the lower fence
// or that of the last one at the upper fence.
TEST_F(Kernels, PaintMask) {
    ForBetterSets([&](kernels::Set set) {
        for (int i = 0; i < 32 * 32 * 4 * 2 && !HasFatalFailure(); ++i) {
            const int firstBit = i % 32, endBit = i / 32 % 32 + 1;
            const bool luma = i & 1024, half = i & 2048, atEnd = i & 4096;
            const int words = firstBit < endBit ? Pick(1, 4) : Pick(2, 4), rows = Pick(1, 6);
            const ptrdiff_t sampleBytes = luma ? kLumaBytes : kChromaBytes;
            const ptrdiff_t bytes = (32 * (words - 1) + endBit - firstBit) * sampleBytes;
            const int64_t stride = bytes + 2 * Pick(0, 20) + luma;
            const int pitch = i % 5 ? Pick(words, words + 1) : 0;
            const auto bits = RandomWords(size_t(pitch * rows + words));
            const Mask mask = {bits.data(),        pitch, rows, words, BitRange(firstBit, 32),
                               BitRange(0, endBit)};
            const Ink ink = {RandomPattern(luma), half};
            rooms.Compare(0, (rows - 1) * stride + bytes, atEnd, set,
                          [&](uint8_t *first, kernels::Set s) {
                              uint8_t *bitZero = first - firstBit * sampleBytes;
                              kernels::PaintMask({bitZero, stride, sampleBytes}, mask, ink, s);
                          });
        }
    });
}

TEST_F(Kernels, PaintNarrowMask) {
    ForBetterSets([&](kernels::Set set) {
        for (int columns = 1; columns <= 32; ++columns)
            for (ptrdiff_t distance = 0; distance < kAlignments && !HasFatalFailure(); ++distance)
                for (const bool atEnd : {false, true}) {
                    const int rows = Pick(1, 20);
                    const ptrdiff_t stride = Pick(columns, 100);
                    const auto words = RandomWords(size_t(rows));
                    const Pattern pattern = RandomPattern(true);
                    rooms.Compare(distance, (rows - 1) * stride + columns, atEnd, set,
                                  [&](uint8_t *first, kernels::Set s) {
                                      kernels::PaintNarrowMask(first, stride, words.data(), rows,
                                                               BitRange(0, columns), pattern, s);
                                  });
                }
    });
}

// Rows of words that end at a fence, as do the words that they become.
void CheckExpansion(kernels::Set set, int width, int size, const BitScaling &scaling,
                    std::mt19937 &random) {
    constexpr int kRows = 3;
    static const Fenced from(65536), to(65536);
    const int words = WordsPerRow(scaling.samples);
    auto *const source = reinterpret_cast<uint32_t *>(from.end) - kRows * scaling.rowWords;
    auto *const mask = reinterpret_cast<uint32_t *>(to.end) - kRows * words;
    const auto bits = [&] { return random() % 8 ? uint32_t(random()) : ~0u; };
    std::generate(source, source + kRows * scaling.rowWords, bits);
    const uint32_t *rows[kRows];
    for (int row = 0; row < kRows; ++row)
        rows[row] = source + row * scaling.rowWords;
    BitPlan plan;
    kernels::PlanBits(&plan, scaling, set);
    kernels::ExpandBits(mask, words, rows, kRows, plan, set);
    for (int row = 0; row < kRows; ++row)
        for (int i = 0; i < scaling.samples; ++i) {
            const int64_t column = (scaling.first + i) * scaling.step / kSameSize;
            ASSERT_EQ(mask[row * words + i / 32] >> i % 32 & 1,
                      rows[row][column / 32] >> (31 - column % 32) & 1)
                << width << " columns over " << size << ", sample " << scaling.first + i;
        }
}

TEST_F(Kernels, ExpandBits) {
    std::vector<kernels::Set> sets = BetterSets();
    sets.push_back(kernels::Set::Plain);
    const int sizes[] = {1, 2, 31, 32, 33, 64, 65, 100, 511, 512, 513, 1100, 70000};
    for (const kernels::Set set : sets)
        for (int i = 0; i < 4000 && !HasFatalFailure(); ++i) {
            const int width = i % 3 ? Pick(1, 140) : sizes[random() % 12];
            const int multiples[] = {width, 2 * width, (width + 1) / 2, (width + 3) / 4, 3 * width};
            const int size = i % 2 ? multiples[random() % 5] : sizes[random() % 13];
            const int first = Pick(0, size - 1);
            const int samples = Pick(1, std::min(kMaxScaledBits, size - first));
            SCOPED_TRACE("set " + std::to_string(int(set)));
            CheckExpansion(set, width, size,
                           {first, width * kSameSize / size, samples, WordsPerRow(width)}, random);
        }
}

} // namespace
