#pragma once

#include <TavaroPlatform/Keychain/Secret.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <memory>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

namespace tavaro {

struct WebRequest {
    std::string url;
    std::vector<std::string> headers; // "Accept: text/plain"
    /// A header whose value nobody else is to see: "name: value", whole.
    Secret const* secretHeader = nullptr;
    std::optional<std::string> body;       // sent by POST; without one, it is a GET
    std::chrono::milliseconds patience{0}; // beyond the client's own, where the answer takes long to make
    std::size_t mostBytes = 64 << 20;      // of the answer
};

struct WebReply {
    int status = 0;
    std::string body;
};

/// Requests to one web service. Those with a body may have to be paid for, so none of them is ever sent twice, for
/// which each has a connection of its own, and nothing is given up that may still come; the others share one for as
/// long as the service keeps it.
///
/// What it owes to the secret header: it goes over HTTPS alone, or to this machine itself; redirections are answers,
/// and are not followed; it is not left in memory when the request is over. Proxies are those of the environment,
/// certificates those of the system. One thread at a time.
class WebClient {
public:
    struct Limits {
        std::chrono::milliseconds toConnect{10'000};
        /// Without a byte; whole seconds. The answer to a body may take its time to begin.
        std::chrono::milliseconds stalled{30'000};
        std::chrono::milliseconds whole{120'000};
        std::chrono::milliseconds afterStop{20'000}; // for the answer to a body that was sent
    };
    /// `certificates` are trusted instead of the system's.
    explicit WebClient(Limits const& limits, std::filesystem::path certificates = {});
    WebClient() : WebClient(Limits{}) {}
    WebClient(WebClient&&) noexcept;
    WebClient& operator=(WebClient&&) noexcept;
    ~WebClient();

    /// Any status is an answer. Throws `WebFailure` where none comes whole. A stop ends it at once; but the answer to a
    /// body that was sent by then is waited for, and is given if it comes.
    WebReply exchange(WebRequest const& request, std::stop_token const& stop = {});

private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Whether such an address may be sent secrets: https anywhere, http to this machine alone.
bool isSafeAddress(std::string const& url);

}
