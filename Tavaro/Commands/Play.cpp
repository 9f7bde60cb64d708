#include <Tavaro/Commands/Command.h>

#include <Tavaro/Agents/MCPConsent.h>
#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Commands/TextFile.h>
#include <Tavaro/Model/Project/MovedProject.h>
#include <Tavaro/Model/Project/PackagePath.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroMCP/Client/ScriptPlayer.h>
#include <TavaroPlatform/Processes/DetachedProcess.h>
#include <TavaroPlatform/Version/Version.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <optional>
#include <string_view>
#include <unistd.h>

namespace tavaro::commands {

namespace {

constexpr std::uint64_t mostBytes = std::uint64_t{16} << 20;

struct Options {
    std::string script;
    std::string output;
    PendingFile::IfTaken ifTaken = PendingFile::IfTaken::refuse;
    bool asJSON = false;
};

/// What is printed for programs.
struct PlayedScript {
    std::optional<std::string> project; // the recording that was made last
    std::vector<PlayedStep> steps;

    static constexpr auto fields =
        std::tuple{field("project", &PlayedScript::project), field("steps", &PlayedScript::steps)};
};
static_assert(listsEveryField<PlayedScript>);

bool makesRecording(MCPToolName tool) { return tool == MCPToolName::stopRecording || tool == MCPToolName::recordFor; }

/// Who plays a script is a client like any other, allowed by the person who runs the command, for as long as it runs.
/// The name is one that no other client can know beforehand.
class Permission {
public:
    explicit Permission(ToolScript const& script) {
        if (!preferences_.get(agentsEnabled))
            throw Error("Agent control is off, and a script is played as an agent plays it: `tavaro mcp on`.");
        forgetEnded();
        bool const clicks = std::ranges::any_of(
            script.steps, [](auto const& step) { return step.tool && MCPConsent::needsClicking(*step.tool); });
        consent_.allow(client_, clicks ? MCPConsent::Clicking::allowed : MCPConsent::Clicking::denied);
    }
    ~Permission() {
        try {
            consent_.forget(client_);
        } catch (Error const& error) {
            terminal::tell("{}\n", error.what());
        }
    }
    Permission(Permission const&) = delete;
    Permission& operator=(Permission const&) = delete;

    std::string const& client() const { return client_; }

private:
    /// What players left behind that were killed.
    void forgetEnded() {
        for (auto const& client : consent_.clients()) {
            if (!client.starts_with(namePrefix)) continue;
            pid_t process = 0;
            std::from_chars(client.data() + namePrefix.size(), client.data() + client.size(), process);
            if (process > 0 && ::kill(process, 0) != 0 && errno == ESRCH) consent_.forget(client);
        }
    }

    static constexpr std::string_view namePrefix = "tavaro play ";

    std::string const client_ = fmt::format("{}{} {}", namePrefix, ::getpid(), UUID::random().text().substr(0, 8));
    Preferences preferences_;
    MCPConsent consent_{preferences_};
};

/// Everything that can be known to fail is found before the first step is played.
ToolScript readScript(Options const& options) {
    auto script = ToolScript::parse(readText(options.script, Dash::isStandardInput, mostBytes));
    for (auto const& step : script.steps)
        if (!step.save.empty()) expectWritable(step.save, options.ifTaken);
    if (options.output.empty()) return script;
    if (!script.uses(MCPToolName::stopRecording) && !script.uses(MCPToolName::recordFor))
        throw Error("The script makes no recording, so there is no project for -o.");
    expectPlaceFor(packagePath(options.output));
    return script;
}

/// A line for each step, which stays. What is said on the way is overwritten by it, so it is for terminals.
class StepLines {
public:
    StepLines(ToolScript const& script, ProgressLine::Output output) : script_(script), output_(output) {}

    void begin(std::size_t index) {
        auto const& step = script_.steps[index];
        if (!step.say.empty() && output_ != ProgressLine::Output::silent) terminal::tell("{}\n", step.say);
        title_ = script_.titleOf(index);
        line_.emplace("", output_);
        line_->stage(title_);
    }
    void progress(double fraction, std::string const& message) {
        if (isTerminal_) line_->text(fmt::format("{:.0f} % {}", 100 * fraction, excerpt(message)));
    }
    void end(PlayedStep const& step) {
        constexpr std::size_t longest = 160;
        auto const text = step.text.empty() ? fmt::format("{:.1f} s", step.seconds) : excerpt(step.text, longest);
        line_->finish(fmt::format("{}: {}", title_, text));
        line_.reset();
    }

private:
    ToolScript const& script_;
    ProgressLine::Output const output_;
    bool const isTerminal_ = ::isatty(STDERR_FILENO) == 1;
    std::string title_;
    std::optional<ProgressLine> line_; // of the step that is played
};

std::vector<PlayedStep> playedSteps(ToolScript const& script, Options const& options) {
    auto const server = findProgram("tavaro-mcp");
    if (!server) throw Error("There is no program tavaro-mcp, neither beside this one nor on the search path.");
    Interruption const interruption;
    Permission const permission(script);
    StepLines lines(script, options.asJSON ? ProgressLine::Output::silent : ProgressLine::Output::automatic);
    ScriptPlayer player(
        {.server = *server, .name = permission.client(), .version = std::string(programVersion())},
        {.begins = [&](std::size_t step) { lines.begin(step); },
         .progress = [&](double fraction, std::string const& message) { lines.progress(fraction, message); },
         .ends = [&](PlayedStep const& step) { lines.end(step); },
         .isCancelled = [&] { return interruption.isRequested(); }},
        options.ifTaken);
    return player.play(script);
}

/// Where the application saved the last recording; none where there was none.
std::optional<std::string> recordingIn(std::vector<PlayedStep> const& steps) {
    for (auto step = steps.rbegin(); step != steps.rend(); ++step) {
        auto const tool = enumNamed<MCPToolName>(step->tool);
        auto const* const path =
            tool && makesRecording(*tool) && step->result ? step->result->find<std::string>("path") : nullptr;
        if (path) return *path;
    }
    return std::nullopt;
}

void play(Options const& options) {
    auto const script = readScript(options);
    PlayedScript played{.steps = playedSteps(script, options)};
    played.project = recordingIn(played.steps);
    if (played.project && !options.output.empty()) {
        auto const wanted = packagePath(options.output);
        moveProject(*played.project, wanted);
        played.project = wanted.string();
    }
    if (options.asJSON) return terminal::sayJSON(encodeJSON(played));
    terminal::say("Played {}.\n", counted(played.steps.size(), "step"));
    if (played.project) terminal::sayPath(*played.project);
}

}

void addPlay(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("play", "Plays a script of tool calls, as an agent would make them");
    command->add_option("SCRIPT", options->script, "the script, a JSON file; - reads it from the standard input")
        ->required()
        ->check(notEmpty);
    command
        ->add_option("-o,--output", options->output,
                     "where the recording goes, NAME.recproj; else it stays with the application's projects")
        ->check(projectName);
    addOverwriting(*command, options->ifTaken);
    command->add_flag("--json", options->asJSON, "print what each step came to as JSON");
    command->footer(
        "While it runs, the script may record, edit and export, and where it has such steps, click and type.");
    command->callback([options] { play(*options); });
}

}
