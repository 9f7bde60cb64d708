#include <Tavaro/Commands/Command.h>

#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroCore/Records/JSON.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace tavaro::commands {

void addPresets(CLI::App& app) {
    auto asJSON = std::make_shared<bool>(false);
    auto* command = app.add_subcommand("presets", "Lists the export presets");
    command->add_flag("--json", *asJSON, "print them as JSON");
    command->callback([asJSON] {
        auto const presets = ExportPreset::all();
        if (*asJSON) {
            fmt::print("{}\n", encodeJSON(std::vector(presets.begin(), presets.end())));
            return;
        }
        for (auto const& preset : presets) {
            fmt::print("{:<15} {:<17} {:<36} {} {}\n", preset.id, preset.name, preset.detail,
                       displayName(preset.container),
                       preset.container == ExportContainer::gif ? "" : displayName(preset.codec));
        }
    });
}

}
