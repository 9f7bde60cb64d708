#include <TavaroRender/Export/FilmPainter.h>

#include <TavaroCore/Project/DemoProject.h>

namespace tavaro {

DemoProject filmProject(DemoProject const& project, ExportSettings const& settings) {
    auto film = project;
    film.exportSettings = settings;
    // That format is a split, whatever the layout that the project is edited in.
    if (settings.presetID == "split-vertical" && film.usesCamera() && !film.layout.isSplit())
        film.layout.content = CanvasLayout::Split{.arrangement = SplitArrangement::cameraTop};
    return film;
}

FramePainter filmPainter(DemoProject const& project, ProjectPackage const& package, ExportSettings const& settings,
                         RendererOptions options) {
    options.failure = EffectFailure::stop;
    auto even = settings;
    even.size = settings.size.evened();
    FramePainter painter(package, even.size, options);
    painter.show(filmProject(project, even));
    return painter;
}

}
