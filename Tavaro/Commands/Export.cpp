#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Model/Making/CutShort.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroCore/Records/JSONWriter.h>
#include <TavaroCore/Values/Timecode.h>
#include <TavaroPlatform/Folders/Folders.h>
#include <TavaroRender/Export/ExportError.h>
#include <TavaroRender/Export/Exporter.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <map>

namespace tavaro::commands {

namespace {

namespace fs = std::filesystem;

enum class Toggle { unsaid, on, off };

struct Options {
    std::string package;
    std::string preset;
    std::string size;
    std::int64_t fps = 0;
    std::string codec;
    std::string container;
    std::string fit;
    std::int64_t bitrate = 0;
    std::string encoder = "auto";
    Toggle watermark = Toggle::unsaid;
    Toggle audio = Toggle::unsaid;
    std::string output;
    bool estimatesOnly = false;
    bool asJSON = false;
};

std::map<std::string, EncoderChoice> const encoderChoices{
    {"auto", EncoderChoice::automatic}, {"software", EncoderChoice::software}, {"hardware", EncoderChoice::hardware}};

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

/// What was asked for, else what the file's ending says; none where neither does.
std::optional<ExportContainer> askedContainer(Options const& options) {
    auto const byEnding = containerOf(options.output);
    if (options.container.empty()) return byEnding;
    auto const asked = enumNamed<ExportContainer>(options.container).value();
    if (byEnding && *byEnding != asked) {
        throw CLI::ValidationError("--container",
                                   fmt::format("{} does not go with the name “{}”", options.container, options.output));
    }
    return asked;
}

/// The GIF preset, in the shape of the project's canvas.
ExportSettings settingsOfGIF(Size2 canvas) {
    auto settings = settingsOfPreset("gif");
    auto const longest = static_cast<double>(settings.size.width);
    double const scale = longest / static_cast<double>(std::max({canvas.width, canvas.height, std::int64_t{1}}));
    auto const side = [&](std::int64_t of) {
        return std::max<std::int64_t>(std::llround(static_cast<double>(of) * scale), 16);
    };
    settings.size = Size2{side(canvas.width), side(canvas.height)}.evened();
    return settings;
}

/// What the options do not say: the preset's settings, else the project's own, which hardly fit a GIF unless they are
/// those of one.
ExportSettings settingsBefore(Options const& options, DemoProject const& project,
                              std::optional<ExportContainer> asked) {
    if (!options.preset.empty()) return settingsOfPreset(options.preset);
    bool const turnsIntoGIF = asked == ExportContainer::gif && project.exportSettings.container != ExportContainer::gif;
    return turnsIntoGIF ? settingsOfGIF(project.canvas) : project.exportSettings;
}

ExportContainer containerFor(std::optional<ExportContainer> asked, ExportSettings const& settings) {
    if (asked) return *asked;
    bool const needsMOV = settings.codec == VideoCodecChoice::proRes422 && settings.container == ExportContainer::mp4;
    return needsMOV ? ExportContainer::mov : settings.container;
}

ExportSettings settingsOf(Options const& options, DemoProject const& project) {
    auto const asked = askedContainer(options);
    auto settings = settingsBefore(options, project, asked);
    auto const before = settings;
    if (!options.size.empty()) settings.size = parseSize(options.size).value();
    if (options.fps > 0) settings.fps = options.fps;
    if (!options.codec.empty()) settings.codec = enumNamed<VideoCodecChoice>(options.codec).value();
    if (!options.fit.empty()) settings.fit = enumNamed<ContentFit>(options.fit).value();
    if (options.bitrate > 0) settings.bitrateOverride = options.bitrate;
    if (options.watermark != Toggle::unsaid) settings.includeWatermark = options.watermark == Toggle::on;
    if (options.audio != Toggle::unsaid) settings.includesAudio = options.audio == Toggle::on;
    settings.container = containerFor(asked, settings);
    if (!(settings == before)) settings.presetID.reset();
    return settings;
}

fs::path targetOf(Options const& options, ExportSettings const& settings, DemoProject const& project) {
    auto target = fs::path(options.output);
    if (target.has_extension()) return target;
    if (target.empty()) target = folders::movies() / "Tavaro" / "Exports" / "";
    std::error_code ignored;
    bool const isFolder = !target.has_filename() || fs::is_directory(target, ignored);
    if (isFolder) target /= suggestedFileName(settings, project.name);
    return target += fmt::format(".{}", fileExtension(settings.container));
}

/// What will be written: settled, before the first frame.
struct Plan {
    ExportSettings settings;
    double duration = 0;
    std::int64_t frames = 0;
    std::int64_t estimatedBytes = 0;
};

std::string described(Plan const& plan) {
    auto const& settings = plan.settings;
    auto const format = settings.container == ExportContainer::gif
                            ? std::string(displayName(settings.container))
                            : fmt::format("{}, {}", displayName(settings.container), displayName(settings.codec));
    return fmt::format("{} × {}, {} frames/s, {}, {} of {}, about {}", settings.size.width, settings.size.height,
                       settings.fps, format, counted(static_cast<std::size_t>(plan.frames), "frame"),
                       Timecode::format(plan.duration, Timecode::Fraction::hundredths),
                       fileSizeText(plan.estimatedBytes));
}

void printJSON(Plan const& plan, fs::path const& file, std::optional<std::int64_t> bytes) {
    JSONWriter writer;
    writer.beginObject();
    auto const number = [&](std::string_view key, std::int64_t value) {
        writer.key(key);
        writer.integer(value);
    };
    auto const text = [&](std::string_view key, std::string_view value) {
        writer.key(key);
        writer.string(value);
    };
    if (bytes) number("bytes", *bytes);
    if (plan.settings.container != ExportContainer::gif) text("codec", nameOf(plan.settings.codec));
    text("container", nameOf(plan.settings.container));
    writer.key("duration");
    writer.number(plan.duration);
    number("estimatedBytes", plan.estimatedBytes);
    number("fps", plan.settings.fps);
    number("frames", plan.frames);
    number("height", plan.settings.size.height);
    text("path", file.string());
    number("width", plan.settings.size.width);
    writer.endObject();
    fmt::print("{}\n", writer.take());
}

/// Beside the result, for who watches.
void tell(Options const& options, std::string const& line) {
    if (!options.asJSON) fmt::print(stderr, "{}\n", line);
}

fs::path write(Options const& options, Exporter& exporter, fs::path const& target) {
    Interruption const interruption;
    ProgressLine line("", options.asJSON ? ProgressLine::Output::silent : ProgressLine::Output::automatic);
    auto const begun = std::chrono::steady_clock::now();
    auto const written = exporter.exportFile(target, [&](ExportProgress const& progress) {
        line.stage(displayName(progress.stage));
        if (progress.stage == ExportStage::rendering) line.frames(progress.framesWritten, progress.totalFrames);
        if (progress.stage == ExportStage::enhancing) line.text(fmt::format("{:.0f} %", 100 * progress.enhanced));
        if (interruption.isRequested()) exporter.cancel();
    });
    double const seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
    auto const frames = exporter.totalFrames();
    double const rate = static_cast<double>(frames) / seconds;
    line.finish(fmt::format("{} in {:.1f} s, {:.{}f} frames/s, {}", counted(static_cast<std::size_t>(frames), "frame"),
                            seconds, rate, rate < 9.95 ? 1 : 0,
                            fileSizeText(static_cast<std::int64_t>(fs::file_size(written)))));
    return written;
}

void exportProject(Options const& options) {
    auto const [package, project] = openProject(options.package);
    auto settings = settingsOf(options, project);
    if (auto const wanted = settings.size; wanted != wanted.evened()) {
        settings.size = wanted.evened();
        tell(options, fmt::format("{} × {} is written as {} × {}: the sides of a video are even.", wanted.width,
                                  wanted.height, settings.size.width, settings.size.height));
    }
    Exporter exporter(project, package, settings, {.encoder = encoderChoices.at(options.encoder)});
    Plan const plan{settings, exporter.duration(), exporter.totalFrames(),
                    estimatedFileSize(settings, exporter.duration())};
    auto const target = targetOf(options, settings, project);
    if (options.estimatesOnly) {
        if (options.asJSON) return printJSON(plan, unusedFile(target), {});
        fmt::print("{}\n{}\n", described(plan), unusedFile(target).string());
        return;
    }
    tell(options, described(plan));
    for (auto const& sentence : cutShortMovies(package, project)) fmt::print(stderr, "{}\n", sentence);
    auto const written = write(options, exporter, target);
    if (options.asJSON) return printJSON(plan, written, static_cast<std::int64_t>(fs::file_size(written)));
    fmt::print("{}\n", written.string());
}

/// --NAME and --no-NAME; the last one counts.
void addToggle(CLI::App& command, std::string const& name, Toggle& toggle, std::string const& help) {
    command.add_flag_callback(
        "--" + name, [&toggle] { toggle = Toggle::on; }, help);
    command.add_flag_callback(
        "--no-" + name, [&toggle] { toggle = Toggle::off; }, "the opposite");
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
        ->add_option("--encoder", options->encoder, "auto (hardware that works, else software), software or hardware")
        ->check(CLI::IsMember(encoderChoices));
    addToggle(*command, "watermark", options->watermark, "draw “Made with Tavaro” on the video");
    addToggle(*command, "audio", options->audio, "write the sound");
    command->add_flag("--estimate", options->estimatesOnly, "only tell what would be written, and about how large");
    command
        ->add_option("-o,--output", options->output,
                     "the file to write, .mp4, .mov or .gif, or a folder; never overwrites, a number is added instead")
        ->check(outputProblem);
    command->add_flag("--json", options->asJSON, "print the result as JSON and no progress");
    command->callback([options] { exportProject(*options); });
}

}
