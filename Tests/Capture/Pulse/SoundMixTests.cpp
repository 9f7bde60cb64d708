#include <TavaroCapture/Pulse/Private/SoundMix.h>

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

namespace tavaro::pulse {

TEST(SoundMix, soundsLieWhereTheyWereAddUpAndAreSilentBetween) {
    SoundMix mix;
    std::vector<float> heard;
    double next = 100;
    auto const take = [&](double until) {
        mix.take(until, [&](SoundBlock const& block) {
            EXPECT_NEAR(block.capturedAt, next, 1e-9) << "there is never a gap";
            next = block.capturedAt + static_cast<double>(block.samples.size()) / audioRate;
            for (auto const& sample : block.samples) heard.push_back(sample.left);
        });
    };
    auto const add = [&](double from, double seconds, float value) {
        std::vector<StereoSample> const samples(static_cast<std::size_t>(std::lround(seconds * audioRate)),
                                                {value, value});
        mix.add({samples, from});
    };
    mix.begin(100);
    add(99.95, 0.1, 0.125f); // half of it before the beginning
    take(100.02);
    add(100.03, 0.04, 0.25f);
    add(100.2, 0.05, 0.5f);
    take(100.1);
    add(100.08, 0.04, 0.5f); // half of it too late
    take(100.3);
    ASSERT_NEAR(static_cast<double>(heard.size()), 0.3 * audioRate, 1);
    for (std::size_t i = 0; i < 300; ++i) { // the middle of each millisecond
        float const first = (i < 50 ? 0.125f : 0) + (i >= 30 && i < 70 ? 0.25f : 0);
        float const wanted = first + ((i >= 100 && i < 120) || (i >= 200 && i < 250) ? 0.5f : 0);
        EXPECT_EQ(heard[i * audioRate / 1000 + 24], wanted) << i;
    }
}

}
