#pragma once

#include <Tavaro/Agents/Private/RecordRequest.h>
#include <Tavaro/Agents/Private/ToolArguments.h>
#include <Tavaro/Model/Application/Application.h>

#include <TavaroCore/Direction/PolishOptions.h>
#include <TavaroMCP/Catalogue/MCPToolName.h>

#include <functional>
#include <memory>
#include <set>
#include <string>

namespace tavaro {

/// Performs the calls of tools by what the application offers. It belongs to the main queue, and answers there; whether
/// the client may is decided before. A failed call leaves the project and the recorder as they were.
class MCPToolHandler {
public:
    struct Call {
        std::string tool;
        JSONValue::Object arguments;
        std::string client;
        std::function<void(double fraction, std::string const& message)> progress;
        std::function<void(JSONValue const& result)> finish; // once
    };
    /// To be called when nobody waits for the result any more: a recording of a fixed length is then ended and saved, a
    /// frame is not drawn, everything else goes on. Nothing once the call is over.
    using Abandon = std::function<void()>;

    MCPToolHandler(MainQueue& queue, Application& application, std::string version);
    ~MCPToolHandler();
    MCPToolHandler(MCPToolHandler const&) = delete;
    MCPToolHandler& operator=(MCPToolHandler const&) = delete;

    [[nodiscard]] Abandon handle(Call call);

private:
    struct Running;
    using Here = std::shared_ptr<Running>;
    using WithProject = void (MCPToolHandler::*)(Here const&, OpenProjects::Opened const&);

    template<class Work> void attempt(Here const& call, Work const& work);
    template<class Work> auto later(Here const& call, Work work);
    void finish(Here const& call, JSONValue const& result);
    void dispatch(Here const& call, MCPToolName tool);
    void withProject(Here const& call, WithProject work);

    void status(Here const& call);
    void listSources(Here const& call);
    void startRecording(Here const& call);
    void recordFor(Here const& call);
    void record(Here const& call, RecordRequest const& request, std::function<void()> begun);
    void stopRecording(Here const& call);
    void pauseRecording(Here const& call);
    void resumeRecording(Here const& call);
    void cancelRecording(Here const& call);
    void listProjects(Here const& call);
    void listExportPresets(Here const& call);

    void openProject(Here const& call, OpenProjects::Opened const& project);
    void getProject(Here const& call, OpenProjects::Opened const& project);
    void editProject(Here const& call, OpenProjects::Opened const& project);
    void editTimeline(Here const& call, OpenProjects::Opened const& project);
    void runAction(Here const& call, OpenProjects::Opened const& project);
    void polish(Here const& call, OpenProjects::Opened const& project, PolishOptions const& options);
    void renderFrame(Here const& call, OpenProjects::Opened const& project);
    void exportFilm(Here const& call, OpenProjects::Opened const& project);

    MainQueue& queue_;
    Application& application_;
    std::string const version_;
    OpenProjects::Opened opened_; // by the last `open_project`
    std::set<Here> running_;
};

}
