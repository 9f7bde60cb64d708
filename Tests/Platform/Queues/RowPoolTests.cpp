#include <TavaroPlatform/Queues/RowPool.h>

#include <gtest/gtest.h>

#include <atomic>
#include <stdexcept>
#include <vector>

namespace tavaro {

namespace {

TEST(RowPool, everyRowIsDrawnExactlyOnceWhateverTheNumbers) {
    for (int const threads : {1, 2, 5}) {
        RowPool pool(threads);
        for (int const rows : {0, 1, 15, 16, 17, 1080, 2161}) {
            std::vector<std::atomic<int>> drawn(static_cast<std::size_t>(rows));
            pool.run(rows, [&](int begin, int end) {
                for (int y = begin; y < end; ++y) ++drawn[static_cast<std::size_t>(y)];
            });
            for (auto const& count : drawn) ASSERT_EQ(count, 1) << rows << " rows on " << threads << " threads";
        }
    }
}

TEST(RowPool, whatABandThrowsReachesTheCallerAndThePoolGoesOn) {
    RowPool pool(3);
    for (int round = 0; round < 50; ++round) {
        EXPECT_THROW(pool.run(400,
                              [&](int begin, int) {
                                  if (begin > 100) throw std::runtime_error("no ink");
                              }),
                     std::runtime_error);
        std::atomic<int> drawn{0};
        pool.run(400, [&](int begin, int end) { drawn += end - begin; });
        EXPECT_EQ(drawn, 400);
    }
}

}

}
