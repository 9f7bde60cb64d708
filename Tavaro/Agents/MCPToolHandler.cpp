#include <Tavaro/Agents/Private/MCPToolHandler.h>

#include <Tavaro/Agents/Private/ExportArguments.h>
#include <Tavaro/Agents/Private/ExportPaths.h>
#include <Tavaro/Agents/Private/ProjectActions.h>
#include <Tavaro/Agents/Private/ProjectPatch.h>
#include <Tavaro/Agents/Private/ProjectView.h>
#include <Tavaro/Agents/Private/TimelineOp.h>
#include <Tavaro/Agents/Private/UIArguments.h>
#include <Tavaro/Model/Exporting/FilmFrame.h>
#include <Tavaro/Model/Listings/SourceListing.h>
#include <Tavaro/Model/Making/Polish.h>
#include <Tavaro/Model/Operations/OperationError.h>
#include <Tavaro/Model/Operations/Perform.h>

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Export/ExportPreset.h>
#include <TavaroCore/Records/JSON.h>
#include <TavaroMCP/Protocol/MCPSession.h>
#include <TavaroMCP/Protocol/ToolResult.h>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavaro {

struct MCPToolHandler::Running {
    Call call;
    std::shared_ptr<void const> kept; // what the call waits for
    std::function<void()> abandoned;

    ToolArguments arguments() const { return ToolArguments(call.arguments); }
};

namespace {

template<class Record> JSONValue::Object objectOf(Record const& record) {
    return std::get<JSONValue::Object>(JSONValue::parse(encodeJSON(record)).content);
}

MCPErrorCode codeOf(RecordingError const& error) {
    return error.kind == RecordingError::Kind::busy ? MCPErrorCode::busy : MCPErrorCode::notRecording;
}

MCPErrorCode codeOf(OperationError const& error) {
    switch (error.kind) {
    case OperationError::Kind::badPatch: return MCPErrorCode::invalidPatch;
    case OperationError::Kind::notPossible: return MCPErrorCode::failed;
    default: return MCPErrorCode::invalidArguments;
    }
}

MCPErrorCode codeOf(AutomationError const& error) {
    switch (error.kind) {
    case AutomationError::Kind::invalidRequest: return MCPErrorCode::invalidArguments;
    case AutomationError::Kind::noSuchProgram:
    case AutomationError::Kind::noSuchElement: return MCPErrorCode::notFound;
    default: return MCPErrorCode::failed;
    }
}

/// What an agent reads of the failure that is being handled.
JSONValue presentFailure() {
    try {
        throw;
    } catch (MCPToolError const& error) {
        return toolResult::failure(error.code, error.what());
    } catch (RecordingError const& error) {
        return toolResult::failure(codeOf(error), error.what());
    } catch (OperationError const& error) {
        return toolResult::failure(codeOf(error), error.what());
    } catch (AutomationError const& error) {
        return toolResult::failure(codeOf(error), error.what());
    } catch (NoSuchFrame const&) {
        return toolResult::failure(MCPErrorCode::invalidArguments, "time must be inside the video.");
    } catch (std::exception const& error) {
        return toolResult::failure(MCPErrorCode::failed, error.what());
    }
}

std::string shortName(std::string const& client) {
    constexpr std::size_t mostBytes = 40;
    return excerpt(client, mostBytes);
}

std::string idOf(RecordRequest const& request) {
    if (auto const* const display = std::get_if<RecordRequest::Display>(&request.target)) return display->id;
    if (auto const* const window = std::get_if<RecordRequest::Window>(&request.target)) return window->id;
    if (auto const* const app = std::get_if<RecordRequest::App>(&request.target)) return app->bundleID;
    return std::get<RecordRequest::Area>(request.target).display;
}

MCPToolError unknownSource(RecordRequest const& request) {
    return {MCPErrorCode::notFound,
            fmt::format("There is no source \"{}\". Call list_sources for ids.", excerpt(idOf(request)))};
}

/// A point of an X11 display is a pixel.
AreaSource areaOf(RecordRequest::Area const& area, AreaShape shape) {
    auto const pixels = [](double points) { return static_cast<int>(std::lround(std::clamp(points, -1e6, 1e6))); };
    return {.rect = {pixels(area.x), pixels(area.y), pixels(area.width), pixels(area.height)},
            .display = area.display,
            .shape = shape};
}

CaptureSource sourceOf(RecordRequest const& request) {
    if (auto const* const display = std::get_if<RecordRequest::Display>(&request.target))
        return DisplaySource{display->id};
    if (auto const* const app = std::get_if<RecordRequest::App>(&request.target))
        return ApplicationSource{app->bundleID};
    if (auto const* const area = std::get_if<RecordRequest::Area>(&request.target))
        return areaOf(*area, request.aspect);
    try {
        return parseWindowSource(std::get<RecordRequest::Window>(request.target).id);
    } catch (CaptureError const&) {
        throw unknownSource(request);
    }
}

void expectOnlyPicture(RecordRequest const& request) {
    auto const expect = [](std::optional<bool> wanted, std::string_view what, std::string_view argument) {
        if (!wanted.value_or(false)) return;
        throw MCPToolError(
            MCPErrorCode::failed,
            fmt::format("This version of Tavaro cannot record {}. Record with {}: false.", what, argument));
    };
    expect(request.microphone, "the microphone", "microphone");
    expect(request.systemAudio, "system audio", "system_audio");
    expect(request.camera, "the camera", "camera");
}

/// Why there is no project, or nothing.
void expectSaved(RecordingOutcome const& outcome, RecordRequest const* request) {
    if (!outcome.failure) return;
    try {
        std::rethrow_exception(outcome.failure);
    } catch (CaptureError const& error) {
        if (request && error.kind == CaptureError::Kind::noSuchSource) throw unknownSource(*request);
    } catch (Error const&) { // its sentence is in the outcome's
    }
    throw MCPToolError(MCPErrorCode::failed, outcome.sentence());
}

JSONValue savedResult(RecordingOutcome const& outcome) {
    auto const& made = *outcome.made;
    auto const id = made.id.text();
    JSONValue::Object const structured{
        {"project_id", id}, {"path", made.made.path}, {"duration", made.made.duration}, {"health", made.health}};
    return toolResult::ok(fmt::format("Saved as project {} ({:.1f} s). Auto Polish has run.", id, made.made.duration),
                          structured);
}

JSONValue::Object listedProject(LibraryItem const& item) {
    return {{"id", item.id ? item.id->text() : std::string()},
            {"name", item.name},
            {"duration", item.duration},
            {"modified", JSONValue::parse(encodeJSON(item.modified))},
            {"path", item.path.string()}};
}

JSONValue::Object editResult(StepOutcome const& step) {
    return {{"changed", step.isChanged}, {"duration", step.duration}};
}

}

