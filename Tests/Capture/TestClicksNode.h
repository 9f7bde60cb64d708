#pragma once

#include "TestSoundServer.h"

#include <TavaroCapture/PipeWire/Private/Connection.h>
#include <TavaroMedia/Audio/StereoSample.h>

#include <atomic>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace tavaro {

/// Clicks in the graph of a PipeWire server, at moments that are its own: heard by a microphone, which hands over in a
/// cycle what it heard in the one before, or played on an output, where they sound in the cycle that begins.
class TestClicksNode : public Clicks {
public:
    static constexpr char const* microphone = "test-microphone";

    struct Options {
        std::string output = {}; // to play on; empty: it is a microphone
        StereoSample click{0.9f, 0.9f};
    };
    explicit TestClicksNode(Options options);
    TestClicksNode() : TestClicksNode(Options{}) {}
    /// It is unplugged.
    ~TestClicksNode() override;

    /// It hands over nothing in so many of the coming cycles, as when the machine is too busy.
    void lose(int cycles) { lost_ = cycles; }
    /// Whether it kept every one of its turns. After one that it missed, what it says is heard some cycles later.
    bool isInTime() const { return lateTurns().empty(); }
    /// Moments of those that it did not keep.
    std::vector<double> lateTurns() const {
        std::lock_guard const guard(turnsLock_);
        return lateTurns_;
    }

private:
    static void onProcess(void* self) { static_cast<TestClicksNode*>(self)->speak(); }
    bool isMicrophone() const { return options_.output.empty(); }
    pw_properties* properties() const;
    void run();
    void noteLateTurn(double moment);
    void speak();

    Options const options_;
    pipewire::Connection connection_; // the thread's
    spa_hook hook_{};
    pipewire::Stream stream_;
    std::int64_t frame_ = 0;   // the server's thread's
    bool isPreferred_ = false; // that thread
    std::mutex mutable turnsLock_;
    std::vector<double> lateTurns_;
    std::atomic<int> lost_ = 0;
    std::atomic<bool> isEnding_ = false;
    std::thread thread_;
};

}
