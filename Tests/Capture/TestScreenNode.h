#pragma once

#include <TavaroCapture/PipeWire/Private/Connection.h>
#include <TavaroCapture/Sources/CaptureSource.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace tavaro {

/// A screen as a compositor shares it: a PipeWire node that sends a picture when it begins and when something changes,
/// and only then, and tells of the pointer beside it. Each picture is of one grey all over, but for a white pixel at
/// its left upper and its right lower end.
class TestScreenNode {
public:
    /// So many times its picture gets lost when it begins.
    explicit TestScreenNode(int width = 320, int height = 200, int silentBeginnings = 0);
    /// The node is gone, as when its program was killed.
    ~TestScreenNode();

    std::uint32_t id() const { return id_; }
    /// The moment of the media clock that the picture is stamped with.
    double show(std::uint8_t grey);
    void resize(int width, int height);
    /// Only that part of its pictures shows something from now on.
    void crop(PixelRect part);
    /// Sends nothing any more, and says nothing.
    void pause() { isPausing_ = true; }
    /// Without a picture.
    void movePointer(PixelPoint point);

private:
    struct Order {
        std::optional<std::uint8_t> grey;
        std::optional<PixelPoint> pointer;
        double moment = 0;
    };
    static void onState(void* self, pw_stream_state old, pw_stream_state state, char const* error);
    static void onParameter(void* self, std::uint32_t id, spa_pod const* parameter);
    static void onProcess(void* self);
    void run();
    void connect();
    void offerBuffers();
    void offerSize();
    void send();
    void add(Order order);
    void begin();
    void showAgain();

    pipewire::Connection connection_; // the thread's, as the next five
    spa_hook hook_{};
    pipewire::Stream stream_;
    bool isStreaming_ = false;
    int silentBeginnings_;
    double showsAgainAt_ = 0; // moment of the media clock; 0: not
    std::mutex lock_;
    std::vector<Order> orders_;                  // guarded by lock_
    std::optional<Order> shown_;                 // guarded by lock_
    std::optional<std::pair<int, int>> newSize_; // guarded by lock_
    PixelRect part_;                             // guarded by lock_; empty: all
    int width_;                                  // the thread's, as the next
    int height_;
    std::atomic<std::uint32_t> id_ = PW_ID_ANY;
    std::atomic<bool> isPausing_ = false;
    std::atomic<bool> isEnding_ = false;
    std::thread thread_;
};

}