template<class Work> void MCPToolHandler::attempt(Here const& call, Work const& work) {
    try {
        work();
    } catch (...) {
        finish(call, presentFailure());
    }
}

/// For answers that come later: nothing once the call is over, or the handler gone.
template<class Work> auto MCPToolHandler::later(Here const& call, Work work) {
    return [this, waiting = std::weak_ptr(call), work = std::move(work)](auto const&... results) {
        auto const here = waiting.lock();
        if (here && running_.contains(here)) attempt(here, [&] { work(here, results...); });
    };
}

MCPToolHandler::MCPToolHandler(MainQueue& queue, Application& application, std::string version)
    : queue_(queue)
    , application_(application)
    , version_(std::move(version)) {}

MCPToolHandler::~MCPToolHandler() = default;

MCPToolHandler::Abandon MCPToolHandler::handle(Call call) {
    auto const here = std::make_shared<Running>();
    here->call = std::move(call);
    running_.insert(here);
    auto const tool = enumNamed<MCPToolName>(here->call.tool);
    if (tool)
        attempt(here, [&] { dispatch(here, *tool); });
    else
        finish(here, toolResult::unknownTool(here->call.tool));
    return later(here, [](Here const& abandoned) {
        if (auto const act = std::exchange(abandoned->abandoned, nullptr)) act();
    });
}

void MCPToolHandler::finish(Here const& call, JSONValue const& result) {
    if (running_.erase(call) == 0) return;
    queue_.async([kept = std::move(call->kept)] {}); // what is kept may be calling
    call->call.finish(result);
}

