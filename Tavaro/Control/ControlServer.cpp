#include <Tavaro/Control/ControlServer.h>

#include <Tavaro/Control/Private/ControlVerbs.h>
#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Recording/RecordingChoice.h>

#include <TavaroMCP/Bridge/BridgeServer.h>
#include <TavaroPlatform/Folders/Folders.h>
#include <TavaroPlatform/Queues/MainQueue.h>

#include <fmt/format.h>

#include <atomic>
#include <chrono>
#include <future>
#include <optional>
#include <utility>

namespace tavaro {

namespace {

ToolResult failed(std::string_view sentence) { return toolResult::failure(MCPErrorCode::failed, sentence); }

/// An answer that a connection's thread waits for while the main queue works on it. The first one counts.
class Answer {
public:
    void give(ToolResult const& result) {
        if (!std::exchange(isGiven_, true)) promise_.set_value(result);
    }
    bool isGiven() const { return isGiven_; }
    std::future<ToolResult> future() { return promise_.get_future(); }

private:
    std::promise<ToolResult> promise_;
    bool isGiven_ = false; // the main queue's
};

ToolResult begun(std::vector<std::string> const& remarks) {
    std::string text = "Recording. The same order ends the take.";
    for (auto const& remark : remarks) text += " " + remark;
    return toolResult::ok(text, JSONValue::Object{{"state", "recording"}});
}

ToolResult ended(RecordingOutcome const& outcome) {
    if (outcome.kind != RecordingOutcome::Kind::saved) return failed(outcome.sentence());
    auto const& made = *outcome.made;
    return toolResult::ok(
        fmt::format("The take is saved, {:.1f} s long.", made.made.duration),
        JSONValue::Object{{"state", "saved"}, {"path", made.made.path}, {"duration", made.made.duration}});
}

ToolResult notBegun(RecordingOutcome const& outcome) {
    return toolResult::ok(outcome.sentence(), JSONValue::Object{{"state", "notBegun"}});
}

}

std::filesystem::path controlSocketPath() { return folders::applicationSupport() / "Tavaro/control.sock"; }

class ControlServer::Desk final : public BridgeApplication {
public:
    Desk(MainQueue& queue, Application& application, Settings settings)
        : queue_(queue)
        , application_(application)
        , prepare_(std::move(settings.prepare)) {
        server_.emplace(settings.socket, *this);
    }
    ~Desk() override {
        isOver_ = true;
        server_.reset();
    }
    Desk(Desk const&) = delete;
    Desk& operator=(Desk const&) = delete;

    ToolResult answer(BridgeRequest request, BridgeClient& client) override;

private:
    using Waiting = std::shared_ptr<Answer>;

    void follow(std::string const& verb, std::string const& client, Waiting const& waiting);
    void toggle(std::string const& client, Waiting const& waiting);
    void begin(std::string const& client, Waiting const& waiting);

    MainQueue& queue_;
    Application& application_;
    std::function<void(std::function<void()>)> const prepare_;
    std::shared_ptr<bool> const isHere_ = std::make_shared<bool>(true); // the main queue's
    std::atomic<bool> isOver_ = false;
    std::optional<BridgeServer> server_;
};

ToolResult ControlServer::Desk::answer(BridgeRequest request, BridgeClient& client) {
    using namespace std::chrono_literals;
    auto const waiting = std::make_shared<Answer>();
    auto answer = waiting->future();
    queue_.async([this, here = std::weak_ptr(isHere_), request = std::move(request), waiting] {
        if (here.lock()) follow(request.tool, request.client, waiting);
    });
    while (answer.wait_for(50ms) != std::future_status::ready)
        if (isOver_ || !client.isConnected()) return failed("Tavaro has ended.");
    return answer.get();
}

void ControlServer::Desk::follow(std::string const& verb, std::string const& client, Waiting const& waiting) {
    if (verb != control::toggleRecording) return waiting->give(failed(fmt::format("There is no order “{}”.", verb)));
    auto const next = [this, here = std::weak_ptr(isHere_), client, waiting] {
        if (!here.lock()) return;
        try {
            toggle(client, waiting);
        } catch (Error const& error) {
            waiting->give(failed(error.what()));
        }
    };
    prepare_ ? prepare_(next) : next();
}

void ControlServer::Desk::toggle(std::string const& client, Waiting const& waiting) {
    auto& recorder = application_.recorder();
    if (recorder.isIdle()) return begin(client, waiting);
    bool const isCountdown = recorder.state().phase == RecorderPhase::countdown;
    isCountdown ? recorder.cancel() : recorder.stop();
    recorder.whenOver([waiting](RecordingOutcome const& outcome) {
        bool const isAsOrdered = outcome.kind == RecordingOutcome::Kind::discarded && !outcome.hasBegun;
        waiting->give(isAsOrdered ? notBegun(outcome) : ended(outcome));
    });
}

void ControlServer::Desk::begin(std::string const& client, Waiting const& waiting) {
    auto request = chosenRecording(application_.preferences());
    request.startedBy = client;
    auto const remarks = std::make_shared<std::vector<std::string>>();
    application_.record(std::move(request),
                        {.begun = [waiting, remarks] { waiting->give(begun(*remarks)); },
                         .remark = [remarks](std::string const& remark) { remarks->push_back(remark); },
                         .over = [waiting](RecordingOutcome const& outcome) { waiting->give(ended(outcome)); }});
}

ControlServer::ControlServer(MainQueue& queue, Application& application, Settings settings)
    : desk_(std::make_unique<Desk>(queue, application, std::move(settings))) {}

ControlServer::~ControlServer() = default;

}
