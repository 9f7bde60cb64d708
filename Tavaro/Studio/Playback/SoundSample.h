#pragma once

#include <Tavaro/Studio/Playback/SoundOutput.h>

#include <TavaroPlatform/Queues/SerialQueue.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>

namespace tavaro {

/// Plays a short sound by itself, beside any film. It belongs to one thread, and is heard beside it.
class SoundSample {
public:
    /// `makeOutput` is called by the thread that plays; `ended`, there too, with why nothing was heard, as a sentence,
    /// or with nothing. What is stopped, or followed by another one, does not end.
    SoundSample(std::function<std::unique_ptr<SoundOutput>()> makeOutput,
                std::function<void(std::string const&)> ended);
    ~SoundSample();
    SoundSample(SoundSample const&) = delete;
    SoundSample& operator=(SoundSample const&) = delete;

    /// Instead of what it plays; at most so much of it.
    void play(std::filesystem::path const& file);
    /// Returns at once.
    void stop();

    static constexpr double mostSeconds = 30;

private:
    void perform(std::filesystem::path const& file, std::uint64_t number);
    std::string heard(SoundOutput& output, std::span<StereoSample const> samples, std::uint64_t number);
    bool isWanted(std::uint64_t number) const { return newest_ == number; }

    std::function<std::unique_ptr<SoundOutput>()> const makeOutput_;
    std::function<void(std::string const&)> const ended_;
    std::atomic<std::uint64_t> newest_ = 0; // of what is to be heard
    SerialQueue queue_{"com.tavaro.preview.sample", SerialQueue::Urgency::prompt};
};

}
