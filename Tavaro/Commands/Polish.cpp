#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Model/OpenProject.h>

#include <TavaroCore/Direction/SmartDirector.h>
#include <TavaroCore/Records/JSON.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

struct Options {
    std::string package;
    std::string mode;
    PolishOptions polish;
    bool asJSON = false;
};

/// "zoomFollowsCursor" → "zoom-follows-cursor"
std::string flagName(std::string_view field) {
    std::string name;
    for (char const c : field) {
        if (c >= 'A' && c <= 'Z') {
            name += '-';
            name += static_cast<char>(c - 'A' + 'a');
        } else {
            name += c;
        }
    }
    return name;
}

void polish(Options const& options) {
    auto [package, project] = openProject(options.package);
    if (!options.mode.empty()) project.mode = modeNamed(options.mode);
    auto const report = SmartDirector(options.polish, project.mode).polish(project);
    project.modifiedAt = Date::now();
    package.save(project);
    if (options.asJSON) {
        fmt::print("{}\n", encodeJSON(report));
        return;
    }
    for (auto const& line : report.summaryLines()) fmt::print("{}\n", line);
}

}

void addPolish(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("polish", "Turns the raw take into an edit; what was made by hand stays");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required()->check(notEmpty);
    command->add_option("--mode", options->mode, "what kind of demo it is; the project remembers it")
        ->check(modeNames());
    forEachField<PolishOptions>([&](auto const& field) {
        auto const name = flagName(field.name);
        auto const text = options->polish.*field.member ? "" : "switch it on";
        command->add_flag("--" + name + ",!--no-" + name, options->polish.*field.member, text);
    });
    command->add_flag("--json", options->asJSON, "print the report as JSON");
    command->callback([options] { polish(*options); });
}

}
