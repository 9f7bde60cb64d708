#include <TavaroVoice/Web/WebClient.h>

#include <TavaroVoice/Web/Private/CurlLibrary.h>
#include <TavaroVoice/Web/Private/WebFailure.h>

#include <arpa/inet.h>
#include <array>
#include <chrono>
#include <fmt/format.h>
#include <string_view>
#include <utility>

namespace tavaro {

namespace {

using Kind = WebFailure::Kind;

struct TransferRelease {
    void operator()(CURL* transfer) const { curlLibrary()->releaseTransfer(transfer); }
};
struct SessionRelease {
    void operator()(CURLM* session) const { curlLibrary()->releaseSession(session); }
};

/// The name or address of the machine in an address without a user; empty where there is none.
std::string hostOf(std::string_view url, std::string_view scheme) {
    if (!url.starts_with(scheme)) return {};
    auto const rest = url.substr(scheme.size());
    auto const authority = rest.substr(0, rest.find_first_of("/?#\\"));
    if (authority.find('@') != std::string_view::npos) return {};
    if (authority.starts_with('[')) return std::string(authority.substr(1, authority.find(']') - 1));
    return std::string(authority.substr(0, authority.find(':')));
}

bool isLoopback(std::string const& host) {
    in_addr address{};
    in6_addr wide{};
    if (host == "localhost") return true;
    if (::inet_pton(AF_INET, host.c_str(), &address) == 1) return ntohl(address.s_addr) >> 24 == 127;
    return ::inet_pton(AF_INET6, host.c_str(), &wide) == 1 && IN6_IS_ADDR_LOOPBACK(&wide);
}

/// The request's headers as the library wants them, each where it is anyway: its own list would copy them.
class Headers {
public:
    explicit Headers(WebRequest const& request) {
        nodes_.reserve(request.headers.size() + 1);
        for (auto const& header : request.headers) add(header.c_str());
        if (request.secretHeader) add(request.secretHeader->c_str());
    }
    curl_slist* list() { return nodes_.empty() ? nullptr : nodes_.data(); }

private:
    void add(char const* header) {
        nodes_.push_back({const_cast<char*>(header), nullptr});
        if (nodes_.size() > 1) nodes_[nodes_.size() - 2].next = &nodes_.back();
    }
    std::vector<curl_slist> nodes_;
};

struct Received {
    std::string body;
    std::size_t most = 0;
    bool isTooMuch = false;
};

std::size_t receive(char const* bytes, std::size_t one, std::size_t count, void* to) {
    auto& received = *static_cast<Received*>(to);
    received.isTooMuch = received.body.size() + one * count > received.most;
    if (received.isTooMuch) return 0;
    received.body.append(bytes, one * count);
    return one * count;
}

}

bool isSafeAddress(std::string const& url) {
    return !hostOf(url, "https://").empty() || isLoopback(hostOf(url, "http://"));
}

struct WebClient::State {
    Limits limits;
    std::filesystem::path certificates;
    std::unique_ptr<CURLM, SessionRelease> session;
    std::unique_ptr<CURL, TransferRelease> transfer; // ends before the session
    std::array<char, CURL_ERROR_SIZE> reason{};

    void ensureReady() {
        if (!curlLibrary()) throw WebFailure(Kind::notReached, "libcurl is not installed on this machine");
        if (!session) session.reset(curlLibrary()->newSession());
        if (!transfer) transfer.reset(curlLibrary()->newTransfer());
        if (!session || !transfer) throw std::bad_alloc();
    }

    template<class Value> void set(CURLoption option, Value value) {
        curlLibrary()->set(transfer.get(), option, value);
    }
    void prepare(WebRequest const& request, Headers& headers, Received& received);
    void expectFlow();
    bool isUnderWay();
    CURLcode run(WebRequest const& request, Received const& received, std::stop_token const& stop);
    std::string reasonFor(CURLcode code) const;
};

void WebClient::State::prepare(WebRequest const& request, Headers& headers, Received& received) {
    curlLibrary()->reset(transfer.get()); // but its connections
    reason[0] = '\0';
    set(CURLOPT_ERRORBUFFER, reason.data());
    set(CURLOPT_URL, request.url.c_str());
    set(CURLOPT_PROTOCOLS_STR, "https,http");
    if (isLoopback(hostOf(request.url, "http://"))) set(CURLOPT_PROXY, ""); // a proxy would see it all
    set(CURLOPT_FOLLOWLOCATION, 0L);
    set(CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1)); // the library for 2 keeps headers
    set(CURLOPT_HTTPHEADER, headers.list());
    set(CURLOPT_USERAGENT, "Tavaro");
    set(CURLOPT_NOSIGNAL, 1L);
    set(CURLOPT_QUICK_EXIT, 1L); // a name server that hangs is not waited for
    set(CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(limits.toConnect.count()));
    set(CURLOPT_TIMEOUT_MS, static_cast<long>((limits.whole + request.patience).count()));
    if (!certificates.empty()) set(CURLOPT_CAINFO, certificates.c_str());
    set(CURLOPT_WRITEFUNCTION, receive);
    set(CURLOPT_WRITEDATA, &received);
    if (!request.body) return expectFlow();
    // Where a kept connection turns out to be lost, the library would send what it sent on it once more.
    set(CURLOPT_FRESH_CONNECT, 1L);
    set(CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body->size()));
    set(CURLOPT_POSTFIELDS, request.body->c_str());
}

