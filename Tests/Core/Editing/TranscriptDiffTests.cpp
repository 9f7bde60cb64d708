#include <TavaroCore/Editing/Private/TranscriptDiff.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using namespace tavaro;

namespace {

using Symbols = std::vector<std::uint32_t>;

/// The textbook table: length of the longest common subsequence.
std::size_t tableLength(Symbols const& a, Symbols const& b) {
    std::vector<std::vector<std::size_t>> length(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
    for (std::size_t i = 0; i < a.size(); ++i) {
        for (std::size_t j = 0; j < b.size(); ++j) {
            length[i + 1][j + 1] = a[i] == b[j] ? length[i][j] + 1 : std::max(length[i][j + 1], length[i + 1][j]);
        }
    }
    return length[a.size()][b.size()];
}

Symbols randomSymbols(std::mt19937& random, std::size_t most, std::uint32_t different) {
    Symbols symbols(random() % (most + 1));
    for (auto& symbol : symbols) symbol = static_cast<std::uint32_t>(random() % different);
    return symbols;
}

}

TEST(TranscriptDiff, findsALongestCommonSubsequence) {
    for (unsigned seed = 0; seed < 3000; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        auto const different = static_cast<std::uint32_t>(1 + random() % 12);
        auto const a = randomSymbols(random, 40, different), b = randomSymbols(random, 40, different);
        auto const matches = longestCommonSubsequence(a, b);
        EXPECT_EQ(matches.size(), tableLength(a, b));
        for (std::size_t i = 0; i < matches.size(); ++i) {
            ASSERT_EQ(a[matches[i].first], b[matches[i].second]);
            if (i == 0) continue;
            ASSERT_LT(matches[i - 1].first, matches[i].first);
            ASSERT_LT(matches[i - 1].second, matches[i].second);
        }
    }
}