void MCPToolHandler::dispatch(Here const& call, MCPToolName tool) {
    switch (tool) {
    case MCPToolName::status: return status(call);
    case MCPToolName::listSources: return listSources(call);
    case MCPToolName::startRecording: return startRecording(call);
    case MCPToolName::stopRecording: return stopRecording(call);
    case MCPToolName::pauseRecording: return pauseRecording(call);
    case MCPToolName::resumeRecording: return resumeRecording(call);
    case MCPToolName::cancelRecording: return cancelRecording(call);
    case MCPToolName::recordFor: return recordFor(call);
    case MCPToolName::listProjects: return listProjects(call);
    case MCPToolName::openProject: return withProject(call, &MCPToolHandler::openProject);
    case MCPToolName::getProject: return withProject(call, &MCPToolHandler::getProject);
    case MCPToolName::editProject: return withProject(call, &MCPToolHandler::editProject);
    case MCPToolName::editTimeline: return withProject(call, &MCPToolHandler::editTimeline);
    case MCPToolName::runAction: return withProject(call, &MCPToolHandler::runAction);
    case MCPToolName::renderFrame: return withProject(call, &MCPToolHandler::renderFrame);
    case MCPToolName::listExportPresets: return listExportPresets(call);
    case MCPToolName::exportFilm: return withProject(call, &MCPToolHandler::exportFilm);
    default: break;
    }
    expectUIArguments(tool, call->arguments());
    throw MCPToolError(MCPErrorCode::failed, "This version of Tavaro cannot look at or control other applications.");
}

void MCPToolHandler::withProject(Here const& call, WithProject work) {
    auto const text = call->arguments().requiredText("project_id");
    auto const unknown = [text] {
        return MCPToolError(MCPErrorCode::notFound,
                            fmt::format("There is no project \"{}\". Call list_projects.", excerpt(text)));
    };
    auto const id = UUID::parse(text);
    if (!id) throw unknown();
    application_.project(*id, later(call, [this, work, unknown](Here const& here, auto const& found) {
        try {
            if (found.failure()) std::rethrow_exception(found.failure());
        } catch (NoSuchProject const&) {
            throw unknown();
        } catch (Error const& error) {
            throw MCPToolError(MCPErrorCode::failed, fmt::format("Couldn't open the project. {}", error.what()));
        }
        (this->*work)(here, found.value());
    }));
}

void MCPToolHandler::status(Here const& call) {
    auto const& recorder = application_.recorder().state();
    JSONValue::Object structured{{"version", version_},
                                 {"permissions", "An X11 desktop asks for none."},
                                 {"recorder", JSONValue::Object{{"phase", nameOf(recorder.phase)},
                                                                {"countdown", recorder.countdown},
                                                                {"seconds", recorder.take.seconds}}},
                                 {"exporting", application_.exporter().isExporting()},
                                 {"project", JSONValue{}}};
    if (opened_) {
        structured["project"] = JSONValue::Object{{"id", opened_->document().id.text()},
                                                  {"name", opened_->document().name},
                                                  {"duration", opened_->document().duration()}};
    }
    finish(call, toolResult::ok("Tavaro status", structured));
}

void MCPToolHandler::listSources(Here const& call) {
    application_.sources(later(call, [this](Here const& here, auto const& sources) {
        auto structured = objectOf(listingOf(sources.value()));
        structured.emplace("cameras", JSONValue::Array{});
        structured.emplace("microphones", JSONValue::Array{});
        finish(here, toolResult::ok("Recordable sources", structured));
    }));
}

void MCPToolHandler::record(Here const& call, RecordRequest const& request, std::function<void()> begun) {
    expectOnlyPicture(request);
    application_.record({.recorder = {.source = sourceOf(request)},
                         .countdown = request.countdown,
                         .seconds = request.seconds.value_or(0)},
                        {.begun = std::move(begun),
                         .over = later(call, [this, request](Here const& here, RecordingOutcome const& outcome) {
                             expectSaved(outcome, &request);
                             finish(here, savedResult(outcome));
                         })});
}

void MCPToolHandler::startRecording(Here const& call) {
    record(call, recordRequest(call->arguments(), RecordingLength::open), later(call, [this](Here const& here) {
               finish(here, toolResult::ok("Recording. Call stop_recording to finish."));
           }));
}

