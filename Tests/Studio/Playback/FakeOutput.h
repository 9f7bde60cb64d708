#pragma once

#include <Tavaro/Studio/Playback/SoundOutput.h>

#include <memory>
#include <mutex>
#include <vector>

namespace tavaro {

/// A sound device whose clock a test turns. Any thread.
class FakeDevice {
public:
    double time() const;
    /// So many seconds pass; what is played keeps up with them.
    void turn(double seconds);

    /// So many seconds pass, whether there is something to play or not.
    void pass(double seconds);

    void unplug();
    void plug();
    bool isPlugged() const;
    bool isOpen() const;
    int timesOpened() const;
    /// Whether it plays, and has all that it takes.
    bool isFed() const;
    /// The sample that is heard now; 0 where none is.
    float heard() const;

private:
    friend class FakeOutput;
    std::int64_t heardNumber() const;
    bool isStarved() const;

    mutable std::mutex mutex_;
    double time_ = 100; // from here on guarded by mutex_
    bool isPlugged_ = true;
    bool isOpen_ = false;
    int timesOpened_ = 0;
    double begun_ = 0; // when the first sample was written
    std::vector<StereoSample> written_;
};

class FakeOutput final : public SoundOutput {
public:
    explicit FakeOutput(std::shared_ptr<FakeDevice> device) : device_(std::move(device)) {}

    void open() override;
    void close() override;
    State state() const override;
    std::string reason() const override { return "the device was unplugged"; }
    void run(std::chrono::milliseconds atMost) override;
    std::size_t room() const override;
    void write(std::span<StereoSample const> samples) override;
    std::optional<double> heard() const override;

private:
    std::shared_ptr<FakeDevice> const device_;
};

}
