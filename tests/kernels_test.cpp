// SPDX-License-Identifier: MIT
// The innermost loops of every set of instructions that the machine has, the plain one too, over
// all alignments and lengths, in memory between pages without access, beside loops over single
// samples.
#include "fence.h"
#include "kernels/kernels.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <numeric>
#include <random>
#include <vector>

using namespace orn;

namespace {

constexpr size_t kRoom = 8192;
constexpr ptrdiff_t kAlignments = 64;

std::vector<kernels::Set> Sets() {
    std::vector<kernels::Set> sets;
    for (int set = 0; set <= int(kernels::kLastSet); ++set)
        if (kernels::Has(kernels::Set(set)))
            sets.push_back(kernels::Set(set));
    return sets;
}

template <class Test> void ForSets(Test test) {
    for (const kernels::Set set : Sets()) {
        SCOPED_TRACE("set " + std::to_string(int(set)));
        test(set);
    }
}

// The same noise twice. A drawing of so many bytes is made in one, at a distance from the lower or
// from the upper end, and what it should be in the other; both must then hold the same bytes.
class Rooms {
  public:
    template <class Draw, class Expect>
    void Compare(ptrdiff_t distance, ptrdiff_t bytes, bool atEnd, Draw draw, Expect expect) {
        const auto start = [&](const Fenced &room) {
            return atEnd ? room.end - distance - bytes : room.first + distance;
        };
        draw(start(drawn));
        expect(start(expected));
        ASSERT_EQ(memcmp(drawn.first, expected.first, drawn.end - drawn.first), 0)
            << bytes << " bytes, " << distance << " from the " << (atEnd ? "end" : "start");
    }
    explicit Rooms(size_t size = kRoom) : drawn(size), expected(size) {
    }

  private:
    Fenced drawn, expected;
};

// As they lie in memory, whatever the order of the processor's bytes.
uint8_t ByteOf(const Pattern &pattern, ptrdiff_t i) {
    uint8_t bytes[sizeof pattern.bytes];
    memcpy(bytes, &pattern.bytes, sizeof bytes);
    return bytes[i];
}

void FillSlowly(uint8_t *first, ptrdiff_t bytes, const Pattern &pattern) {
    for (ptrdiff_t i = 0; i < bytes; ++i)
        first[i] = ByteOf(pattern, i % 2);
}

void PaintSample(uint8_t *sample, ptrdiff_t sampleBytes, const Ink &ink) {
    for (ptrdiff_t i = 0; i < sampleBytes; ++i) {
        const int colour = ByteOf(ink.pattern, i);
        sample[i] = uint8_t(ink.half ? (sample[i] + colour) / 2 : colour);
    }
}

void PaintSlowly(const Plane &plane, const Mask &mask, const Ink &ink) {
    int64_t y = 0;
    for (int row = 0; row < mask.rows; ++row)
        for (int n = Repeats(mask, row); n > 0; --n, ++y)
            for (int x = 0; x < 32 * mask.wordsPerRow; ++x)
                if ((mask.words[row * mask.pitch + x / 32] & EdgeBits(mask, x / 32)) >> x % 32 & 1)
                    PaintSample(SampleAt(plane, x, y), plane.sampleBytes, ink);
}

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

#if defined(__x86_64__) && defined(ORN_ALL_SETS)
// The compiler's runtime asks the processor for itself. A set too few would only be slower, one too
// many ends the program, but on other machines than this one.
TEST_F(Kernels, SetsAreThoseOfTheProcessor) {
    const bool avx2 = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("bmi") &&
                      __builtin_cpu_supports("bmi2") && __builtin_cpu_supports("popcnt");
    const bool avx512 = avx2 && __builtin_cpu_supports("avx512f") &&
                        __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
    std::vector<kernels::Set> expected = {kernels::Set::Plain};
    if (avx2)
        expected.push_back(kernels::Set::Avx2);
    if (avx512)
        expected.push_back(kernels::Set::Avx512);
    EXPECT_EQ(Sets(), expected);
    EXPECT_EQ(kernels::Best(), expected.back());
}
#endif

TEST_F(Kernels, FillRows) {
    ForSets([&](kernels::Set set) {
        for (const bool luma : {true, false})
            for (ptrdiff_t distance = 0; distance < kAlignments; ++distance)
                for (ptrdiff_t length = 0; length < 300 && !HasFatalFailure();
                     length += luma ? 1 : 2) {
                    const Pattern pattern = RandomPattern(luma);
                    const int rows = Pick(1, 3);
                    const ptrdiff_t stride = 2 * Pick(int(length) / 2, 400) + luma;
                    rooms.Compare(
                        distance, (rows - 1) * stride + length, length % 4 < 2,
                        [&](uint8_t *first) {
                            kernels::FillRows(first, stride, rows, length, pattern, set);
                        },
                        [&](uint8_t *first) {
                            for (int row = 0; row < rows; ++row)
                                FillSlowly(first + row * stride, length, pattern);
                        });
                }
    });
}

// Around the lengths from which other ways of filling are chosen.
TEST_F(Kernels, FillLongRows) {
    Rooms longRooms(17000);
    ForSets([&](kernels::Set set) {
        for (const ptrdiff_t length : {16382, 16383, 16384, 16386, 16999})
            for (const bool luma : {true, false}) {
                const ptrdiff_t bytes = luma ? length : length & ~1;
                const Pattern pattern = RandomPattern(luma);
                longRooms.Compare(
                    0, bytes, luma,
                    [&](uint8_t *first) { kernels::FillRows(first, 0, 1, bytes, pattern, set); },
                    [&](uint8_t *first) { FillSlowly(first, bytes, pattern); });
            }
    });
}

TEST_F(Kernels, PaintSpans) {
    constexpr int kRows = 16;
    ForSets([&](kernels::Set set) {
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
            rooms.Compare(
                Pick(0, kAlignments), (kRows - 1) * stride + columns * sampleBytes, i % 4 < 2,
                [&](uint8_t *first) {
                    kernels::PaintSpans({first, stride, sampleBytes}, spans.data(),
                                        int(spans.size()), pattern, set);
                },
                [&](uint8_t *first) {
                    for (const auto &span : spans)
                        FillSlowly(SpanStart({first, stride, sampleBytes}, span),
                                   (span.end.x - span.start.x) * sampleBytes, pattern);
                });
        }
    });
}

