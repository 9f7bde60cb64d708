#pragma once

#include <cstdint>
#include <filesystem>
#include <list>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Audio/TimeStretch.h>
#include <TavaroRender/Audio/Private/MixPlan.h>

namespace tavaro {

/// Readers of the sources that are not at work, so that the next stretch of an asset goes on from the nearest place.
class ReaderPool {
public:
    explicit ReaderPool(std::vector<std::filesystem::path> files) : files_(std::move(files)) {}

    /// One that reads on cheaply from `position`, or a new one.
    std::unique_ptr<AudioReader> take(std::size_t source, std::int64_t position);
    void giveBack(std::size_t source, std::unique_ptr<AudioReader> reader);

private:
    struct Idle {
        std::size_t source;
        std::unique_ptr<AudioReader> reader;
    };
    std::vector<std::filesystem::path> files_;
    std::list<Idle> idle_; // the latest used first
};

/// Plays one run of a plan, without its gains, from some output position on. Borrows the run and the pool.
class RunPlayer {
public:
    RunPlayer(MixRun const& run, ReaderPool& pool, std::int64_t position);
    ~RunPlayer();
    RunPlayer(RunPlayer const&) = delete;
    RunPlayer& operator=(RunPlayer const&) = delete;

    MixRun const& run() const { return run_; }
    /// The next samples.
    void play(std::span<StereoSample> samples);

private:
    MixRun const& run_;
    ReaderPool& pool_;
    std::unique_ptr<AudioReader> reader_;
    std::int64_t sourcePosition_ = 0;
    std::optional<TimeStretch> stretch_; // for another speed than 1
};

}
