#pragma once

#include <TavaroMCP/Catalogue/MCPToolName.h>
#include <TavaroMCP/Protocol/MCPToolError.h>
#include <TavaroPlatform/Preferences/Preferences.h>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// Absent is on: every client is asked for before it may do anything. What is neither true nor false is off.
inline Preference<bool> const agentsEnabled{"com.tavaro.mcp.enabled", true, false};
/// Names of clients.
inline Preference<std::vector<std::string>> const agentsAllowed{"com.tavaro.mcp.allowed"};
inline Preference<std::vector<std::string>> const agentsDenied{"com.tavaro.mcp.denied"};
/// Those of them that may click and type in other applications.
inline Preference<std::vector<std::string>> const agentsClicking{"com.tavaro.mcp.clicks"};

/// What the user is asked about a client.
struct ConsentPrompt {
    std::string title;
    std::string text;
};

/// Which clients may control the application. It belongs to the main queue.
class MCPConsent {
public:
    enum class Decision { allowed, denied, none };
    /// Whether an allowed client may also click and type in other applications.
    enum class Clicking { denied, allowed };
    static bool needsClicking(MCPToolName tool);
    /// Takes a question back that is decided otherwise; an answer that comes yet is not heard. May be empty.
    using Withdraw = std::function<void()>;
    /// Asks the user, and answers at once or later; none: there is nobody to ask, now.
    using Ask = std::function<Withdraw(ConsentPrompt const& prompt, std::function<void(std::optional<bool>)> answer)>;
    /// Gets why not, or nothing.
    using Answer = std::function<void(std::optional<MCPToolError> const&)>;

    /// Without `ask` nobody can be asked.
    explicit MCPConsent(Preferences& preferences, Ask ask = {});
    MCPConsent(MCPConsent const&) = delete;
    MCPConsent& operator=(MCPConsent const&) = delete;

    Decision decision(std::string const& client);
    Clicking clicking(std::string const& client);
    /// Those with a decision, in the order in which they were allowed, then denied.
    std::vector<std::string> clients();

    /// Each takes back what was decided before, clicks too. Throw `FileError`; what is done by then never allows more
    /// than was asked for.
    void allow(std::string const& client, Clicking clicking = Clicking::denied);
    void deny(std::string const& client);
    /// As if the client had never come.
    void forget(std::string const& client);

    /// Whether the client may call the tool. A client of whom nothing is known is asked for, once for all its calls,
    /// and what the user says is stored; where nobody says anything it is refused and stays unknown. What is decided
    /// elsewhere meanwhile counts at once, and is not overruled by what the user says then.
    void check(std::string const& client, MCPToolName tool, Answer answer);

private:
    struct Waiting {
        MCPToolName tool;
        Answer answer;
    };
    struct Question {
        std::vector<Waiting> calls;
        Withdraw withdraw;
    };

    void ask(std::string const& client);
    void decide(std::string const& client, std::optional<bool> isAllowed);
    void settleDecided();
    bool isOpen(std::string const& client);
    std::optional<MCPToolError> refusal(std::string const& client, MCPToolName tool);

    Preferences& preferences_;
    Ask const ask_;
    std::map<std::string, Question> questions_; // that the user has not answered, by client
    Preferences::Observation const observation_;
    std::shared_ptr<bool> const isHere_ = std::make_shared<bool>(true);
};

}
