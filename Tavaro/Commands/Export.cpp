#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Model/OpenProject.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroCore/Records/JSONWriter.h>
#include <TavaroPlatform/Folders/Folders.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/Exporter.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
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

/// The container that a file's ending stands for.
std::optional<ExportContainer> containerOf(std::string const& output) {
    auto const ending = endingOf(output);
    return ending.empty() ? std::nullopt : enumNamed<ExportContainer>(std::string_view(ending).substr(1));
}

std::string outputProblem(std::string const& output) {
    if (output.empty()) return notEmpty(output);
    bool const isKnown = !fs::path(output).has_extension() || containerOf(output);
    return isKnown ? "" : fmt::format("“{}” has none of the endings .mp4, .mov and .gif", output);
}

ExportSettings settingsOfPreset(std::string const& id) {
    if (auto const* preset = ExportPreset::withID(id)) return preset->settings();
    throw Error(fmt::format("There is no preset “{}”; `tavaro presets` lists them.", id));
}

/// What was asked for, else what the file's ending says, else what the codec needs.
ExportContainer containerFor(Options const& options, ExportSettings const& settings) {
    auto const byEnding = containerOf(options.output);
    if (options.container.empty()) {
        if (byEnding) return *byEnding;
        return settings.codec == VideoCodecChoice::proRes422 ? ExportContainer::mov : settings.container;
    }
    auto const asked = enumNamed<ExportContainer>(options.container).value();
    if (byEnding && *byEnding != asked) {
        throw CLI::ValidationError("--container",
                                   fmt::format("{} does not go with the name “{}”", options.container, options.output));
    }
    return asked;
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
    settings.container = containerFor(options, settings);
    if (!(settings == before)) settings.presetID.reset();
    return settings;
}

fs::path targetOf(Options const& options, ExportSettings const& settings, DemoProject const& project) {
    bool const isNamed = !options.output.empty();
    auto target = isNamed ? fs::path(options.output)
                          : folders::movies() / "Tavaro" / "Exports" / suggestedFileName(settings, project.name);
    if (isNamed && target.has_extension()) return target;
    return target += fmt::format(".{}", fileExtension(settings.container));
}

void exportProject(Options const& options) {
    auto const [package, project] = openProject(options.package);
    auto const settings = settingsOf(options, project);
    Interruption const interruption;
    Exporter exporter(project, package, settings);
    ProgressLine line("Exporting", options.asJSON ? ProgressLine::Output::silent : ProgressLine::Output::automatic);
    auto const written = exporter.exportFile(targetOf(options, settings, project), [&](ExportProgress const& progress) {
        if (progress.stage != ExportStage::preparing) line.frames(progress.framesWritten, progress.totalFrames);
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
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required()->check(notEmpty);
    command->add_option("--preset", options->preset, "a preset, by its id in `tavaro presets`");
    command->add_option("--size", options->size, "WIDTHxHEIGHT in pixels")->check(sizeProblem);
    command->add_option("--fps", options->fps, "frames a second")->check(CLI::Range(1, 240));
    command->add_option("--codec", options->codec, "h264, hevc or proRes422")->check(isNameOf<VideoCodecChoice>());
    command->add_option("--container", options->container, "mp4, mov or gif")->check(isNameOf<ExportContainer>());
    command->add_option("--fit", options->fit, "how the recording fills the canvas")->check(isNameOf<ContentFit>());
    command->add_option("--bitrate", options->bitrate, "bits per second")->check(CLI::Range(50'000, 2'000'000'000));
    command
        ->add_option("-o,--output", options->output, "the file to write; never overwrites, a number is added instead")
        ->check(outputProblem);
    command->add_flag("--json", options->asJSON, "print the result as JSON and no progress");
    command->callback([options] { exportProject(*options); });
}

}
