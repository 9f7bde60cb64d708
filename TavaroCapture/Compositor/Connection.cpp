#include <TavaroCapture/Compositor/Private/Connection.h>

#include <algorithm>
#include <cstdarg>
#include <cstdint>
#include <poll.h>
#include <sys/socket.h>

namespace tavaro::compositor {

Connection::Connection() {
    wl_log_set_handler_client([](char const*, va_list) {}); // what fails is seen by its result
    display_.reset(wl_display_connect(nullptr));
}

pid_t Connection::process() const {
    ucred peer{};
    socklen_t size = sizeof peer;
    return getsockopt(descriptor(), SOL_SOCKET, SO_PEERCRED, &peer, &size) == 0 ? peer.pid : 0;
}

bool Connection::letIn(std::chrono::milliseconds atMost) const {
    auto* const display = display_.get();
    while (wl_display_prepare_read(display) != 0) wl_display_dispatch_pending(display);
    wl_display_flush(display);
    pollfd news{descriptor(), POLLIN, 0};
    if (::poll(&news, 1, static_cast<int>(atMost.count())) > 0)
        wl_display_read_events(display);
    else
        wl_display_cancel_read(display);
    return wl_display_dispatch_pending(display) >= 0 && wl_display_get_error(display) == 0;
}

bool Connection::settle(Clock::time_point until) const {
    static constexpr wl_callback_listener listener{
        [](void* isAnswered, wl_callback*, std::uint32_t) { *static_cast<bool*>(isAnswered) = true; }};
    bool isAnswered = false, isAlive = true;
    std::unique_ptr<wl_callback, ReleaseWith<wl_callback_destroy>> const answer(wl_display_sync(display_.get()));
    wl_callback_add_listener(answer.get(), &listener, &isAnswered);
    while (isAlive && !isAnswered && Clock::now() < until)
        isAlive = letIn(
            std::max(std::chrono::ceil<std::chrono::milliseconds>(until - Clock::now()), std::chrono::milliseconds(0)));
    return isAlive && isAnswered;
}

}
