#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Terminal.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Style/BackgroundPreset.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace tavaro::commands {

namespace {

void printExportPresets() {
    for (auto const& preset : ExportPreset::all()) {
        auto const settings = preset.settings();
        auto const format = preset.container == ExportContainer::gif
                                ? std::string(displayName(preset.container))
                                : fmt::format("{} {}", displayName(preset.container), displayName(preset.codec));
        terminal::say("{:<15} {:<17} {:<36} {:<18} {:>7} a minute\n", preset.id, preset.name, preset.detail, format,
                      fileSizeText(estimatedFileSize(settings, 60)));
    }
}

void printBackgrounds() {
    for (auto const& preset : BackgroundPreset::all()) {
        terminal::say("{:<16} {:<16} {}\n", preset.id, preset.name, title(preset.family));
    }
}

}

void addPresets(CLI::App& app) {
    struct Options {
        bool backgrounds = false;
        bool asJSON = false;
    };
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("presets", "Lists the export presets, or the built-in backgrounds");
    command->add_flag("--backgrounds", options->backgrounds, "the backgrounds instead");
    command->add_flag("--json", options->asJSON, "print them as JSON");
    command->callback([options] {
        if (options->asJSON) {
            auto const presets = ExportPreset::all();
            terminal::sayJSON(options->backgrounds ? encodeJSON(BackgroundPreset::all())
                                                   : encodeJSON(std::vector(presets.begin(), presets.end())));
        } else if (options->backgrounds) {
            printBackgrounds();
        } else {
            printExportPresets();
        }
    });
}

}
