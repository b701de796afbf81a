// SPDX-License-Identifier: MIT
// Package-merge, which is optimal under a limit where Huffman's own construction knows none.
#include "cbf/code_lengths.h"

#include <algorithm>

namespace cbf {

// Package-merge (Larmore and Hirschberg, 1990): every symbol may be bought once at each of
// maxLength levels. A coin is a symbol at one level, or a package of two coins of the level below.
struct Coin {
    uint64_t weight;
    size_t first; // the symbol's position, or the package's cheaper coin
    size_t second;
};
constexpr size_t kNoCoin = SIZE_MAX; // the second of a symbol's coin

using Level = std::vector<size_t>; // positions of coins, by weight

// A symbol goes before a package of the same weight, which keeps the longest code short.
static Level MergeByWeight(const std::vector<Coin> &coins, const Level &symbols,
                           const Level &packages) {
    Level merged;
    std::merge(symbols.begin(), symbols.end(), packages.begin(), packages.end(),
               std::back_inserter(merged),
               [&](size_t a, size_t b) { return coins[a].weight < coins[b].weight; });
    return merged;
}

static Level PackagePairs(std::vector<Coin> &coins, const Level &level) {
    Level packages;
    for (size_t i = 0; i + 1 < level.size(); i += 2) {
        const uint64_t weight = coins[level[i]].weight + coins[level[i + 1]].weight;
        packages.push_back(coins.size());
        coins.push_back({weight, level[i], level[i + 1]});
    }
    return packages;
}

// A symbol's code is as long as the number of its coins that were bought.
static void CountSymbols(const std::vector<Coin> &coins, size_t position,
                         std::vector<Code> &codes) {
    const Coin &coin = coins[position];
    if (coin.second == kNoCoin) {
        ++codes[coin.first].length;
        return;
    }
    CountSymbols(coins, coin.first, codes);
    CountSymbols(coins, coin.second, codes);
}

static void LimitedLengths(const Counts &counts, uint32_t maxLength, std::vector<Code> &codes) {
    std::vector<Coin> coins;
    Level symbols;
    for (const auto &[symbol, count] : counts) {
        symbols.push_back(coins.size());
        coins.push_back({count, coins.size(), kNoCoin});
    }
    std::stable_sort(symbols.begin(), symbols.end(),
                     [&](size_t a, size_t b) { return coins[a].weight < coins[b].weight; });
    Level level = symbols;
    for (uint32_t i = 1; i < maxLength; ++i)
        level = MergeByWeight(coins, symbols, PackagePairs(coins, level));
    const size_t bought = 2 * counts.size() - 2;
    for (size_t i = 0; i < bought; ++i)
        CountSymbols(coins, level[i], codes);
}

std::vector<Code> CodeLengths(const Counts &counts, uint32_t maxLength) {
    if (maxLength < 32 && counts.size() > size_t{1} << maxLength)
        return {};
    std::vector<Code> codes;
    for (const auto &[symbol, count] : counts)
        codes.push_back({symbol, 0, 0});
    if (codes.size() == 1)
        codes[0].length = 1;
    else if (codes.size() > 1)
        LimitedLengths(counts, maxLength, codes);
    std::stable_sort(codes.begin(), codes.end(),
                     [](const Code &a, const Code &b) { return a.length < b.length; });
    return codes;
}

} // namespace cbf
