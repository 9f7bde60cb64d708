#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/ManualPage.h>

#include <TavaroCore/Files/AtomicFile.h>

#include <CLI/CLI.hpp>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace tavaro::commands {

namespace {

namespace fs = std::filesystem;

constexpr std::uint64_t mostBytes = 1 << 20;

struct Options {
    std::string output;
    std::string more; // a folder with "tavaro-mcp.roff" and the like, for what the outline cannot know
};

void write(CommandOutline const& command, CommandOutline const& program, Options const& options) {
    auto const name = manualPageName(command);
    auto const more = fs::path(options.more) / (name + ".roff");
    auto const text = options.more.empty() ? std::nullopt : readWholeFile(more, mostBytes);
    writeFileAtomically(fs::path(options.output) / (name + ".1"), manualPage(command, program, text.value_or("")));
}

}

/// For who packages the program, so the help leaves it out.
void addManual(CLI::App& app) {
    auto const options = std::make_shared<Options>();
    auto* const command = app.add_subcommand("manual", "Writes the manual pages of all commands into a folder");
    command->group("");
    command->add_option("-o,--output", options->output, "the folder")->required();
    command->add_option("--more", options->more, "a folder of sections to add to pages, by their names");
    command->callback([options, &app] {
        auto const program = outlineOf(app);
        fs::create_directories(options->output);
        write(program, program, *options);
        for (auto const& each : program.commands) write(each, program, *options);
    });
}

}
