#pragma once

#include <CLI/CLI.hpp>

#include <memory>

namespace tavaro::commands {

/// A command that shows how things are, and has commands below it that decide them. All of them work at one `Desk`,
/// whose `asJSON` is what programs ask for.
template<class Desk> class CommandGroup {
public:
    using Work = void (*)(Desk&);

    CommandGroup(CLI::App& app, char const* name, char const* help, Work show)
        : command_(*app.add_subcommand(name, help)) {
        command_.require_subcommand(0, 1);
        command_.callback([desk = desk_, command = &command_, show] {
            if (command->get_subcommands().empty()) show(*desk);
        });
    }

    CLI::App& command() { return command_; }
    std::shared_ptr<Desk> const& desk() const { return desk_; }

    void addJSON(char const* help) { command_.add_flag("--json", desk_->asJSON, help); }
    /// One below; the options of the command above may follow it.
    CLI::App& add(char const* name, char const* help, Work work) {
        auto* const below = command_.add_subcommand(name, help);
        below->fallthrough();
        below->callback([desk = desk_, work] { work(*desk); });
        return *below;
    }

private:
    std::shared_ptr<Desk> const desk_ = std::make_shared<Desk>(); // the parser's, too, which outlives this
    CLI::App& command_;
};

}
