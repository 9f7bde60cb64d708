#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Model/NewProject.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSONWriter.h>
#include <TavaroPlatform/Folders/Folders.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/Exporter.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <charconv>

namespace tavaro::commands {

namespace {

namespace fs = std::filesystem;

struct Options {
    std::string package;
    std::string preset;
    std::string size;
    std::int64_t fps = 0;
    std::string codec;
    std::string container;
    std::string fit;
    std::int64_t bitrate = 0;
    std::string output;
    bool asJSON = false;
};

/// "1920x1080"
std::optional<Size2> parseSize(std::string_view text) {
    Size2 size;
    char const* const end = text.data() + text.size();
    auto const width = std::from_chars(text.data(), end, size.width);
    if (width.ec != std::errc{} || width.ptr == end || (*width.ptr != 'x' && *width.ptr != 'X')) return std::nullopt;
    auto const height = std::from_chars(width.ptr + 1, end, size.height);
    bool const isSize = height.ec == std::errc{} && height.ptr == end;
    bool const isInRange = std::min(size.width, size.height) >= 16 && std::max(size.width, size.height) <= 8192;
    return isSize && isInRange ? std::optional(size) : std::nullopt;
}

std::string sizeProblem(std::string const& text) {
    return parseSize(text) ? "" : "a size is WIDTHxHEIGHT, each side from 16 to 8192 pixels";
}

ExportSettings settingsOfPreset(std::string const& id) {
    if (auto const* preset = ExportPreset::withID(id)) return preset->settings();
    throw Error(fmt::format("There is no preset “{}”; `tavaro presets` lists them.", id));
}

/// The project's own settings or the preset's, with what was asked for on top.
ExportSettings settingsOf(Options const& options, DemoProject const& project) {
    auto settings = options.preset.empty() ? project.exportSettings : settingsOfPreset(options.preset);
    auto const before = settings;
    if (!options.size.empty()) settings.size = parseSize(options.size).value();
    if (options.fps > 0) settings.fps = options.fps;
    if (!options.codec.empty()) settings.codec = enumNamed<VideoCodecChoice>(options.codec).value();
    if (!options.fit.empty()) settings.fit = enumNamed<ContentFit>(options.fit).value();
    if (options.bitrate > 0) settings.bitrateOverride = options.bitrate;
    auto const ending = fs::path(options.output).extension().string();
    if (!options.container.empty())
        settings.container = enumNamed<ExportContainer>(options.container).value();
    else if (!ending.empty())
        settings.container = enumNamed<ExportContainer>(ending.substr(1)).value_or(settings.container);
    else if (settings.codec == VideoCodecChoice::proRes422)
        settings.container = ExportContainer::mov;
    if (!(settings == before)) settings.presetID.reset();
    return settings;
}

fs::path targetOf(Options const& options, ExportSettings const& settings, DemoProject const& project) {
    if (!options.output.empty()) return options.output;
    return folders::movies() / "Tavaro" / "Exports" / suggestedFileName(settings, project.name);
}

void exportProject(Options const& options) {
    ProjectPackage const package(packagePath(options.package));
    auto const project = package.load();
    auto const settings = settingsOf(options, project);
    Interruption const interruption;
    Exporter exporter(project, package, settings);
    ProgressLine line("Exporting", options.asJSON ? ProgressLine::Output::silent : ProgressLine::Output::automatic);
    auto const written =
        exporter.exportMovie(targetOf(options, settings, project), [&](ExportProgress const& progress) {
            line.frames(progress.framesWritten, progress.totalFrames);
            if (interruption.isRequested()) exporter.cancel();
        });
    if (!options.asJSON) {
        fmt::print("{}\n", written.string());
        return;
    }
    JSONWriter writer;
    writer.beginObject();
    writer.key("frames");
    writer.integer(exporter.totalFrames());
    writer.key("path");
    writer.string(written.string());
    writer.endObject();
    fmt::print("{}\n", writer.take());
}

}

void addExport(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("export", "Writes the finished video");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required();
    command->add_option("--preset", options->preset, "a preset, by its id in `tavaro presets`");
    command->add_option("--size", options->size, "WIDTHxHEIGHT in pixels")->check(sizeProblem);
    command->add_option("--fps", options->fps, "frames a second")->check(CLI::Range(1, 240));
    command->add_option("--codec", options->codec, "h264, hevc or proRes422")->check(isNameOf<VideoCodecChoice>());
    command->add_option("--container", options->container, "mp4 or mov")->check(isNameOf<ExportContainer>());
    command->add_option("--fit", options->fit, "how the recording fills the canvas")->check(isNameOf<ContentFit>());
    command->add_option("--bitrate", options->bitrate, "bits per second")->check(CLI::Range(50'000, 2'000'000'000));
    command->add_option("-o,--output", options->output,
                        "the file to write; never overwrites, a number is added instead");
    command->add_flag("--json", options->asJSON, "print the result as JSON and no progress");
    command->callback([options] { exportProject(*options); });
}

}