void MCPToolHandler::recordFor(Here const& call) {
    auto const request = recordRequest(call->arguments(), RecordingLength::fixed);
    record(call, request, {});
    auto& recorder = application_.recorder();
    auto const tell = later(call, [seconds = *request.seconds](Here const& here, RecorderState const& state) {
        here->call.progress(std::min(state.take.seconds / seconds, 1.0), std::string(nameOf(state.phase)));
    });
    call->kept = std::make_shared<RecordingController::Observation>(recorder.observe(tell));
    call->abandoned = [&recorder] {
        if (recorder.isTaking()) recorder.stop();
        if (recorder.state().phase == RecorderPhase::countdown) recorder.cancel();
    };
}

void MCPToolHandler::stopRecording(Here const& call) {
    application_.recorder().stop();
    application_.recorder().whenOver(later(call, [this](Here const& here, RecordingOutcome const& outcome) {
        expectSaved(outcome, nullptr);
        finish(here, savedResult(outcome));
    }));
}

void MCPToolHandler::pauseRecording(Here const& call) {
    application_.recorder().pause();
    finish(call, toolResult::ok("Paused. Call resume_recording to go on."));
}

void MCPToolHandler::resumeRecording(Here const& call) {
    application_.recorder().resume();
    finish(call, toolResult::ok("Recording again. Call stop_recording to finish."));
}

void MCPToolHandler::cancelRecording(Here const& call) {
    application_.recorder().cancel();
    application_.recorder().whenOver(later(call, [this](Here const& here, RecordingOutcome const&) {
        finish(here, toolResult::ok("Recording thrown away."));
    }));
}

void MCPToolHandler::listProjects(Here const& call) {
    constexpr std::int64_t usual = 20;
    auto const limit = call->arguments().integer("limit", {1, 200}).value_or(usual);
    application_.catalogue().list(
        static_cast<std::size_t>(limit), later(call, [this](Here const& here, auto const& found) {
            JSONValue::Array projects;
            for (auto const& item : found.value()) projects.push_back(listedProject(item));
            auto const summary = fmt::format("{} projects, newest first", projects.size());
            finish(here, toolResult::ok(summary, JSONValue::Object{{"projects", std::move(projects)}}));
        }));
}

void MCPToolHandler::listExportPresets(Here const& call) {
    JSONValue::Array presets;
    for (auto const& preset : ExportPreset::all()) presets.push_back(objectOf(preset));
    auto const summary = fmt::format("{} export presets", presets.size());
    finish(call, toolResult::ok(summary, JSONValue::Object{{"presets", std::move(presets)}}));
}

void MCPToolHandler::openProject(Here const& call, OpenProjects::Opened const& project) {
    opened_ = project;
    finish(call, toolResult::ok(fmt::format("Opened {}.", excerpt(project->document().name)),
                                JSONValue::Object{{"project_id", project->document().id.text()}}));
}

void MCPToolHandler::getProject(Here const& call, OpenProjects::Opened const& project) {
    project->refresh();
    auto view = viewOf(project->document());
    auto const summary = fmt::format("{}, {:.2f} s.{}", excerpt(project->document().name),
                                     project->document().duration(), view.leftOut());
    finish(call, toolResult::ok(summary, std::move(view.json)));
}

void MCPToolHandler::editProject(Here const& call, OpenProjects::Opened const& project) {
    auto const patch = projectPatch(call->arguments());
    std::string summary;
    auto const step = commitFor(*project, shortName(call->call.client), operations::Patch::info.title,
                                [&](DemoProject& edited) { summary = perform(edited, patch).summary; });
    finish(call, toolResult::ok(summary + ".", editResult(step)));
}

void MCPToolHandler::editTimeline(Here const& call, OpenProjects::Opened const& project) {
    project->refresh();
    auto const title = infoOf(timelineOp(call->arguments(), project->document())).title;
    auto const step = commitFor(*project, shortName(call->call.client), title,
                                [&](DemoProject& edited) { perform(edited, timelineOp(call->arguments(), edited)); });
    finish(call, toolResult::ok(fmt::format("Timeline edited. Now {:.2f} s.", step.duration), editResult(step)));
}

