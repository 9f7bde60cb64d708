#include <Tavaro/Agents/AppMCPBackend.h>

#include <Tavaro/Agents/Private/MCPToolHandler.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Records/JSONError.h>
#include <TavaroCore/Records/JSONReader.h>
#include <TavaroMCP/Bridge/AwaitedResult.h>
#include <TavaroMCP/Bridge/BridgeServer.h>
#include <TavaroMCP/Protocol/ToolResult.h>

#include <fmt/format.h>
#include <spdlog/spdlog.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace tavaro {

namespace {

ToolResult interrupted() {
    auto const error = MCPToolError::interrupted();
    return toolResult::failure(error.code, error.what());
}

std::string_view outcomeOf(ToolResult const& result) { return result.failure ? nameOf(*result.failure) : "done"; }

constexpr std::uint64_t mostArgumentMemory = std::uint64_t{256} << 20; // a million and a half of numbers

JSONValue::Object treeOf(JSONText const& arguments) {
    try {
        JSONReader reader(arguments.text());
        reader.takeMemory(JSONReader::mostMemory - mostArgumentMemory);
        JSONValue tree;
        readJSON(reader, tree);
        return std::get<JSONValue::Object>(std::move(tree.content));
    } catch (JSONError const& error) {
        if (error.kind() == JSONError::Kind::tooLarge)
            throw MCPToolError(MCPErrorCode::invalidArguments,
                               "The arguments hold too many values: they would take more than 256 MiB of memory.");
        throw MCPToolError(MCPErrorCode::invalidArguments,
                           fmt::format("The arguments cannot be read: {}.", error.what()));
    }
}

/// Who called what and how it went; never with what.
class CallNote {
public:
    explicit CallNote(BridgeRequest const& request) : caller_(excerpt(request.client)), tool_(excerpt(request.tool)) {}

    void write(ToolResult const& result) const {
        using Seconds = std::chrono::duration<double>;
        spdlog::info("{}: {}: {} after {:.3f} s", caller_, tool_, outcomeOf(result),
                     Seconds(std::chrono::steady_clock::now() - begun_).count());
    }

private:
    std::string caller_, tool_;
    std::chrono::steady_clock::time_point begun_ = std::chrono::steady_clock::now();
};

/// One more for as long as it lives.
class Counted {
public:
    explicit Counted(std::atomic<std::size_t>& count) : count_(count) { ++count_; }
    ~Counted() { --count_; }
    Counted(Counted const&) = delete;
    Counted& operator=(Counted const&) = delete;

private:
    std::atomic<std::size_t>& count_;
};

}

/// Where calls come in.
class AppMCPBackend::Desk final : public BridgeApplication {
public:
    Desk(MainQueue& queue, Application& application, Settings settings)
        : queue_(queue)
        , consent_(application.preferences(), std::move(settings.ask))
        , tools_(queue, application, std::move(settings.version)) {
        server_.emplace(settings.socket, *this);
    }
    ~Desk() override {
        isOver_ = true;
        server_.reset();
    }
    Desk(Desk const&) = delete;
    Desk& operator=(Desk const&) = delete;

    ToolResult answer(BridgeRequest given, BridgeClient& client) override;

    void beginToEnd() { isEnding_ = true; }
    std::size_t connections() const { return server_->connections(); }
    std::size_t calls() const { return calls_; }
    bool isPerforming() const { return tools_.isPerforming(); }

private:
    using Request = std::shared_ptr<BridgeRequest const>; // it may be large, and is not copied
    using Pending = std::shared_ptr<AwaitedResult>;

    void begin(Request const& request, Pending const& call);
    void perform(Request const& request, Pending const& call);

    MainQueue& queue_;
    MCPConsent consent_; // the main queue's, as are the next two
    MCPToolHandler tools_;
    bool isEnding_ = false;
    std::atomic<bool> isOver_ = false;
    std::atomic<std::size_t> calls_ = 0;
    std::optional<BridgeServer> server_;
};

ToolResult AppMCPBackend::Desk::answer(BridgeRequest given, BridgeClient& client) {
    auto const request = std::make_shared<BridgeRequest const>(std::move(given));
    auto const call = std::make_shared<AwaitedResult>(client);
    queue_.async([this, request, call] { begin(request, call); });
    CallNote const note(*request);
    Counted const counted(calls_);
    auto result = call->wait([this] { return isOver_.load(); });
    if (!result) queue_.async([call] { call->abandon(); });
    note.write(result ? *result : interrupted());
    return result ? *std::move(result) : interrupted();
}

void AppMCPBackend::Desk::begin(Request const& request, Pending const& call) {
    if (isEnding_) return call->finish(interrupted());
    // Whether a name is a tool's at all is looked at behind the consent, as the arguments are.
    auto const tool = enumNamed<MCPToolName>(request->tool).value_or(MCPToolName::status);
    consent_.check(request->client, tool, [this, request, call](std::optional<MCPToolError> const& refusal) {
        if (refusal) return call->finish(toolResult::failure(refusal->code, refusal->what()));
        if (!call->isAbandoned()) perform(request, call);
    });
}

void AppMCPBackend::Desk::perform(Request const& request, Pending const& call) {
    try {
        call->onAbandoned(tools_.handle(
            {.tool = request->tool,
             .arguments = treeOf(request->arguments),
             .client = request->client,
             .progress = [call](double fraction, std::string const& message) { call->progress(fraction, message); },
             .finish = [call](ToolResult const& result) { call->finish(result); }}));
    } catch (MCPToolError const& error) {
        call->finish(toolResult::failure(error.code, error.what()));
    }
}

AppMCPBackend::AppMCPBackend(MainQueue& queue, Application& application, Settings settings)
    : desk_(std::make_unique<Desk>(queue, application, std::move(settings))) {}

AppMCPBackend::~AppMCPBackend() = default;

void AppMCPBackend::beginToEnd() { desk_->beginToEnd(); }

std::size_t AppMCPBackend::connections() const { return desk_->connections(); }

std::size_t AppMCPBackend::calls() const { return desk_->calls(); }

bool AppMCPBackend::isPerforming() const { return desk_->isPerforming(); }

}
