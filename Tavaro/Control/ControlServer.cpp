#include <Tavaro/Control/ControlServer.h>

#include <Tavaro/Control/Private/ControlVerbs.h>
#include <Tavaro/Control/Private/MainQueueDesk.h>
#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Recording/RecordingChoice.h>

#include <TavaroPlatform/Folders/Folders.h>

#include <fmt/format.h>

#include <utility>

namespace tavaro {

namespace {

using control::failed;

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

class ControlServer::Desk {
public:
    Desk(MainQueue& queue, Application& application, Settings settings)
        : application_(application)
        , prepare_(std::move(settings.prepare))
        , handOver_(std::move(settings.handOver))
        , desk_(queue, settings.socket,
                [this](BridgeRequest const& order, Reply const& reply) { follow(order.tool, order.client, reply); }) {}

private:
    using Reply = MainQueueDesk::Reply;

    void follow(std::string const& verb, std::string const& client, Reply const& reply);
    void toggle(std::string const& client, Reply const& reply);
    void begin(std::string const& client, Reply const& reply);

    Application& application_;
    std::function<void(std::function<void()>)> const prepare_;
    std::function<void()> const handOver_;
    std::shared_ptr<bool> const isHere_ = std::make_shared<bool>(true); // the main queue's
    MainQueueDesk desk_;                                                // ends before what it uses
};

void ControlServer::Desk::follow(std::string const& verb, std::string const& client, Reply const& reply) {
    if (verb == control::handOver && handOver_) {
        handOver_();
        return reply->finish(toolResult::ok("Tavaro's windows take over.", JSONValue::Object{}));
    }
    if (verb != control::toggleRecording) return reply->finish(failed(fmt::format("There is no order “{}”.", verb)));
    auto const next = [this, here = std::weak_ptr(isHere_), client, reply] {
        if (!here.lock()) return;
        try {
            toggle(client, reply);
        } catch (Error const& error) {
            reply->finish(failed(error.what()));
        }
    };
    prepare_ ? prepare_(next) : next();
}

void ControlServer::Desk::toggle(std::string const& client, Reply const& reply) {
    auto& recorder = application_.recorder();
    if (recorder.isIdle()) return begin(client, reply);
    bool const isCountdown = recorder.state().phase == RecorderPhase::countdown;
    isCountdown ? recorder.cancel() : recorder.stop();
    recorder.whenOver([reply](RecordingOutcome const& outcome) {
        bool const isAsOrdered = outcome.kind == RecordingOutcome::Kind::discarded && !outcome.hasBegun;
        reply->finish(isAsOrdered ? notBegun(outcome) : ended(outcome));
    });
}

void ControlServer::Desk::begin(std::string const& client, Reply const& reply) {
    auto request = chosenRecording(application_.preferences());
    request.startedBy = client;
    auto const remarks = std::make_shared<std::vector<std::string>>();
    application_.record(std::move(request),
                        {.begun = [reply, remarks] { reply->finish(begun(*remarks)); },
                         .remark = [remarks](std::string const& remark) { remarks->push_back(remark); },
                         .over = [reply](RecordingOutcome const& outcome) { reply->finish(ended(outcome)); }});
}

ControlServer::ControlServer(MainQueue& queue, Application& application, Settings settings)
    : desk_(std::make_unique<Desk>(queue, application, std::move(settings))) {}

ControlServer::~ControlServer() = default;

}
