#include <Tavaro/Agents/MCPConsent.h>

#include <TavaroCore/Errors/Excerpt.h>

#include <fmt/format.h>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace {

using Names = std::vector<std::string>;

bool contains(Names const& names, std::string const& name) { return std::ranges::find(names, name) != names.end(); }

void add(Preferences& preferences, Preference<Names> const& list, std::string const& name) {
    preferences.update(list, [&](Names& names) {
        if (!contains(names, name)) names.push_back(name);
    });
}

void remove(Preferences& preferences, Preference<Names> const& list, std::string const& name) {
    if (!contains(preferences.get(list), name)) return;
    preferences.update(list, [&](Names& names) { std::erase(names, name); });
}

/// The name is the client's own, and foreign.
MCPToolError denied(std::string const& client, std::string_view what) {
    return {MCPErrorCode::consentDenied,
            fmt::format("{} isn't allowed to {}. Allow it in Tavaro → Settings → MCP.", excerpt(client), what)};
}

ConsentPrompt promptFor(std::string const& client) {
    return {.title = fmt::format("{} wants to control Tavaro", excerpt(client)),
            .text = "It will be able to record your screen, edit your projects and export videos. Recordings it starts "
                    "are labelled in the recorder bar. You can change this in Settings → MCP."};
}

}

bool MCPConsent::needsClicking(MCPToolName tool) {
    return tool == MCPToolName::uiClick || tool == MCPToolName::uiScroll || tool == MCPToolName::uiKeys;
}

MCPConsent::MCPConsent(Preferences& preferences, Ask ask)
    : preferences_(preferences)
    , ask_(std::move(ask))
    , observation_(preferences.observe([this] { settleDecided(); })) {}

MCPConsent::Decision MCPConsent::decision(std::string const& client) {
    if (contains(preferences_.get(agentsDenied), client)) return Decision::denied;
    return contains(preferences_.get(agentsAllowed), client) ? Decision::allowed : Decision::none;
}

MCPConsent::Clicking MCPConsent::clicking(std::string const& client) {
    bool const mayClick = decision(client) == Decision::allowed && contains(preferences_.get(agentsClicking), client);
    return mayClick ? Clicking::allowed : Clicking::denied;
}

Names MCPConsent::clients() {
    Names clients;
    for (auto const* const list : {&agentsAllowed, &agentsDenied}) {
        for (auto const& name : preferences_.get(*list)) {
            if (!contains(clients, name)) clients.push_back(name);
        }
    }
    return clients;
}

void MCPConsent::allow(std::string const& client, Clicking clicking) {
    if (clicking == Clicking::denied) remove(preferences_, agentsClicking, client);
    // First, since whoever waits is answered by what counts once it is allowed; before then clicks mean nothing.
    if (clicking == Clicking::allowed) add(preferences_, agentsClicking, client);
    add(preferences_, agentsAllowed, client);
    remove(preferences_, agentsDenied, client);
}

void MCPConsent::deny(std::string const& client) {
    add(preferences_, agentsDenied, client);
    remove(preferences_, agentsAllowed, client);
    remove(preferences_, agentsClicking, client);
}

void MCPConsent::forget(std::string const& client) {
    for (auto const* const list : {&agentsClicking, &agentsAllowed, &agentsDenied}) remove(preferences_, *list, client);
}

void MCPConsent::check(std::string const& client, MCPToolName tool, Answer answer) {
    if (!isOpen(client)) return answer(refusal(client, tool));
    auto& calls = questions_[client].calls;
    calls.push_back({tool, std::move(answer)});
    if (calls.size() == 1) ask(client);
}

void MCPConsent::ask(std::string const& client) {
    if (!ask_) return decide(client, std::nullopt);
    auto withdraw = ask_(promptFor(client), [this, client, here = std::weak_ptr(isHere_)](std::optional<bool> said) {
        if (here.lock()) decide(client, said);
    });
    auto const question = questions_.find(client);
    if (question != questions_.end()) question->second.withdraw = std::move(withdraw);
}

void MCPConsent::decide(std::string const& client, std::optional<bool> isAllowed) {
    auto const question = questions_.extract(client);
    if (question.empty()) return; // answered already
    auto const& calls = question.mapped().calls;
    try {
        if (isAllowed && isOpen(client)) *isAllowed ? allow(client) : deny(client);
    } catch (Error const& error) {
        MCPToolError const failure(MCPErrorCode::failed, error.what());
        for (auto const& each : calls) each.answer(failure);
        return;
    }
    for (auto const& each : calls) each.answer(refusal(client, each.tool));
}

void MCPConsent::settleDecided() {
    Names asked; // each look at the preferences may come back here
    for (auto const& each : questions_) asked.push_back(each.first);
    for (auto const& client : asked) {
        if (isOpen(client)) continue;
        auto const question = questions_.find(client);
        if (question == questions_.end()) continue;
        auto const withdraw = question->second.withdraw;
        decide(client, std::nullopt);
        if (withdraw) withdraw();
    }
}

/// Whether it is for the user to say what the client may.
bool MCPConsent::isOpen(std::string const& client) {
    return preferences_.get(agentsEnabled) && decision(client) == Decision::none;
}

std::optional<MCPToolError> MCPConsent::refusal(std::string const& client, MCPToolName tool) {
    if (!preferences_.get(agentsEnabled))
        return MCPToolError(MCPErrorCode::mcpDisabled, "MCP is switched off in Tavaro → Settings → MCP.");
    if (decision(client) != Decision::allowed) return denied(client, "control Tavaro");
    bool const mayClick = !needsClicking(tool) || clicking(client) == Clicking::allowed;
    return mayClick ? std::nullopt : std::optional(denied(client, "click and type in other apps"));
}

}
