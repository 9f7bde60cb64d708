#include <Tavaro/Agents/Private/RecordingTools.h>

#include <Tavaro/Agents/Private/RecordObject.h>
#include <Tavaro/Agents/Private/SecretTools.h>
#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Listings/SourceListing.h>
#include <Tavaro/Model/Recording/RecordingPreferences.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroMCP/Protocol/ToolResult.h>

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tavaro {

namespace {

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

RecorderOptions recorderOptions(RecordRequest const& request, Preferences& preferences) {
    RecorderOptions options{.source = sourceOf(request), .keys = chosenKeys(preferences)};
    if (request.microphone.value_or(preferences.get(microphoneRecorded)))
        options.microphone = MicrophoneSource{preferences.get(microphoneChosen)};
    if (request.camera.value_or(preferences.get(cameraRecorded)))
        options.camera = cameraSource(preferences.get(cameraChosen), preferences);
    if (request.systemAudio.value_or(preferences.get(systemAudioRecorded))) options.systemSound = SystemSoundSource{};
    return options;
}

/// Why there is no project, or nothing.
void expectSaved(RecordingOutcome const& outcome, RecordRequest const& request) {
    if (!outcome.failure) return;
    try {
        std::rethrow_exception(outcome.failure);
    } catch (CaptureError const& error) {
        if (error.kind == CaptureError::Kind::noSuchSource) throw unknownSource(request);
        if (error.kind == CaptureError::Kind::refused)
            throw MCPToolError(MCPErrorCode::permissionMissing, outcome.sentence());
        bool const isArea = std::holds_alternative<RecordRequest::Area>(request.target);
        if (isArea && error.kind == CaptureError::Kind::badSource) refuseArguments(error.what());
    } catch (Error const&) { // its sentence is in the outcome's
    }
    throw MCPToolError(MCPErrorCode::failed, outcome.sentence());
}

void addRemarks(JSONValue::Object& structured, std::vector<std::string> const& remarks) {
    JSONValue::Array sentences;
    for (auto const& remark : remarks) sentences.emplace_back(remark);
    if (!sentences.empty()) structured.emplace("remarks", std::move(sentences));
}

JSONValue::Object savedObject(RecordingOutcome const& outcome) {
    auto const& made = *outcome.made;
    JSONValue::Object structured{{"project_id", made.id.text()},
                                 {"path", made.made.path},
                                 {"duration", made.made.duration},
                                 {"health", made.health}};
    auto const limits = made.made.limits.value_or(std::vector<std::string>());
    auto remarks = outcome.remarks;
    std::erase_if(remarks,
                  [&](std::string const& remark) { return std::ranges::find(limits, remark) != limits.end(); });
    if (!limits.empty()) structured.emplace("limits", JSONValue::Array(limits.begin(), limits.end()));
    addRemarks(structured, remarks);
    return structured;
}

/// An unfinished recording is offered here: the agent cannot bring it back, but the user can.
ToolResult begunResult(std::vector<std::string> const& remarks) {
    std::string text = "Recording. Call stop_recording to finish.";
    for (auto const& remark : remarks) text += " " + remark;
    JSONValue::Object structured;
    addRemarks(structured, remarks);
    return structured.empty() ? toolResult::ok(text) : toolResult::ok(text, std::move(structured));
}

/// Why there is less than was asked for, in time or of the area; a blank after each sentence.
std::string lessThanAsked(RecordingOutcome const& outcome, RecordRequest const& request) {
    auto const& made = *outcome.made;
    std::string text;
    if (made.endedEarly)
        text += fmt::format("It ended by itself: {} ", *made.endedEarly);
    else if (request.seconds && outcome.isStopped)
        text += fmt::format("It was stopped before its {:g} s were over. ", *request.seconds);
    auto const* const area = std::get_if<RecordRequest::Area>(&request.target);
    auto const size = made.made.sourceSize;
    bool const isCut = area && (size.width < area->width - 1.5 || size.height < area->height - 1.5);
    if (isCut) text += fmt::format("Of the area, {} × {} pixels were recorded. ", size.width, size.height);
    return text;
}

/// `hidden` says what of it is hidden; empty where that was not looked for.
ToolResult savedResult(RecordingOutcome const& outcome, RecordRequest const& request, std::string const& hidden) {
    auto const& made = *outcome.made;
    return toolResult::ok(fmt::format("{}{}{}Saved as project {} ({:.1f} s). Auto Polish has run.", hidden,
                                      hidden.empty() ? "" : " ", lessThanAsked(outcome, request), made.id.text(),
                                      made.made.duration),
                          savedObject(outcome));
}

}

void RecordingTools::listSources(RunningCall& call) {
    application_.sources(call.later([](RunningCall& here, auto const& sources) {
        here.finish(toolResult::ok("Recordable sources", objectOf(listingOf(sources.value()))));
    }));
}

void RecordingTools::record(RunningCall& call, RecordRequest const& request,
                            std::function<void(std::vector<std::string>)> begun) {
    application_.recorder().expectIdle();
    auto const take = std::make_shared<Take>(Take{.request = request});
    auto const answer =
        call.later([this, take](RunningCall& here, RecordingOutcome const& outcome) { tell(here, *take, outcome); });
    application_.record({.recorder = recorderOptions(request, application_.preferences()),
                         .countdown = request.countdown,
                         .seconds = request.seconds.value_or(0),
                         .startedBy = call.client()},
                        {.begun =
                             [take, begun = std::move(begun)] {
                                 if (begun) begun(take->remarks);
                             },
                         .remark = [take](std::string const& remark) { take->remarks.push_back(remark); },
                         .over =
                             [take, answer](RecordingOutcome const& outcome) {
                                 take->isOver = true;
                                 bool const isThrownAway = outcome.kind == RecordingOutcome::Kind::discarded;
                                 if (outcome.hasBegun && !isThrownAway) take->untold = outcome;
                                 answer(outcome);
                             }});
    take_ = take;
}

/// What is recorded now; somebody else than an agent may have asked for it.
std::shared_ptr<RecordingTools::Take> RecordingTools::present() const {
    return take_->isOver ? std::make_shared<Take>() : take_;
}

void RecordingTools::tell(RunningCall& call, Take& take, RecordingOutcome const& outcome) {
    if (!call.isAbandoned()) take.untold.reset();
    expectSaved(outcome, take.request);
    secrets_.tellOfTake(call, outcome.made->id,
                        [outcome, request = take.request](RunningCall& here, std::string const& sentence) {
                            here.finish(savedResult(outcome, request, sentence));
                        });
}

std::optional<JSONValue::Object> RecordingTools::untold() const {
    if (!take_->untold) return std::nullopt;
    if (take_->untold->made) return savedObject(*take_->untold);
    return JSONValue::Object{{"failure", take_->untold->sentence()}};
}

void RecordingTools::start(RunningCall& call) {
    record(call, recordRequest(call.arguments(), RecordingLength::open),
           call.later(
               [](RunningCall& here, std::vector<std::string> const& remarks) { here.finish(begunResult(remarks)); }));
}

void RecordingTools::recordFor(RunningCall& call) {
    auto const request = recordRequest(call.arguments(), RecordingLength::fixed);
    record(call, request, {});
    auto& recorder = application_.recorder();
    auto const tell = call.later([seconds = *request.seconds](RunningCall& here, RecorderState const& state) {
        if (state.phase == RecorderPhase::idle) return; // it is over, and the result comes next
        here.progress(std::min(state.take.seconds / seconds, 1.0), std::string(nameOf(state.phase)));
    });
    call.keep(std::make_shared<RecordingController::Observation>(recorder.observe(tell)));
    call.whenAbandoned([&recorder] {
        if (recorder.isTaking()) recorder.stop();
        if (recorder.state().phase == RecorderPhase::countdown) recorder.cancel();
    });
}

void RecordingTools::stop(RunningCall& call) {
    auto& recorder = application_.recorder();
    if (auto const untold = take_->untold; untold && recorder.isIdle()) return tell(call, *take_, *untold);
    recorder.stop();
    recorder.whenOver(call.later(
        [this, take = present()](RunningCall& here, RecordingOutcome const& outcome) { tell(here, *take, outcome); }));
}

void RecordingTools::pause(RunningCall& call) {
    application_.recorder().pause();
    call.finish(toolResult::ok("Paused. Call resume_recording to go on."));
}

void RecordingTools::resume(RunningCall& call) {
    application_.recorder().resume();
    call.finish(toolResult::ok("Recording again. Call stop_recording to finish."));
}

void RecordingTools::cancel(RunningCall& call) {
    application_.recorder().cancel();
    application_.recorder().whenOver(call.later(
        [](RunningCall& here, RecordingOutcome const&) { here.finish(toolResult::ok("Recording thrown away.")); }));
}

}
