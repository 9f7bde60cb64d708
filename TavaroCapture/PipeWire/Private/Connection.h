#pragma once

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Files/ReleaseWith.h>

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <pipewire/pipewire.h>
#include <string>
#include <vector>

/// The handles of libpipewire and a connection to a PipeWire server. For the sources of this library only.
namespace tavaro::pipewire {

using Loop = std::unique_ptr<pw_loop, ReleaseWith<pw_loop_destroy>>;
using Context = std::unique_ptr<pw_context, ReleaseWith<pw_context_destroy>>;
using Core = std::unique_ptr<pw_core, ReleaseWith<pw_core_disconnect>>;
using Stream = std::unique_ptr<pw_stream, ReleaseWith<pw_stream_destroy>>;
struct ReleaseProxy {
    void operator()(auto* handle) const { pw_proxy_destroy(reinterpret_cast<pw_proxy*>(handle)); }
};
using NodeProxy = std::unique_ptr<pw_node, ReleaseProxy>;

/// Something that pictures or sound come from, or go to.
struct Node {
    std::uint32_t id = 0;
    std::string name; // the same whenever the device is plugged in
    std::string description;
    std::string mediaClass; // "Video/Source", "Audio/Source", "Audio/Sink"
    std::string role;       // "Camera"
    std::string path;       // of what it stands for: "v4l2:/dev/video0"
    bool operator==(Node const&) const = default;
};

/// A connection to a PipeWire server. It runs on the thread that calls it, and only during the calls; streams that are
/// made on it report then, too, so nothing here needs a lock. Calls may come from another thread later, if never two at
/// once.
class Connection {
public:
    using Clock = std::chrono::steady_clock;

    /// To the session's own server, as `$PIPEWIRE_REMOTE` and `$XDG_RUNTIME_DIR` name it.
    Connection() : Connection(FileDescriptor()) {}
    /// To the one at the other end of a socket, as a portal opens it.
    explicit Connection(FileDescriptor socket);
    ~Connection();
    Connection(Connection const&) = delete;
    Connection& operator=(Connection const&) = delete;

    /// Whether there is a server, and it is still there.
    bool isAlive() const { return core_ && reason_.empty(); }
    /// Why it is not.
    std::string const& reason() const { return reason_; }
    pw_core* core() const { return core_.get(); }

    /// Lets events in, for so long at most.
    void run(std::chrono::milliseconds atMost);
    /// Lets them in until the server has answered all that was asked so far; false when it does not in time.
    bool settle(std::chrono::milliseconds atMost);

    /// Those that there are now; good once the connection has settled.
    std::vector<Node> nodes() const;
    bool has(std::uint32_t node) const { return nodes_.contains(node); }
    /// To ask the node itself. None where it cannot be.
    NodeProxy bind(std::uint32_t node) const;
    /// What tells one run of a server from all others; 0 before it has settled.
    std::uint32_t cookie() const { return cookie_; }

private:
    static void onInfo(void* self, pw_core_info const* info);
    static void onDone(void* self, std::uint32_t id, int number);
    static void onError(void* self, std::uint32_t id, int number, int code, char const* message);
    static void onGlobal(void* self, std::uint32_t id, std::uint32_t permissions, char const* type,
                         std::uint32_t version, spa_dict const* properties);
    static void onGlobalRemoved(void* self, std::uint32_t id);
    void listen();

    Loop loop_;
    Context context_;
    Core core_;
    pw_registry* registry_ = nullptr; // the core's
    spa_hook coreHook_{};
    spa_hook registryHook_{};
    std::string reason_;
    std::map<std::uint32_t, Node> nodes_;
    std::uint32_t cookie_ = 0;
    int answered_ = -1;
};

}
