#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/Interruption.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/PrivacyScanRun.h>
#include <Tavaro/Commands/ProgressLine.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Exporting/PreparedExport.h>
#include <Tavaro/Model/Privacy/KeptScan.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroCore/Values/Timecode.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <map>

namespace tavaro::commands {

namespace {

namespace fs = std::filesystem;

struct Options {
    std::string package;
    std::string size;
    std::string codec;
    std::string container;
    std::string fit;
    std::string encoder = "auto";
    ExportChoices choices;
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
    return isSize && isExportSize(size) ? std::optional(size) : std::nullopt;
}

std::string sizeProblem(std::string const& text) {
    return parseSize(text) ? "" : "a size is WIDTHxHEIGHT, each side from 16 to 8192 pixels";
}

std::string outputProblem(std::string const& output) {
    if (output.empty()) return notEmpty(output);
    bool const isKnown = !fs::path(output).has_extension() || containerOf(output);
    return isKnown ? "" : fmt::format("“{}” has none of the endings .mp4, .mov and .gif", output);
}

/// The parser has checked the names, each by itself.
ExportChoices choicesOf(Options const& options) {
    auto choices = options.choices;
    if (choices.preset == "") choices.preset.reset();
    choices.size = parseSize(options.size);
    choices.codec = enumNamed<VideoCodecChoice>(options.codec);
    choices.container = enumNamed<ExportContainer>(options.container);
    choices.fit = enumNamed<ContentFit>(options.fit);
    auto const byEnding = containerOf(choices.output.value_or(""));
    if (choices.container && byEnding && *byEnding != *choices.container) {
        throw CLI::ValidationError(
            "--container", fmt::format("{} does not go with the name “{}”", options.container, *choices.output));
    }
    return choices;
}

std::string described(ExportedFilm const& film) {
    auto const format = film.codec ? fmt::format("{}, {}", displayName(film.container), displayName(*film.codec))
                                   : std::string(displayName(film.container));
    return fmt::format("{} × {}, {} frames/s, {}, {} of {}, about {}", film.width, film.height, film.fps, format,
                       counted(static_cast<std::size_t>(film.frames), "frame"),
                       Timecode::format(film.duration, Timecode::Fraction::hundredths),
                       fileSizeText(film.estimatedBytes));
}

/// Beside the result, for who watches.
void tell(Options const& options, std::string const& line) {
    if (!options.asJSON) terminal::tell("{}\n", line);
}

void show(ProgressLine& line, ExportProgress const& progress) {
    line.stage(displayName(progress.stage));
    if (progress.stage == ExportStage::rendering) line.frames(progress.framesWritten, progress.totalFrames);
    if (progress.stage == ExportStage::enhancing) line.text(fmt::format("{:.0f} %", 100 * progress.enhanced));
}

std::string summary(ExportedFilm const& film, double seconds) {
    double const rate = static_cast<double>(film.frames) / seconds;
    return fmt::format("{} in {:.1f} s, {:.{}f} frames/s, {}", counted(static_cast<std::size_t>(film.frames), "frame"),
                       seconds, rate, rate < 9.95 ? 1 : 0, fileSizeText(film.bytes.value_or(0)));
}

ExportedFilm write(Options const& options, std::shared_ptr<PreparedExport> prepared) {
    MainQueue queue;
    auto job = exportJob(queue, std::move(prepared));
    Interruption const interruption;
    ProgressLine line("", options.asJSON ? ProgressLine::Output::silent : ProgressLine::Output::automatic);
    job.onRemark([](std::string const& sentence) { terminal::tell("{}\n", sentence); });
    job.onProgress([&](ExportProgress const& progress) { show(line, progress); });
    auto const begun = std::chrono::steady_clock::now();
    job.start();
    queue.runUntil([&] {
        if (interruption.isRequested()) job.cancel();
        return job.isFinished();
    });
    auto const& film = job.result();
    line.finish(summary(film, std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count()));
    return film;
}

void print(Options const& options, ExportedFilm const& film) {
    if (options.asJSON)
        terminal::sayJSON(encodeJSON(film));
    else
        terminal::sayPath(film.path);
}

bool hidesFindings(DemoProject const& project) {
    return std::ranges::any_of(*project.redactions,
                               [](auto const& track) { return isFinding(track) && track.isEnabled; });
}

void exportProject(Options const& options) {
    auto const [package, project] = openProject(options.package);
    auto const prepared =
        std::make_shared<PreparedExport>(package, project, choicesOf(options), encoderChoices.at(options.encoder));
    auto const plan = prepared->plan();
    if (auto const& odd = prepared->oddSize()) {
        tell(options, fmt::format("{} × {} is written as {} × {}: the sides of a video are even.", odd->width,
                                  odd->height, plan.width, plan.height));
    }
    if (options.estimatesOnly) {
        if (!options.asJSON) terminal::say("{}\n", described(plan));
        return print(options, plan);
    }
    tell(options, described(plan));
    if (!options.asJSON) tellIfScanIsDue(package, project);
    auto const film = write(options, prepared);
    if (hidesFindings(project))
        tell(options, fmt::format("Private text is hidden in it. To read it again and see whether that holds: tavaro "
                                  "scan \"{}\" --check --project \"{}\"",
                                  film.path, package.url().string()));
    print(options, film);
}

/// --NAME and --no-NAME; the last one counts.
void addToggle(CLI::App& command, std::string const& name, std::optional<bool>& toggle, std::string const& help) {
    command.add_flag_callback(
        "--" + name, [&toggle] { toggle = true; }, help);
    command.add_flag_callback(
        "--no-" + name, [&toggle] { toggle = false; }, "the opposite");
}

}

void addExport(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("export", "Writes the finished video");
    command->add_option("PROJECT", options->package, "the project, NAME.recproj")->required()->check(notEmpty);
    command->add_option("--preset", options->choices.preset, "a preset, by its id in `tavaro presets`");
    command->add_option("--size", options->size, "WIDTHxHEIGHT in pixels")->check(sizeProblem);
    command->add_option("--fps", options->choices.fps, "frames a second")
        ->check(CLI::Range(ExportChoices::slowest, ExportChoices::fastest));
    command->add_option("--codec", options->codec, "h264, hevc or proRes422")->check(isNameOf<VideoCodecChoice>());
    command->add_option("--container", options->container, "mp4, mov or gif")->check(isNameOf<ExportContainer>());
    command->add_option("--fit", options->fit, "how the recording fills the canvas")->check(isNameOf<ContentFit>());
    command->add_option("--bitrate", options->choices.bitrate, "bits per second")
        ->check(CLI::Range(ExportChoices::leastBitrate, ExportChoices::mostBitrate));
    command
        ->add_option("--encoder", options->encoder, "auto (hardware that works, else software), software or hardware")
        ->check(CLI::IsMember(encoderChoices));
    addToggle(*command, "watermark", options->choices.watermark, "draw “Made with Tavaro” on the video");
    addToggle(*command, "audio", options->choices.audio, "write the sound");
    command->add_flag("--estimate", options->estimatesOnly, "only tell what would be written, and about how large");
    command
        ->add_option("-o,--output", options->choices.output,
                     "the file to write, .mp4, .mov or .gif, or a folder; never overwrites, a number is added instead")
        ->check(outputProblem);
    command->add_flag("--json", options->asJSON, "print the result as JSON and no progress");
    command->callback([options] { exportProject(*options); });
}

}
