#pragma once

#include <TavaroCore/Records/JSONText.h>

#include <functional>
#include <memory>
#include <stop_token>
#include <string>
#include <string_view>

namespace tavaro {

/// One client's conversation with the server: JSON-RPC 2.0, a message a line. Any bytes are answered or ignored;
/// nothing is thrown. All of it is on one thread, its owner's.
class MCPSession {
public:
    struct ToolCall {
        std::string tool;
        JSONText arguments = JSONValue::Object{}; // an object, as the client spelled it
        std::string client;                       // by the name that it gave itself
        std::stop_token cancelled = {};           // by the client, which wants no result any more
    };
    using Progress = std::function<void(double fraction, std::string const& message)>;
    using Finish = std::function<void(JSONText result)>;

    struct Surroundings {
        std::string version; // of the server
        /// Starts a call and returns at once; `finish` is called once, also for one that is cancelled. Both it and
        /// `progress` do nothing after that. What it throws becomes a failure.
        std::function<void(ToolCall call, Progress progress, Finish finish)> callTool;
        /// A message, without the newline that ends it.
        std::function<void(std::string_view line)> write;
        std::function<double()> now; // seconds, of any clock that does not jump
    };

    explicit MCPSession(Surroundings surroundings);
    ~MCPSession();
    MCPSession(MCPSession const&) = delete;
    MCPSession& operator=(MCPSession const&) = delete;

    /// A line that came in, without its newline.
    void receive(std::string_view line);
    /// Answers a line that was too long to be kept, by its beginning: the client waits for an answer with its id.
    void refuseTooLong(std::string_view beginning);

    /// Whether a call is at work or waits for its turn.
    bool isBusy() const;
    /// Clients give up on a call that is silent. Call this every quarter of a second while one is busy: each call sends
    /// progress at least once a second, also when nothing moves. It rises each time, stays below 1, and comes no more
    /// often than that either: of what is reported in between, the newest is sent.
    void beat();

    /// Clients read no longer lines than 10 MiB. Of a result that would be longer, the client gets a failure.
    static constexpr std::size_t longestResult = std::size_t{9} << 20;

private:
    struct State;
    std::shared_ptr<State> state_;
};

}
