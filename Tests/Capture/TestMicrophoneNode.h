#pragma once

#include "TestSoundServer.h"

#include <TavaroCapture/PipeWire/Private/Connection.h>

#include <atomic>
#include <string>
#include <thread>

namespace tavaro {

/// A microphone of a PipeWire server that hears clicks. What it hands over in a cycle of the server was heard in the
/// one before.
class TestMicrophoneNode : public Clicks {
public:
    static constexpr char const* name = "test-microphone";
    TestMicrophoneNode();
    /// It is unplugged.
    ~TestMicrophoneNode() override;

    /// It hands over nothing in so many of the coming cycles, as when the machine is too busy.
    void lose(int cycles) { lost_ = cycles; }
    /// Whether it kept every one of its turns. After one that it missed, what it says is heard some cycles later.
    bool isInTime() const { return lateTurns_ == 0; }

private:
    static void onProcess(void* self) { static_cast<TestMicrophoneNode*>(self)->speak(); }
    void run();
    void speak();

    pipewire::Connection connection_; // the thread's
    spa_hook hook_{};
    pipewire::Stream stream_;
    std::int64_t frame_ = 0; // the server's thread's
    std::atomic<int> lateTurns_ = 0;
    std::atomic<int> lost_ = 0;
    std::atomic<bool> isEnding_ = false;
    std::thread thread_;
};

}
