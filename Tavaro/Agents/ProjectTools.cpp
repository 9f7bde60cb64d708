#include <Tavaro/Agents/Private/ProjectTools.h>

#include <Tavaro/Agents/Private/ProjectActions.h>
#include <Tavaro/Agents/Private/ProjectPatch.h>
#include <Tavaro/Agents/Private/ProjectView.h>
#include <Tavaro/Agents/Private/SecretTools.h>
#include <Tavaro/Agents/Private/TimelineOp.h>
#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Making/Polish.h>
#include <Tavaro/Model/Operations/Perform.h>
#include <Tavaro/Model/Voice/MachineVoices.h>
#include <Tavaro/Model/Voice/TranscriptionJob.h>
#include <Tavaro/Model/Voice/VoiceoverJob.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroMCP/Protocol/ToolResult.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace {

constexpr std::size_t mostNameBytes = 1000; // a document from elsewhere may have any

JSONValue::Object listedProject(LibraryItem const& item) {
    return {{"id", item.id ? item.id->text() : std::string()},
            {"name", excerpt(item.name, mostNameBytes)},
            {"duration", item.duration},
            {"modified", JSONValue::parse(encodeJSON(item.modified))},
            {"path", item.path.string()}};
}

constexpr int mostTries = 4; // to polish a document that others are editing

class ChangedMeanwhile : public MCPToolError {
public:
    ChangedMeanwhile()
        : MCPToolError(MCPErrorCode::failed, "The project was changed meanwhile. Run auto_polish again.") {}
};

JSONValue::Object editResult(StepOutcome const& step) {
    return {{"changed", step.isChanged}, {"duration", step.duration}};
}

/// Takes the polished document as a step, unless there is another one than that which was polished.
StepOutcome commitPolish(OpenProject& project, std::string const& client, DemoProject const& polished,
                         std::uint64_t revision) {
    return commitFor(project, client, polishStep, [&](DemoProject& edited) {
        if (project.revision() != revision) throw ChangedMeanwhile();
        edited = polished;
    });
}

void patch(RunningCall& call, OpenProject& project) {
    Operation const patch = projectPatch(call.arguments());
    std::string summary;
    auto const step = commitFor(project, call.client(), infoOf(patch).title, [&](DemoProject& edited) {
        summary = perform(edited, patch, project.package()).summary;
    });
    call.finish(toolResult::ok(summary + ".", editResult(step)));
}

void changeTimeline(RunningCall& call, OpenProject& project) {
    project.refresh();
    auto const title = infoOf(timelineOp(call.arguments(), project.document())).title;
    auto const step = commitFor(project, call.client(), title,
                                [&](DemoProject& edited) { perform(edited, timelineOp(call.arguments(), edited)); });
    call.finish(toolResult::ok(fmt::format("Timeline edited. Now {:.2f} s.", step.duration), editResult(step)));
}

}

void ProjectTools::list(RunningCall& call) {
    constexpr std::int64_t usual = 20;
    auto const limit = call.arguments().integer("limit", {1, 200}).value_or(usual);
    application_.catalogue().list(static_cast<std::size_t>(limit), call.later([](RunningCall& here, auto const& found) {
        JSONValue::Array projects;
        for (auto const& item : found.value()) projects.push_back(listedProject(item));
        auto const summary = fmt::format("{} projects, newest first", projects.size());
        here.finish(toolResult::ok(summary, JSONValue::Object{{"projects", std::move(projects)}}));
    }));
}

void ProjectTools::open(RunningCall& call, OpenProjects::Opened const& project) {
    opened_ = project;
    call.finish(toolResult::ok(fmt::format("Opened {}.", excerpt(project->document().name)),
                               JSONValue::Object{{"project_id", project->document().id.text()}}));
}

void ProjectTools::show(RunningCall& call, OpenProjects::Opened const& project) {
    project->refresh();
    auto view = viewOf(project->document());
    auto const summary = fmt::format("{}, {:.2f} s.{}", excerpt(project->document().name),
                                     project->document().duration(), view.leftOut());
    call.finish(toolResult::ok(summary, std::move(view.json)));
}

void ProjectTools::edit(RunningCall& call, OpenProjects::Opened const& project) {
    locked_.perform(call, [project](RunningCall& here) { patch(here, *project); });
}

void ProjectTools::editTimeline(RunningCall& call, OpenProjects::Opened const& project) {
    locked_.perform(call, [project](RunningCall& here) { changeTimeline(here, *project); });
}

void ProjectTools::runAction(RunningCall& call, OpenProjects::Opened const& project) {
    locked_.perform(call, [this, project](RunningCall& here) { act(here, project); });
}

void ProjectTools::act(RunningCall& call, OpenProjects::Opened const& project) {
    project->refresh();
    auto const action = projectAction(call.arguments(), project->document());
    if (std::holds_alternative<ProjectAction::PrivacyScan>(action.work)) return secrets_.hide(call, project);
    if (auto const* const options = std::get_if<PolishOptions>(&action.work))
        return polish(call, project, {.options = *options});
    if (auto const* const voiceover = std::get_if<ProjectAction::Voiceover>(&action.work))
        return speak(call, project, voiceover->voice);
    if (auto const* const transcription = std::get_if<ProjectAction::Transcription>(&action.work))
        return transcribe(call, project, transcription->locale);
    auto const& operation = std::get<Operation>(action.work);
    std::string summary;
    auto const step = commitFor(*project, call.client(), infoOf(operation).title, [&](DemoProject& edited) {
        auto const before = edited;
        summary = actionSummary(action, before, perform(edited, operation));
    });
    call.finish(toolResult::ok(summary, editResult(step)));
}