// Every first and every last bit, with the sample of the first one that counts at the lower fence
// or that of the last one at the upper fence.
TEST_F(Kernels, PaintMask) {
    ForSets([&](kernels::Set set) {
        for (int i = 0; i < 32 * 32 * 4 * 2 && !HasFatalFailure(); ++i) {
            const int firstBit = i % 32, endBit = i / 32 % 32 + 1;
            const bool luma = i & 1024, half = i & 2048, atEnd = i & 4096;
            const int words = firstBit < endBit ? Pick(1, 4) : Pick(2, 4);
            const ptrdiff_t sampleBytes = luma ? kLumaBytes : kChromaBytes;
            const ptrdiff_t bytes = (32 * (words - 1) + endBit - firstBit) * sampleBytes;
            const int64_t stride = bytes + 2 * Pick(0, 20) + luma;
            std::vector<int> repeats(size_t(Pick(1, 6)));
            for (int &n : repeats)
                n = Pick(1, 3);
            const int rows = int(repeats.size()), pitch = Pick(words, words + 1);
            const auto bits = RandomWords(size_t(pitch * (rows - 1) + words));
            const bool repeated = Pick(0, 1);
            const Mask mask = {bits.data(),
                               pitch,
                               rows,
                               words,
                               BitRange(firstBit, 32),
                               BitRange(0, endBit),
                               repeated ? repeats.data() : nullptr};
            const int planeRows =
                repeated ? std::accumulate(repeats.begin(), repeats.end(), 0) : rows;
            const Ink ink = {RandomPattern(luma), half};
            const auto plane = [&](uint8_t *first) {
                return Plane{first - firstBit * sampleBytes, stride, sampleBytes};
            };
            rooms.Compare(
                0, (planeRows - 1) * stride + bytes, atEnd,
                [&](uint8_t *first) { kernels::PaintMask(plane(first), mask, ink, set); },
                [&](uint8_t *first) { PaintSlowly(plane(first), mask, ink); });
        }
    });
}

TEST_F(Kernels, PaintNarrowMask) {
    ForSets([&](kernels::Set set) {
        for (int columns = 1; columns <= 32; ++columns)
            for (ptrdiff_t distance = 0; distance < kAlignments && !HasFatalFailure(); ++distance)
                for (const bool atEnd : {false, true}) {
                    const int rows = distance ? Pick(1, 20) : kMaxNarrowRows;
                    const int stride = distance ? Pick(columns, 100) : columns;
                    const uint32_t inside = BitRange(0, columns);
                    auto words = RandomWords(size_t(rows));
                    for (auto &word : words) // some with as many runs as there can be
                        word = inside & (distance && random() % 16 ? word
                                         : random() % 2            ? 0x77777777
                                                                   : 0x55555555);
                    words.resize(size_t(rows + NarrowRoom(rows)), 0xA5A5A5A5);
                    const int32_t taken = kernels::PrepareNarrowMask(words.data(), rows, set);
                    ASSERT_LE(taken, NarrowRoom(rows));
                    const std::vector<uint32_t> kept(words.data(), words.data() + rows + taken);
                    const Ink ink = {RandomPattern(true), false};
                    rooms.Compare(
                        distance, (rows - 1) * ptrdiff_t(stride) + columns, atEnd,
                        [&](uint8_t *first) {
                            kernels::PaintNarrowMask(first, stride, kept.data(), rows, inside,
                                                     ink.pattern, set);
                        },
                        [&](uint8_t *first) {
                            PaintSlowly({first, stride, kLumaBytes},
                                        {kept.data(), 1, rows, 1, ~0u, ~0u, nullptr}, ink);
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
    const int sizes[] = {1, 2, 31, 32, 33, 64, 65, 100, 511, 512, 513, 1100, 70000};
    for (const kernels::Set set : Sets())
        for (int i = 0; i < 4000 && !HasFatalFailure(); ++i) {
            const int width = i % 3 ? Pick(1, 140) : sizes[random() % 12];
            const int multiples[] = {width, 2 * width, (width + 1) / 2, (width + 3) / 4, 3 * width};
            const int size = i % 2 ? multiples[random() % 5] : sizes[random() % 13];
            const int first = random() % 2 ? Pick(0, size - 1) : 0;
            const int samples = std::min({kMaxScaledBits, size - first, Pick(1, 1000)});
            SCOPED_TRACE("set " + std::to_string(int(set)));
            CheckExpansion(set, width, size,
                           {first, width * kSameSize / size, samples, WordsPerRow(width)}, random);
        }
}

} // namespace
