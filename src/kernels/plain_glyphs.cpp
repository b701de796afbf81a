// SPDX-License-Identifier: MIT
// Glyphs for processors without masked stores. Behind the words of a narrow bitmap stand lists of
// stores, one for each size: all places that take 16 bytes, then those that take 8, and so on.
// Stamping walks the lists: it neither looks for bits nor branches on the lengths of runs.
#include "kernels/kernels.h"

using namespace orn;

// A run of at most 32 pixels is one store, or two of the same size that overlap.
constexpr int32_t kSizes = 5;

struct StorePlace {
    uint8_t row; // of the bitmap
    uint8_t column;
};

// The head of the lists: where each ends, the largest stores first. The places follow it.
struct StoreLists {
    uint16_t ends[kSizes];
};

constexpr int32_t kMaxStores = kMaxNarrowRows * kMaxNarrowStores;

// All stores of a bitmap, in the order of its rows.
struct Stores {
    int32_t count;
    int32_t counts[kSizes]; // by size, 2^i bytes
    StorePlace places[kMaxStores];
    uint8_t sizes[kMaxStores];
};

static inline void AddStore(Stores *stores, int32_t row, int32_t column, int32_t size) {
    stores->places[stores->count] = {static_cast<uint8_t>(row), static_cast<uint8_t>(column)};
    stores->sizes[stores->count++] = static_cast<uint8_t>(size);
    ++stores->counts[size];
}

struct BitRun {
    int32_t start;
    int32_t length;
};

// Takes the lowest run of set bits out of a word's bits that are not 0.
static inline BitRun TakeRun(uint64_t *bits) {
    const int32_t start = __builtin_ctzll(*bits);
    const int32_t length = __builtin_ctzll(~(*bits >> start)); // above the word all are clear
    *bits &= *bits + (*bits & -*bits);                         // the carry clears the run
    return {start, length};
}

static void AddRow(Stores *stores, int32_t row, uint64_t bits) {
    while (bits) {
        const BitRun run = TakeRun(&bits);
        const auto length = static_cast<uint32_t>(run.length);
        const auto size = static_cast<int32_t>(Min(31 - __builtin_clz(length), kSizes - 1));
        AddStore(stores, row, run.start, size);
        if (run.length > 1 << size)
            AddStore(stores, row, run.start + run.length - (1 << size), size);
    }
}

// Lists of even lengths, by repeating the last store: two stores a turn, and how many turns there
// are is guessed rightly more often. Larger steps store too much twice. (AMD EPYC 9004; jobs "text
// 60 at 16 px", plain and outlined.)
constexpr int32_t kStep = 2;

static int32_t PaddedCount(const Stores &stores, int32_t size) {
    return (stores.counts[size] + kStep - 1) / kStep * kStep;
}

__attribute__((cold)) int32_t kernels::plain::PrepareNarrowMask(uint32_t *words, int32_t rows) {
    auto *lists = reinterpret_cast<StoreLists *>(words + rows);
    auto *places = reinterpret_cast<StorePlace *>(lists + 1);
    Stores stores;
    stores.count = 0;
    memset(stores.counts, 0, sizeof stores.counts);
    for (int32_t row = 0; row < rows; ++row)
        AddRow(&stores, row, words[row]);
    int32_t next[kSizes];
    int32_t end = 0;
    for (int32_t size = kSizes - 1; size >= 0; --size) {
        next[size] = end;
        end += PaddedCount(stores, size);
        lists->ends[kSizes - 1 - size] = static_cast<uint16_t>(end);
    }
    for (int32_t i = 0; i < stores.count; ++i)
        places[next[stores.sizes[i]]++] = stores.places[i];
    for (int32_t size = kSizes - 1; size >= 0; --size)
        for (; next[size] < lists->ends[kSizes - 1 - size]; ++next[size])
            places[next[size]] = places[next[size] - 1];
    return (kSizes + end + 1) / 2;
}

template <size_t size>
static inline const StorePlace *StoreAll(uint8_t *first, ptrdiff_t stride, const StorePlace *at,
                                         const StorePlace *end, Pattern pattern) {
    for (; at != end; at += kStep)
        for (int32_t i = 0; i < kStep; ++i)
            StorePattern<size>(first + at[i].row * stride + at[i].column, pattern);
    return at;
}

void kernels::plain::PaintNarrowMask(uint8_t *first, ptrdiff_t stride, const uint32_t *words,
                                     int32_t rows, uint32_t, Pattern pattern) {
    const auto *lists = reinterpret_cast<const StoreLists *>(words + rows);
    const auto *places = reinterpret_cast<const StorePlace *>(lists + 1);
    const StorePlace *at = places;
    at = StoreAll<16>(first, stride, at, places + lists->ends[0], pattern);
    at = StoreAll<8>(first, stride, at, places + lists->ends[1], pattern);
    at = StoreAll<4>(first, stride, at, places + lists->ends[2], pattern);
    at = StoreAll<2>(first, stride, at, places + lists->ends[3], pattern);
    StoreAll<1>(first, stride, at, places + lists->ends[4], pattern);
}
