#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/CompletionScript.h>
#include <Tavaro/Commands/Terminal.h>

#include <CLI/CLI.hpp>

#include <memory>
#include <string>

namespace tavaro::commands {

namespace {

std::string script(std::string const& shell, CommandOutline const& program) {
    if (shell == "bash") return bashCompletion(program);
    if (shell == "zsh") return zshCompletion(program);
    return fishCompletion(program);
}

}

void addCompletion(CLI::App& app) {
    auto const shell = std::make_shared<std::string>();
    auto* const command =
        app.add_subcommand("completion", "Prints what a shell reads to complete the commands, for its start file");
    command->add_option("SHELL", *shell, "the shell")->required()->check(CLI::IsMember({"bash", "zsh", "fish"}));
    command->footer("As in `source <(tavaro completion bash)`; what a package installs does that by itself.");
    command->callback([shell, &app] { terminal::say("{}", terminal::Lines{script(*shell, outlineOf(app))}); });
}

}
