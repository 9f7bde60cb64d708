#pragma once

#include "TestDisplay.h"
#include "TestSoundServer.h"

#include <TavaroCapture/Sources/Private/SoundSource.h>
#include <TavaroMedia/Audio/StereoSample.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <mutex>
#include <vector>

namespace tavaro {

/// What a source reports, and when.
class SoundListener {
public:
    explicit SoundListener(std::unique_ptr<SoundSource> source) : source_(std::move(source)) {
        source_->start({.block = [this](SoundBlock const& block) { hear(block); },
                        .lost =
                            [this](double since) {
                                missingSince = since;
                                lostAt = mediaClockNow();
                            },
                        .returned = [this](double) { returnedAt = mediaClockNow(); }});
    }
    ~SoundListener() { source_->stop(); }
    void stop() { source_->stop(); }

    /// Moments of the clicks that were heard.
    std::vector<double> heard() const {
        std::lock_guard const guard(lock_);
        return heard_;
    }
    bool hears(std::size_t count) const {
        return eventually([&] { return heard().size() >= count; });
    }
    int overlaps() const { return overlaps_; }

    std::atomic<double> lostAt = 0;       // when it was told
    std::atomic<double> missingSince = 0; // what it said then
    std::atomic<double> returnedAt = 0;

private:
    void hear(SoundBlock const& block) {
        if (block.capturedAt < end_ - 1e-6) ++overlaps_;
        end_ = block.capturedAt + static_cast<double>(block.samples.size()) / audioRate;
        std::lock_guard const guard(lock_);
        for (std::size_t i = 0; i < block.samples.size(); ++i) {
            double const at = block.capturedAt + static_cast<double>(i) / audioRate;
            bool const isNew = heard_.empty() || at > heard_.back() + Clicks::apart / 2;
            if (block.samples[i].left > 0.45f && isNew) heard_.push_back(at);
        }
    }

    std::mutex mutable lock_;
    std::vector<double> heard_; // guarded by lock_
    double end_ = 0;
    std::atomic<int> overlaps_ = 0;
    std::unique_ptr<SoundSource> source_;
};

/// Every click that was heard was made, and most of them at the moment of their stamp: where the server itself does not
/// get the processor, it hears late.
/// The usual error is that of a machine that does much else.
inline void expectInStep(std::vector<double> const& heard, std::vector<double> const& made, double mostError = 0.010) {
    double worst = 0;
    std::vector<double> errors;
    for (double const at : heard) {
        double nearest = 1;
        for (double const moment : made)
            if (std::abs(at - moment) < std::abs(nearest)) nearest = at - moment;
        if (std::abs(nearest) > std::abs(worst)) worst = nearest;
        errors.push_back(std::abs(nearest));
    }
    ASSERT_FALSE(errors.empty());
    auto const middle = errors.begin() + std::ssize(errors) / 2;
    std::ranges::nth_element(errors, middle);
    EXPECT_LE(*middle, mostError) << "the worst of " << errors.size() << " is " << worst;
    EXPECT_LT(std::abs(worst), Clicks::apart / 2);
    testing::Test::RecordProperty("worstStampMicroseconds", static_cast<int>(worst * 1e6));
    if (getenv("TAVARO_TELL")) std::printf("worst stamp of %zu: %+.3f ms\n", heard.size(), worst * 1e3);
}

}
