#pragma once

#include <TavaroCapture/PipeWire/Private/Connection.h>
#include <TavaroCapture/PipeWire/Private/GraphicsMemory.h>
#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroMedia/Frames/DevicePictures.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tavaro::pipewire {

/// What a stream's pictures are from now on.
struct VideoFormat {
    DeviceFormat pictures; // without the stride, which each picture has of its own
    double fps = 0;        // 0: they come when something changes
    bool operator==(VideoFormat const&) const = default;
};

struct VideoPicture {
    DeviceFormat format; // with its stride
    std::span<std::uint8_t const> bytes;
    double capturedAt = 0;                      // moment of the media clock
    bool isDamaged = false;                     // its device says so
    std::optional<std::uint64_t> sequence = {}; // of its device's pictures, where it counts them
    std::optional<PixelRect> part = {};         // that shows something, inside of it; none: all of it
};

/// Pictures of one node: a camera's, or a screen's that somebody shares. It is never moved to another node. All its
/// reports come while its connection runs. One thread, the connection's.
///
/// A screen may hand its pictures over in a graphics card's memory, where it has no others and their rows lie one after
/// the other. Where that cannot be read, a restart asks for others, and the stream is over a second later if none come.
class VideoStream {
public:
    struct Options {
        enum class Role { screen, camera };
        Role role = Role::screen;
        std::uint32_t node = PW_ID_ANY;    // its id
        std::vector<DeviceLayout> layouts; // the best first
        enum class Size { usual, exact };  // where the node leaves the choice, or nothing else
        Size size = Size::usual;
        int width = 1920;
        int height = 1080;
        int fps = 60; // at most
    };
    struct Handlers {
        std::function<void(VideoFormat const&)> format = [](VideoFormat const&) {}; // also when it changes later
        std::function<void(VideoPicture const&)> picture;                           // good during the call
        /// Where the pointer is that the pictures do not show, of their pixels, from the top-left corner; none where it
        /// is hidden, or elsewhere.
        std::function<void(std::optional<PixelPoint>)> pointer = [](std::optional<PixelPoint>) {};
    };

    VideoStream(Connection& connection, Options options, Handlers handlers);
    ~VideoStream();
    VideoStream(VideoStream const&) = delete;
    VideoStream& operator=(VideoStream const&) = delete;

    /// Whether pictures come, or may still begin to. A node that goes away leaves a stream that pauses, and says
    /// nothing more: one that has paused for a second by itself is over.
    bool isLive() const;
    /// Asks the node to begin anew: the picture that one sends when it begins may come before anybody could take it,
    /// and a screen on which nothing changes sends no other.
    void restart();
    /// None before both sides have agreed on one.
    std::optional<VideoFormat> const& format() const { return format_; }
    /// For a sentence: "its stream is paused".
    std::string state() const;

private:
    static void onState(void* self, pw_stream_state old, pw_stream_state state, char const* error);
    static void onParameter(void* self, std::uint32_t id, spa_pod const* parameter);
    static void onProcess(void* self);
    static void onRemoveBuffer(void* self, pw_buffer* buffer);
    void listen();
    void connect();
    void noteState(pw_stream_state state, char const* error);
    void agree(spa_pod const& format);
    void askForBuffers();
    double momentOf(spa_buffer& buffer) const;
    void takeBuffer(pw_buffer& buffer);
    void takeGraphics(pw_buffer& buffer);
    void refuseGraphics(std::string const& reason);
    void takePicture(spa_buffer& buffer, std::span<std::uint8_t const> bytes, bool isWhole) const;
    void takePointer(spa_buffer& buffer) const;

    Connection& connection_;
    Options const options_;
    Handlers const handlers_;
    std::optional<VideoFormat> format_;
    pw_stream_state state_ = PW_STREAM_STATE_CONNECTING;
    std::string error_;
    std::string agreedName_; // of pictures in a graphics card's memory, for a sentence; empty for others
    double refusedAt_ = 0;   // moment of the media clock when such were, until there are others; 0: not
    std::map<pw_buffer*, std::unique_ptr<GraphicsMemory>> memories_;
    double pausedAt_ = 0; // moment of the media clock; 0: it is not
    spa_hook hook_{};
    Stream stream_; // last: it ends before all that it reports to
};

}
