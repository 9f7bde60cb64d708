#pragma once

#include <TavaroCapture/PipeWire/Private/Connection.h>
#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroCore/Files/FileDescriptor.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <spa/pod/builder.h>
#include <thread>
#include <vector>

namespace tavaro {

/// A screen as a compositor shares it: a PipeWire node that sends a picture when it begins and when something changes,
/// and only then, and tells of the pointer beside it. Each picture is of one grey all over, but for a white pixel at
/// its left upper and its right lower end.
class TestScreenNode {
public:
    /// Where its pictures are.
    enum class Memory {
        plain,
        graphics,   // in none but a graphics card's, so it says; others can read that
        unreadable, // the same, and nobody can
        both,       // unreadable where it can be, else plain
    };
    /// So many times its picture gets lost when it begins.
    explicit TestScreenNode(int width = 320, int height = 200, int silentBeginnings = 0, Memory memory = Memory::plain);
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
    /// Without a picture. It stays there.
    void movePointer(PixelPoint point);
    /// It is hidden, or on something else.
    void hidePointer();

private:
    struct Order {
        std::optional<std::uint8_t> grey;
        double moment = 0;
    };
    static void onState(void* self, pw_stream_state old, pw_stream_state state, char const* error);
    std::vector<spa_pod const*> formats(spa_pod_builder& builder) const;
    static void onParameter(void* self, std::uint32_t id, spa_pod const* parameter);
    static void onProcess(void* self);
    static void onAddBuffer(void* self, pw_buffer* buffer);
    static void onRemoveBuffer(void* self, pw_buffer* buffer);
    void run();
    void connect();
    void offerBuffers();
    void offerSize();
    void send();
    void add(Order order);
    void begin();
    void showAgain();

    pipewire::Connection connection_; // the thread's, as the next eight
    spa_hook hook_{};
    pipewire::Stream stream_;
    bool isStreaming_ = false;
    int silentBeginnings_;
    Memory const memory_;
    bool isGraphics_ = false;                     // as agreed
    std::map<pw_buffer*, FileDescriptor> files_;  // that stand for a graphics card's memory
    std::map<pw_buffer*, FileDescriptor> shared_; // the same, as others get them
    double showsAgainAt_ = 0;                     // moment of the media clock; 0: not
    std::mutex lock_;
    std::vector<Order> orders_;                  // guarded by lock_
    std::optional<Order> shown_;                 // guarded by lock_
    std::optional<std::pair<int, int>> newSize_; // guarded by lock_
    PixelRect part_;                             // guarded by lock_; empty: all
    std::optional<PixelPoint> pointer_;          // guarded by lock_
    int width_;                                  // the thread's, as the next
    int height_;
    std::atomic<std::uint32_t> id_ = PW_ID_ANY;
    std::atomic<bool> isPausing_ = false;
    std::atomic<bool> isEnding_ = false;
    std::thread thread_;
};

}
