#include <Tavaro/Commands/Command.h>

#include <Tavaro/Commands/Checks.h>
#include <Tavaro/Commands/FindingTable.h>
#include <Tavaro/Commands/Names.h>
#include <Tavaro/Commands/PrivacyScanRun.h>
#include <Tavaro/Commands/Terminal.h>
#include <Tavaro/Model/Project/PackagePath.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Privacy/SensitiveTextClassifier.h>
#include <TavaroCore/Records/JSON.h>

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <cerrno>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tavaro::commands {

namespace {

struct Options {
    std::string file;
    std::vector<std::string> kinds;
    std::vector<std::string> words;
    std::vector<std::string> patterns;
    std::string review;
    std::string project; // that a film was made of
    bool looksAgain = false;
    bool checksFilm = false;
    bool asJSON = false;
};

/// What came of a scan, for programs.
struct ScanReport {
    std::size_t hidden = 0; // of what this scan found
    std::size_t rejected = 0;
    std::size_t maskedKeystrokes = 0;
    bool isStopped = false;
    bool isNothingNew = false;           // all of it was looked at before, so this scan did not
    std::vector<ListedFinding> findings; // all of the project
    std::vector<std::string> warnings;
    std::vector<TimeRange> unscanned; // seconds of the recording

    static constexpr auto fields = std::tuple{
        field("hidden", &ScanReport::hidden),
        field("rejected", &ScanReport::rejected),
        field("maskedKeystrokes", &ScanReport::maskedKeystrokes),
        field("isStopped", &ScanReport::isStopped),
        field("isNothingNew", &ScanReport::isNothingNew),
        field("findings", &ScanReport::findings),
        field("warnings", &ScanReport::warnings),
        field("unscanned", &ScanReport::unscanned),
    };
    bool operator==(ScanReport const&) const = default;
};
static_assert(listsEveryField<ScanReport>);

/// What of a film can still be read, for programs.
struct CheckReport {
    bool isClean = false; // nothing but what was rejected
    std::vector<LegibleText> legible;

    static constexpr auto fields = std::tuple{
        field("isClean", &CheckReport::isClean),
        field("legible", &CheckReport::legible),
    };
    bool operator==(CheckReport const&) const = default;
};
static_assert(listsEveryField<CheckReport>);

ProgressLine::Output progressOf(Options const& options) {
    return options.asJSON ? ProgressLine::Output::silent : ProgressLine::Output::automatic;
}

/// What was said just now is refused rather than left out and kept with the project.
void expectPatterns(Options const& options) {
    for (auto const& pattern : options.patterns)
        if (!SensitiveTextClassifier({.kinds = {}, .customPatterns = {pattern}}).warnings().empty())
            throw Error(fmt::format("“{}” is no regular expression that can be looked for.", excerpt(pattern)));
}

/// Before the scan, which may take long. Throws `FileError`.
void expectReviewFolder(std::filesystem::path const& folder) {
    std::error_code code;
    std::filesystem::create_directories(folder, code);
    if (code) throw FileError::writing(folder, code.value());
    if (!FileDescriptor::nameless(folder).isOpen()) throw FileError::writing(folder, errno);
}

/// What is not said is as the project has it.
void change(RedactionSettings& settings, Options const& options) {
    if (!options.kinds.empty()) settings.kinds.clear();
    for (auto const& kind : options.kinds) settings.kinds.insert(enumNamed<SensitiveKind>(kind).value());
    if (!options.words.empty()) settings.customWords = options.words;
    if (!options.patterns.empty()) settings.customPatterns = options.patterns;
}

void expectProject(Options const& options) {
    if (!std::filesystem::is_regular_file(options.file)) return;
    throw Error(fmt::format("“{}” is no project. --check looks whether private text can be read in a finished film.",
                            options.file));
}

void scanProject(Options const& options) {
    expectProject(options);
    expectPatterns(options);
    if (!options.review.empty()) expectReviewFolder(options.review);
    auto const extent = options.looksAgain ? ScanExtent::everything : ScanExtent::missing;
    auto const hidden = hidePrivateText(options.file, extent, progressOf(options),
                                        [&](RedactionSettings& settings) { change(settings, options); });
    auto const [package, project] = openProject(options.file);
    auto findings = listedFindings(project);
    std::erase_if(findings, [](ListedFinding const& each) { return each.isByHand; });
    if (!options.review.empty()) writeFindingPictures(findings, project, package, options.review);
    if (options.asJSON) {
        terminal::sayJSON(encodeJSON(ScanReport{.hidden = hidden.kept.hidden,
                                                .rejected = hidden.kept.rejected,
                                                .maskedKeystrokes = hidden.kept.maskedStrokes,
                                                .isStopped = hidden.made.isStopped,
                                                .isNothingNew = hidden.isNothingNew,
                                                .findings = findings,
                                                .warnings = hidden.made.warnings,
                                                .unscanned = unscannedRanges(project, project.redactionSettings)}));
    } else {
        printFindings(findings);
        printHidden(hidden);
    }
    if (hidden.made.isStopped)
        throw Error(hidden.made.failure.value_or("The scan was stopped.") +
                    " What was found until then is hidden; the next scan goes on with the rest.");
}

void expectFilm(Options const& options) {
    if (std::filesystem::is_directory(packagePath(options.file)))
        throw Error(fmt::format("“{}” is a project. --check reads a finished film, as `tavaro export` makes it.",
                                options.file));
}

std::optional<DemoProject> projectOfFilm(Options const& options) {
    return options.project.empty() ? std::nullopt : std::optional(openProject(options.project).project);
}

/// What was rejected is meant to be read.
void checkFilm(Options const& options) {
    auto const project = projectOfFilm(options);
    expectFilm(options);
    expectPatterns(options);
    auto settings = project ? project->redactionSettings : RedactionSettings{};
    change(settings, options);
    auto const made = runScan(filmCheckRequest(options.file, settings), "Reading the film", progressOf(options));
    if (made.isStopped)
        throw Error(made.failure.value_or("The check was stopped.") + " So nothing can be said about the film.");
    for (auto const& warning : made.warnings) terminal::tell("{}\n", warning);
    auto const texts = legibleTexts(made, project ? &*project : nullptr);
    bool const isClean = countOfLegible(texts) == 0;
    if (options.asJSON)
        terminal::sayJSON(encodeJSON(CheckReport{.isClean = isClean, .legible = texts}));
    else
        printLegible(texts);
    if (!isClean) throw Error(filmCheckSentence(texts));
    if (!options.asJSON) terminal::say("{}\n", filmCheckSentence(texts));
}

void scan(Options const& options) { options.checksFilm ? checkFilm(options) : scanProject(options); }

}

void addScan(CLI::App& app) {
    auto options = std::make_shared<Options>();
    auto* command = app.add_subcommand("scan", "Reads what the recording shows, and hides what of it is private");
    command->add_option("PROJECT", options->file, "the project, NAME.recproj; with --check a finished film")
        ->required()
        ->check(notEmpty);
    command->add_option("--kinds", options->kinds, "look for these only")
        ->delimiter(',')
        ->check(isNameOf<SensitiveKind>());
    command->add_option("--word", options->words, "a word of your own to find; may be repeated")
        ->allow_extra_args(false)
        ->check(notEmpty);
    command->add_option("--pattern", options->patterns, "a regular expression of your own; may be repeated")
        ->allow_extra_args(false)
        ->check(notEmpty);
    auto* const review = command
                             ->add_option("--review", options->review,
                                          "a folder for a small picture of what is around each finding, itself covered")
                             ->check(notEmpty);
    auto* const again =
        command->add_flag("--again", options->looksAgain, "look once more at what was looked at before");
    auto* const check = command
                            ->add_flag("--check", options->checksFilm,
                                       "read a finished film again, and tell whether private text is legible in it")
                            ->excludes(review)
                            ->excludes(again);
    command->add_option("--project", options->project, "with --check: the project that the film was made of")
        ->needs(check)
        ->check(notEmpty);
    command->add_flag("--json", options->asJSON, "print the result as JSON and no progress");
    command->footer("What is looked for stays with the project. Times are seconds of the edit, without its intro card; "
                    "of a film, its own.");
    command->callback([options] { scan(*options); });
}

}
