#pragma once

#include <Tavaro/Agents/Private/RunningCall.h>
#include <Tavaro/Model/Project/OpenProjects.h>

namespace tavaro {

class Application;

/// The tools that draw the film.
class FilmTools {
public:
    explicit FilmTools(Application& application) : application_(application) {}

    void listExportPresets(RunningCall& call);
    /// A frame that nobody waits for any more is not drawn.
    void renderFrame(RunningCall& call, OpenProjects::Opened const& project);
    void exportFilm(RunningCall& call, OpenProjects::Opened const& project);

private:
    Application& application_;
};

}
