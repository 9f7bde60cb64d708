#include <Tavaro/Commands/Command.h>

#include <Tavaro/Agents/MCPConsent.h>
#include <Tavaro/Agents/MCPRegistrations.h>
#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/CommandGroup.h>
#include <Tavaro/Commands/Terminal.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroMCP/Bridge/MCPSocketPath.h>
#include <TavaroPlatform/Processes/DetachedProcess.h>
#include <TavaroPlatform/Sockets/SocketError.h>
#include <TavaroPlatform/Sockets/UnixSocket.h>

#include <fmt/format.h>

#include <algorithm>

namespace tavaro::commands {

namespace {

struct AllowedAgent {
    std::string name;
    bool mayClick = false; // and type in other applications

    static constexpr auto fields =
        std::tuple{field("name", &AllowedAgent::name), field("mayClick", &AllowedAgent::mayClick)};
};
static_assert(listsEveryField<AllowedAgent>);

/// How things are for agents.
struct AgentAccess {
    bool isOn = false;
    std::string socket;
    bool isRunning = false; // an application answers there
    std::optional<std::string> problem;
    std::vector<AllowedAgent> allowed;
    std::vector<std::string> refused;
    std::vector<std::string> damaged; // files of preferences that count no more

    static constexpr auto fields = std::tuple{
        field("isOn", &AgentAccess::isOn),       field("socket", &AgentAccess::socket),
        field("problem", &AgentAccess::problem), field("isRunning", &AgentAccess::isRunning),
        field("allowed", &AgentAccess::allowed), field("refused", &AgentAccess::refused),
        field("damaged", &AgentAccess::damaged),
    };
};
static_assert(listsEveryField<AgentAccess>);

void lookForApplication(AgentAccess& access) {
    auto const socket = mcpSocketPath();
    access.socket = socket.string();
    try {
        access.isRunning = UnixSocket::connect(socket).has_value();
    } catch (SocketError const& error) {
        access.problem = error.what();
    }
}

AgentAccess agentAccess(Preferences& preferences) {
    MCPConsent consent(preferences);
    AgentAccess access{.isOn = preferences.get(agentsEnabled)};
    lookForApplication(access);
    for (auto const& client : consent.clients()) {
        if (consent.decision(client) == MCPConsent::Decision::allowed)
            access.allowed.push_back({client, consent.clicking(client) == MCPConsent::Clicking::allowed});
        else
            access.refused.push_back(client);
    }
    for (auto const& file : preferences.damagedFiles()) access.damaged.push_back(file.string());
    return access;
}

void print(AgentAccess const& access) {
    terminal::say("Agent control is {}.\n", access.isOn ? "on" : "off; `tavaro mcp on` switches it on");
    if (access.problem)
        terminal::say("Agents cannot reach Tavaro: {}\n", *access.problem);
    else if (access.isRunning)
        terminal::say("Tavaro runs and answers agents at “{}”.\n", access.socket);
    else
        terminal::say("Tavaro does not run; an agent's first call starts it, at “{}”.\n", access.socket);
    for (auto const& client : access.allowed)
        terminal::say("Allowed: {}{}\n", excerpt(client.name), client.mayClick ? ", also to click and type" : "");
    for (auto const& client : access.refused) terminal::say("Refused: {}\n", excerpt(client));
    if (access.allowed.empty() && access.refused.empty())
        terminal::say("No client is known yet; each is asked for when it first calls.\n");
    for (auto const& file : access.damaged)
        terminal::say("Damaged: “{}”; what was chosen there, also “off”, counts no more. Remove it once you have "
                      "looked.\n",
                      file);
}

/// What the commands have in common.
struct Desk {
    Preferences preferences{Preferences::usualFile(),
                            [](std::string const& remark) { terminal::tell("{}\n", remark); }};
    MCPConsent consent{preferences};
    bool asJSON = false;
    std::string client;
    MCPConsent::Clicking clicking = MCPConsent::Clicking::denied;

