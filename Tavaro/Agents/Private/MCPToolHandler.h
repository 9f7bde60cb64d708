#pragma once

#include <Tavaro/Agents/Private/FilmTools.h>
#include <Tavaro/Agents/Private/ProjectTools.h>
#include <Tavaro/Agents/Private/RecordingTools.h>
#include <Tavaro/Agents/Private/RunningCall.h>
#include <Tavaro/Agents/Private/SecretTools.h>
#include <Tavaro/Agents/Private/UITools.h>
#include <Tavaro/Model/Application/Application.h>

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
    /// To be called when nobody waits for the result any more: a recording of a fixed length is then ended and saved, a
    /// frame is not drawn, everything else goes on. Nothing once the call is over.
    using Abandon = std::function<void()>;

    MCPToolHandler(MainQueue& queue, Application& application, std::string version);
    ~MCPToolHandler();
    MCPToolHandler(MCPToolHandler const&) = delete;
    MCPToolHandler& operator=(MCPToolHandler const&) = delete;

    [[nodiscard]] Abandon handle(ToolCall call);
    /// Whether a call is under way, also one whose result nobody waits for.
    bool isPerforming() const { return !running_.empty(); }

private:
    template<class Tools> using WithProject = void (Tools::*)(RunningCall&, OpenProjects::Opened const&);

    void dispatch(RunningCall& call);
    void dispatch(RunningCall& call, MCPToolName tool);
    template<class Tools> void withProject(RunningCall& call, Tools& tools, WithProject<Tools> work);
    void release(RunningCall& call);
    void status(RunningCall& call);

    MainQueue& queue_;
    Application& application_;
    std::string const version_;
    SecretTools secrets_;
    RecordingTools recording_;
    ProjectTools projects_;
    FilmTools films_;
    UITools others_;
    std::set<std::shared_ptr<RunningCall>> running_;
};

}
