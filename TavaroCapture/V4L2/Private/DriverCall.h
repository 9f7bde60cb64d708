#pragma once

#include <TavaroCapture/V4L2/Private/VideoSystem.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <chrono>
#include <functional>
#include <memory>

namespace tavaro::v4l2 {

/// A call into the driver of a node, which may not return, on a thread of its own. One thread.
class DriverCall {
public:
    using Deadline = std::chrono::steady_clock::time_point;

    /// `call` owns all that it uses: where it hangs, its thread is left to it. While that is so, further calls to the
    /// driver are not begun, so whoever looks for cameras every few seconds leaves one thread behind and no more.
    DriverCall(VideoSystem const& system, VideoNode const& node, std::function<void()> call);
    ~DriverCall();
    DriverCall(DriverCall&&) noexcept;
    DriverCall& operator=(DriverCall&&) = delete;

    /// False where it has not returned until then, or was not begun.
    bool returns(Deadline until);

private:
    struct State;

    std::shared_ptr<State> state_;       // the thread's, too; none where it was not begun
    std::unique_ptr<SerialQueue> queue_; // until it is left
};

}