void MCPToolHandler::runAction(Here const& call, OpenProjects::Opened const& project) {
    project->refresh();
    auto const action = projectAction(call->arguments(), project->document());
    if (auto const* const missing = std::get_if<ProjectAction::Missing>(&action.work))
        throw MCPToolError(MCPErrorCode::failed, missing->sentence);
    if (auto const* const options = std::get_if<PolishOptions>(&action.work)) return polish(call, project, *options);
    auto const& operation = std::get<Operation>(action.work);
    std::string summary;
    auto const step =
        commitFor(*project, shortName(call->call.client), infoOf(operation).title, [&](DemoProject& edited) {
            auto const before = edited;
            summary = actionSummary(action, before, perform(edited, operation));
        });
    finish(call, toolResult::ok(summary, editResult(step)));
}

void MCPToolHandler::polish(Here const& call, OpenProjects::Opened const& project, PolishOptions const& options) {
    auto const job =
        std::make_shared<Job<PolishedProject>>(polishJob(queue_, project->document(), {.options = options}));
    auto const revision = project->revision();
    call->kept = job;
    auto const take = later(call, [this, project, revision, &job = *job](Here const& here) {
        auto const& polished = job.result();
        auto const step = commitFor(*project, shortName(here->call.client), polishStep, [&](DemoProject& edited) {
            if (project->revision() != revision)
                throw MCPToolError(MCPErrorCode::failed, "The project was changed meanwhile. Run auto_polish again.");
            edited = polished.project;
        });
        finish(here, toolResult::ok(fmt::format("Auto Polish done: {}", fmt::join(polished.report.summaryLines(), " ")),
                                    editResult(step)));
    });
    job->onFinished([take] { take(); });
    job->start();
}

void MCPToolHandler::renderFrame(Here const& call, OpenProjects::Opened const& project) {
    constexpr std::int64_t usualSide = 1280;
    constexpr std::size_t textAround = 1U << 16;
    project->refresh();
    double const time = call->arguments().requiredNumber("time");
    if (!(time >= 0 && time <= project->document().presentationDuration()))
        refuseArguments("time must be inside the video.");
    auto const side = call->arguments().integer("max_width", {64, 3840}).value_or(usualSide);
    auto interest = application_.frames().draw(
        {.package = project->package(),
         .project = project->document(),
         .at = time,
         .longestSide = side,
         .mostBytes = (MCPSession::longestResult - textAround) / 4 * 3},
        later(call, [this, time](Here const& here, Outcome<DrawnFrame> const& drawn) {
            auto const& frame = drawn.value();
            auto const* const reduced = frame.isReduced ? " Drawn smaller than asked: it would be too large." : "";
            finish(here, toolResult::image(Data{{frame.png.begin(), frame.png.end()}},
                                           fmt::format("The video at {:g} s, {} × {} pixels.{}", time, frame.width,
                                                       frame.height, reduced)));
        }));
    if (!running_.contains(call)) return;
    call->kept = std::move(interest);
    call->abandoned = [this, waiting = std::weak_ptr(call)] {
        if (auto const here = waiting.lock()) finish(here, toolResult::failure(MCPErrorCode::interrupted, "Dropped."));
    };
}

void MCPToolHandler::exportFilm(Here const& call, OpenProjects::Opened const& project) {
    auto& exporter = application_.exporter();
    project->refresh();
    auto choices = exportChoices(call->arguments());
    if (exporter.isExporting())
        throw MCPToolError(MCPErrorCode::busy, "Another export is running. Wait for it to finish.");
    if (choices.output) choices.output = exportPaths::given(*choices.output).string();
    try {
        auto const settings = settingsFor(choices, project->document());
        if (!choices.output) choices.output = exportPaths::usual(project->document(), settings).string();
        if (!choices.container) choices.container = settings.container;
    } catch (MCPToolError const&) {
        throw;
    } catch (Error const& error) {
        refuseArguments(error.what());
    }
    auto const remarks = std::make_shared<std::string>();
    exporter.start({.package = project->package(), .project = project->document(), .choices = choices},
                   {.remark = [remarks](std::string const& remark) { *remarks += " " + remark; },
                    .over = later(call, [this, remarks](Here const& here, ExportOutcome const& outcome) {
                        auto const& film = outcome.value();
                        finish(here,
                               toolResult::ok(fmt::format("Exported to {}.{}", film.path, *remarks), objectOf(film)));
                    })});
    auto const tell = later(call, [](Here const& here, std::optional<RunningExport> const& running) {
        if (running) here->call.progress(running->share, "Exporting");
    });
    call->kept = std::make_shared<ExportController::Observation>(exporter.observe(tell));
}

}