void ProjectTools::polish(RunningCall& call, OpenProjects::Opened const& project, Polishing polishing) {
    auto const job =
        std::make_shared<Job<PolishedProject>>(polishJob(queue_, project->document(), {.options = polishing.options}));
    polishing.revision = project->revision();
    call.progress(polishing.tries * 1.0 / mostTries, "Auto Polish is at work.");
    call.keep(job);
    job->onFinished(call.later([this, project, polishing, &job = *job](RunningCall& here) {
        auto const polished = std::make_shared<PolishedProject const>(std::move(job.result()));
        locked_.perform(here, [=, this](RunningCall& later) { keepPolished(later, project, polishing, *polished); });
    }));
    job->start();
}

void ProjectTools::keepPolished(RunningCall& call, OpenProjects::Opened const& project, Polishing const& polishing,
                                PolishedProject const& polished) {
    try {
        auto const step = commitPolish(*project, call.client(), polished.project, polishing.revision);
        auto const report = polished.report.summaryLines();
        call.finish(toolResult::ok(fmt::format("Auto Polish done: {}", fmt::join(report, " ")), editResult(step)));
    } catch (ChangedMeanwhile const&) {
        if (polishing.tries + 1 == mostTries) throw;
        polish(call, project, {.options = polishing.options, .tries = polishing.tries + 1});
    }
}

void ProjectTools::speak(RunningCall& call, OpenProjects::Opened const& project, std::string const& voice) {
    auto const job = std::make_shared<Job<GeneratedVoiceover, VoiceoverProgress>>(
        voiceoverJob(queue_, project->package(),
                     {.plan = *project->document().voiceover, .voice = voice, .service = machineVoices()}));
    call.keep(job);
    call.whenAbandoned([&job = *job] { job.cancel(); });
    job->onProgress(call.later([](RunningCall& here, VoiceoverProgress const& progress) {
        auto const all = static_cast<double>(std::max<std::int64_t>(progress.total, 1));
        here.progress(static_cast<double>(progress.done) / all,
                      fmt::format("{} of {} lines spoken.", progress.done - progress.failed, progress.total));
    }));
    job->onFinished(call.later([this, project, &job = *job](RunningCall& here) {
        auto const generated = std::make_shared<GeneratedVoiceover const>(std::move(job.result()));
        locked_.perform(here, [=, this](RunningCall& later) { keepSpoken(later, project, *generated); });
    }));
    job->start();
}

/// What was spoken is kept, also where a line was not.
void ProjectTools::keepSpoken(RunningCall& call, OpenProjects::Opened const& project,
                              GeneratedVoiceover const& generated) {
    auto const step = commitFor(*project, call.client(), voiceoverStep,
                                [&](DemoProject& edited) { takeIn(edited, project->package(), generated); });
    auto const& lines = generated.lines;
    if (lines.unspoken.empty() && lines.notBegun.empty())
        return call.finish(toolResult::ok("Voiceover generated.", editResult(step)));
    auto const failure = unspokenLines(lines);
    call.finish(toolResult::failure(failure.code, failure.what()));
}

void ProjectTools::transcribe(RunningCall& call, OpenProjects::Opened const& project, std::string const& locale) {
    auto sounds = spokenSounds(project->document(), project->package(), AudioRole::microphone);
    if (sounds.empty())
        throw MCPToolError(MCPErrorCode::failed, "This project has no microphone recording to transcribe.");
    TranscriptionRequest request;
    request.sounds = std::move(sounds);
    request.places = EnginePlaces::usual(application_.preferences());
    request.choices.locale = locale;
    auto const job =
        std::make_shared<Job<MadeTranscript, TranscriptionProgress>>(transcriptionJob(queue_, std::move(request)));
    call.keep(job);
    call.whenAbandoned([&job = *job] { job.cancel(); });
    job->onProgress(call.later([](RunningCall& here, TranscriptionProgress const& progress) {
        auto const share = progress.total > 0 ? progress.seconds / progress.total : 0;
        here.progress(std::min(share, 1.0), fmt::format("{:.0f} s heard.", progress.seconds));
    }));
    job->onFinished(call.later([this, project, &job = *job](RunningCall& here) {
        auto const made = std::make_shared<MadeTranscript const>(std::move(job.result()));
        locked_.perform(here, [=, this](RunningCall& later) { keepWords(later, project, *made); });
    }));
    job->start();
}

void ProjectTools::keepWords(RunningCall& call, OpenProjects::Opened const& project, MadeTranscript const& made) {
    auto const step = commitFor(*project, call.client(), transcriptionStep,
                                [&](DemoProject& edited) { keepTranscript(edited, made.transcript); });
    auto result = editResult(step);
    result.emplace("words", made.transcript.words.size());
    result.emplace("locale", made.transcript.localeIdentifier);
    result.emplace("engine", made.engine.id);
    call.finish(toolResult::ok(fmt::format("Transcribed {} words in {} with {}.", made.transcript.words.size(),
                                           made.transcript.localeIdentifier, made.engine.name),
                               std::move(result)));
}

}