    /// What was done, and for programs how things are by it.
    void report(std::string const& sentence) {
        if (asJSON)
            terminal::sayJSON(encodeJSON(agentAccess(preferences)));
        else
            terminal::say("{}\n", sentence);
    }
};

void show(Desk& desk) {
    auto const access = agentAccess(desk.preferences);
    if (desk.asJSON)
        terminal::sayJSON(encodeJSON(access));
    else
        print(access);
}

void allow(Desk& desk) {
    desk.consent.allow(desk.client, desk.clicking);
    bool const mayClick = desk.clicking == MCPConsent::Clicking::allowed;
    desk.report(fmt::format("{} may control Tavaro{} click and type in other apps.{}", excerpt(desk.client),
                            mayClick ? ", and" : ", but not",
                            desk.preferences.get(agentsEnabled) ? "" : " Agent control is off, though."));
}

void refuse(Desk& desk) {
    desk.consent.deny(desk.client);
    desk.report(fmt::format("{} may not control Tavaro.", excerpt(desk.client)));
}

/// The client of that name; else those that the list shows under it, since it shows long names in part.
std::vector<std::string> clientsShownAs(std::string const& name, std::vector<std::string> known) {
    if (std::ranges::find(known, name) != known.end()) return {name};
    std::erase_if(known, [&](std::string const& each) { return excerpt(each) != name; });
    return known;
}

void forget(Desk& desk) {
    auto const clients = clientsShownAs(desk.client, desk.consent.clients());
    if (clients.empty()) {
        throw Error(fmt::format("No client “{}” is allowed or refused; `tavaro mcp` lists those that are.",
                                excerpt(desk.client)));
    }
    for (auto const& client : clients) desk.consent.forget(client);
    desk.report(fmt::format("{} will be asked for again.", excerpt(desk.client)));
}

void turnOn(Desk& desk) {
    desk.preferences.set(agentsEnabled, true);
    desk.report("Agent control is on.");
}

void turnOff(Desk& desk) {
    desk.preferences.set(agentsEnabled, false);
    desk.report("Agent control is off: every call is refused.");
}

void printRegistrations(Desk& desk) {
    auto const server = findProgram("tavaro-mcp");
    if (!server) throw Error("There is no program tavaro-mcp, neither beside this one nor on the search path.");
    auto const configuration = claudeDesktopConfiguration(*server);
    if (desk.asJSON) return terminal::sayJSON(configuration);
    terminal::say("Claude Code:\n");
    terminal::sayPath(claudeCodeLine(*server));
    terminal::say("\nClaude Desktop / Cursor:\n");
    terminal::sayJSON(configuration);
}

void addForClient(CommandGroup<Desk>& group, char const* name, char const* help, void (*work)(Desk&)) {
    auto& command = group.add(name, help, work);
    auto const& desk = group.desk();
    command.add_option("NAME", desk->client, "the client, by the name that it gives")->required()->check(notEmpty);
    if (work != allow) return;
    command.add_flag_callback(
        "--clicks", [desk] { desk->clicking = MCPConsent::Clicking::allowed; },
        "also to click and type in other apps; without it, not any more");
}

}

void addMCP(CLI::App& app) {
    CommandGroup<Desk> group(app, "mcp", "Shows which agents may control Tavaro, and decides it", show);
    group.addJSON("print how things are as JSON; of config, the configuration alone");
    group.command().footer("Where an agent reports “Settings → MCP”, that is here: `allow NAME`, `on`.");
    group.add("config", "Prints how MCP clients are told of Tavaro, ready to paste", printRegistrations);
    addForClient(group, "allow", "Lets a client record, edit and export", allow);
    addForClient(group, "refuse", "Keeps a client out, without asking", refuse);
    addForClient(group, "forget", "Makes a client unknown: its next call asks", forget);
    group.add("on", "Lets clients in that are allowed", turnOn);
    group.add("off", "Keeps all clients out", turnOff);
}

}
