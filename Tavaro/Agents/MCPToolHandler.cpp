#include <Tavaro/Agents/Private/MCPToolHandler.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroMCP/Protocol/ToolResult.h>
#include <TavaroPlatform/Processes/DesktopSession.h>

#include <fmt/format.h>

#include <filesystem>
#include <string_view>
#include <utility>

namespace tavaro {

namespace {

/// What there is to be granted, and by whom.
std::string_view permissions() {
    switch (desktopKind()) {
    case DesktopKind::none: return "There is no display, so no screen can be recorded and no application driven.";
    case DesktopKind::x11: return "An X11 desktop asks for none.";
    case DesktopKind::wayland:
        return "A Wayland desktop asks the user which screen or window to share when it is first recorded, and tells "
               "nothing of clicks and keys: list_sources says what it cannot give. It lets nobody drive other "
               "applications: for that, log in to a session “on Xorg”.";
    }
    return {};
}

bool isThere(ProjectPackage const& package) {
    std::error_code ignored;
    return std::filesystem::exists(package.projectFileURL(), ignored);
}

}

MCPToolHandler::MCPToolHandler(MainQueue& queue, Application& application, std::string version)
    : queue_(queue)
    , application_(application)
    , version_(std::move(version))
    , secrets_(queue, application)
    , recording_(application, secrets_)
    , projects_(queue, application, secrets_)
    , films_(application)
    , others_(queue) {}

MCPToolHandler::~MCPToolHandler() = default;

MCPToolHandler::Abandon MCPToolHandler::handle(ToolCall call) {
    auto const here = std::make_shared<RunningCall>(std::move(call), [this](RunningCall& over) { release(over); });
    running_.insert(here);
    here->attempt([&] { dispatch(*here); });
    return here->later([](RunningCall& abandoned) { abandoned.abandon(); });
}

void MCPToolHandler::release(RunningCall& call) {
    auto const here = call.shared_from_this();
    running_.erase(here);
    queue_.async([here] {}); // what it keeps may be what ended it
}

void MCPToolHandler::dispatch(RunningCall& call) {
    auto const tool = enumNamed<MCPToolName>(call.tool());
    if (!tool) return call.finish(toolResult::unknownTool(call.tool()));
    dispatch(call, *tool);
}

void MCPToolHandler::dispatch(RunningCall& call, MCPToolName tool) {
    switch (tool) {
    case MCPToolName::status: return status(call);
    case MCPToolName::listSources: return recording_.listSources(call);
    case MCPToolName::startRecording: return recording_.start(call);
    case MCPToolName::stopRecording: return recording_.stop(call);
    case MCPToolName::pauseRecording: return recording_.pause(call);
    case MCPToolName::resumeRecording: return recording_.resume(call);
    case MCPToolName::cancelRecording: return recording_.cancel(call);
    case MCPToolName::recordFor: return recording_.recordFor(call);
    case MCPToolName::listProjects: return projects_.list(call);
    case MCPToolName::openProject: return withProject(call, projects_, &ProjectTools::open);
    case MCPToolName::getProject: return withProject(call, projects_, &ProjectTools::show);
    case MCPToolName::editProject: return withProject(call, projects_, &ProjectTools::edit);
    case MCPToolName::editTimeline: return withProject(call, projects_, &ProjectTools::editTimeline);
    case MCPToolName::runAction: return withProject(call, projects_, &ProjectTools::runAction);
    case MCPToolName::renderFrame: return withProject(call, films_, &FilmTools::renderFrame);
    case MCPToolName::listExportPresets: return films_.listExportPresets(call);
    case MCPToolName::exportFilm: return withProject(call, films_, &FilmTools::exportFilm);
    case MCPToolName::uiOpenApp: return others_.openApp(call);
    case MCPToolName::uiElements: return others_.elements(call);
    case MCPToolName::uiClick: return others_.click(call);
    case MCPToolName::uiScroll: return others_.scroll(call);
    case MCPToolName::uiKeys: return others_.keys(call);
    case MCPToolName::uiScreenshot: return others_.screenshot(call);
    }
}

template<class Tools> void MCPToolHandler::withProject(RunningCall& call, Tools& tools, WithProject<Tools> work) {
    auto const text = call.arguments().requiredText("project_id");
    auto const unknown = [text] {
        return MCPToolError(MCPErrorCode::notFound,
                            fmt::format("There is no project \"{}\". Call list_projects.", excerpt(text)));
    };
    auto const id = UUID::parse(text);
    if (!id) throw unknown();
    application_.project(*id, call.later([&tools, work, unknown](RunningCall& here, auto const& found) {
        try {
            if (found.failure()) std::rethrow_exception(found.failure());
        } catch (NoSuchProject const&) {
            throw unknown();
        } catch (Error const& error) {
            throw MCPToolError(MCPErrorCode::failed, fmt::format("Couldn't open the project. {}", error.what()));
        }
        (tools.*work)(here, found.value());
    }));
}

void MCPToolHandler::status(RunningCall& call) {
    auto const& recorder = application_.recorder().state();
    bool const isIdle = application_.recorder().isIdle();
    JSONValue::Object recording{{"phase", nameOf(recorder.phase)},
                                {"countdown", recorder.countdown},
                                {"seconds", isIdle ? 0.0 : recorder.take.seconds}};
    if (!isIdle && recorder.take.roomSeconds)
        recording["minutesOfRoom"] = static_cast<std::int64_t>(*recorder.take.roomSeconds / 60);
    JSONValue::Object structured{{"version", version_},
                                 {"permissions", permissions()},
                                 {"recorder", std::move(recording)},
                                 {"exporting", application_.exporter().isExporting()},
                                 {"project", JSONValue{}}};
    if (auto const untold = recording_.untold()) structured["unreported"] = *untold;
    if (auto const& opened = projects_.opened(); opened && isThere(opened->package())) {
        structured["project"] = JSONValue::Object{{"id", opened->document().id.text()},
                                                  {"name", opened->document().name},
                                                  {"duration", opened->document().duration()}};
    }
    call.finish(toolResult::ok("Tavaro status", structured));
}

}