/// From now on.
void WebClient::State::expectFlow() {
    set(CURLOPT_LOW_SPEED_LIMIT, 1L);
    set(CURLOPT_LOW_SPEED_TIME, static_cast<long>(std::chrono::ceil<std::chrono::seconds>(limits.stalled).count()));
}

/// Whether something of the request was sent.
bool WebClient::State::isUnderWay() {
    long sent = 0;
    curlLibrary()->get(transfer.get(), CURLINFO_REQUEST_SIZE, &sent);
    return sent > 0;
}

/// Until it is over, or is given up after a stop.
CURLcode WebClient::State::run(WebRequest const& request, Received const& received, std::stop_token const& stop) {
    using Clock = std::chrono::steady_clock;
    auto const& curl = *curlLibrary();
    curl.add(session.get(), transfer.get());
    std::stop_callback const wake(stop, [&] { curl.wake(session.get()); });
    std::optional<Clock::time_point> end;
    auto const isGivenUp = [&] {
        if (!stop.stop_requested()) return false;
        if (!end) end = Clock::now() + (request.body && isUnderWay() ? limits.afterStop : std::chrono::milliseconds(0));
        return Clock::now() >= *end;
    };
    std::optional<CURLcode> result;
    while (!result && !isGivenUp()) {
        int running = 0, left = 0;
        if (curl.perform(session.get(), &running) != CURLM_OK) result = CURLE_FAILED_INIT;
        while (auto const* const news = curl.news(session.get(), &left))
            if (news->msg == CURLMSG_DONE) result = news->data.result;
        if (!received.body.empty()) expectFlow();
        constexpr int longest = 1000;
        if (!result) curl.poll(session.get(), nullptr, 0, longest, nullptr);
    }
    curl.remove(session.get(), transfer.get());
    return result.value_or(CURLE_ABORTED_BY_CALLBACK);
}

std::string WebClient::State::reasonFor(CURLcode code) const {
    return reason[0] != '\0' ? reason.data() : curlLibrary()->reason(code);
}

WebClient::WebClient(Limits const& limits, std::filesystem::path certificates) : state_(std::make_unique<State>()) {
    state_->limits = limits;
    state_->certificates = std::move(certificates);
}
WebClient::WebClient(WebClient&&) noexcept = default;
WebClient& WebClient::operator=(WebClient&&) noexcept = default;
WebClient::~WebClient() = default;

WebReply WebClient::exchange(WebRequest const& request, std::stop_token const& stop) {
    if (!isSafeAddress(request.url))
        throw WebFailure(Kind::notReached, "its address is none of HTTPS, over which alone keys are sent");
    state_->ensureReady();
    Headers headers(request);
    Received received{.most = request.mostBytes};
    state_->prepare(request, headers, received);
    auto const code = state_->run(request, received, stop);
    wipeTraces();
    auto const reason = state_->reasonFor(code);
    long status = 0;
    curlLibrary()->get(state_->transfer.get(), CURLINFO_RESPONSE_CODE, &status);
    curlLibrary()->reset(state_->transfer.get()); // nothing in it points to the request any more
    bool const isPaid = request.body && code == CURLE_OK;
    if (stop.stop_requested() && !isPaid) throw WebFailure(Kind::cancelled, "it was cancelled");
    if (received.isTooMuch)
        throw WebFailure(Kind::notReached, fmt::format("it answers with more than {} bytes", request.mostBytes));
    if (code != CURLE_OK) throw WebFailure(Kind::notReached, reason);
    return {static_cast<int>(status), std::move(received.body)};
}

}
