#include <TavaroCapture/PipeWire/Private/Connection.h>

#include <TavaroCore/Errors/SystemReason.h>

#include <cerrno>
#include <cstdlib>
#include <string_view>

namespace tavaro::pipewire {

namespace {

/// Once a process. What the library would print of its doings is no use to who records; their own wish counts.
void begin() {
    static bool const isBegun = [] {
        pw_init(nullptr, nullptr);
        if (!std::getenv("PIPEWIRE_DEBUG")) pw_log_set_level(SPA_LOG_LEVEL_NONE);
        return true;
    }();
    static_cast<void>(isBegun);
}

std::string valueOf(spa_dict const& properties, char const* name) {
    char const* const value = spa_dict_lookup(&properties, name);
    return value ? value : "";
}

}

Connection::Connection(FileDescriptor socket) {
    begin();
    loop_.reset(pw_loop_new(nullptr));
    context_.reset(loop_ ? pw_context_new(loop_.get(), nullptr, 0) : nullptr);
    if (context_)
        core_.reset(socket.isOpen() ? pw_context_connect_fd(context_.get(), socket.release(), nullptr, 0)
                                    : pw_context_connect(context_.get(), nullptr, 0));
    if (!core_)
        reason_ = systemReason(errno);
    else
        listen();
}

Connection::~Connection() {
    if (!core_) return;
    spa_hook_remove(&registryHook_);
    spa_hook_remove(&coreHook_);
    if (registry_) pw_proxy_destroy(reinterpret_cast<pw_proxy*>(registry_));
}

void Connection::listen() {
    static constexpr pw_core_events coreEvents{
        .version = PW_VERSION_CORE_EVENTS, .info = onInfo, .done = onDone, .error = onError};
    static constexpr pw_registry_events registryEvents{
        .version = PW_VERSION_REGISTRY_EVENTS, .global = onGlobal, .global_remove = onGlobalRemoved};
    pw_core_add_listener(core_.get(), &coreHook_, &coreEvents, this);
    registry_ = pw_core_get_registry(core_.get(), PW_VERSION_REGISTRY, 0);
    pw_registry_add_listener(registry_, &registryHook_, &registryEvents, this);
}

void Connection::run(std::chrono::milliseconds atMost) {
    pw_loop_enter(loop_.get());
    pw_loop_iterate(loop_.get(), static_cast<int>(atMost.count()));
    pw_loop_leave(loop_.get());
}

bool Connection::settle(std::chrono::milliseconds atMost) {
    if (!isAlive()) return false;
    auto const end = Clock::now() + atMost;
    int const asked = pw_core_sync(core_.get(), PW_ID_CORE, 0);
    while (isAlive() && answered_ != asked && Clock::now() < end) run(std::chrono::milliseconds(20));
    return isAlive() && answered_ == asked;
}

std::vector<Node> Connection::nodes() const {
    std::vector<Node> result;
    for (auto const& [id, node] : nodes_) result.push_back(node);
    return result;
}

NodeProxy Connection::bind(std::uint32_t node) const {
    if (!isAlive() || !registry_) return nullptr;
    auto* const proxy = pw_registry_bind(registry_, node, PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, 0);
    return NodeProxy(static_cast<pw_node*>(proxy));
}

void Connection::onInfo(void* self, pw_core_info const* info) {
    static_cast<Connection*>(self)->cookie_ = info->cookie;
}

void Connection::onDone(void* self, std::uint32_t id, int number) {
    if (id == PW_ID_CORE) static_cast<Connection*>(self)->answered_ = number;
}

/// Errors of single objects are the streams' to see.
void Connection::onError(void* self, std::uint32_t id, int /*number*/, int code, char const* /*message*/) {
    if (id == PW_ID_CORE && code == -EPIPE) static_cast<Connection*>(self)->reason_ = systemReason(EPIPE);
}

void Connection::onGlobal(void* self, std::uint32_t id, std::uint32_t /*permissions*/, char const* type,
                          std::uint32_t /*version*/, spa_dict const* properties) {
    if (!properties || std::string_view(type) != PW_TYPE_INTERFACE_Node) return;
    static_cast<Connection*>(self)->nodes_[id] = {.id = id,
                                                  .name = valueOf(*properties, PW_KEY_NODE_NAME),
                                                  .description = valueOf(*properties, PW_KEY_NODE_DESCRIPTION),
                                                  .mediaClass = valueOf(*properties, PW_KEY_MEDIA_CLASS),
                                                  .role = valueOf(*properties, PW_KEY_MEDIA_ROLE),
                                                  .path = valueOf(*properties, PW_KEY_OBJECT_PATH)};
}

void Connection::onGlobalRemoved(void* self, std::uint32_t id) { static_cast<Connection*>(self)->nodes_.erase(id); }

}
