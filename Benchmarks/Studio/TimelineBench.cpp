#include <Benchmarks/Studio/LongFilm.h>
#include <Benchmarks/Studio/TimelineBench.h>

#include <Tavaro/Studio/Timeline/TimelineItem.h>
#include <Tavaro/Studio/Timeline/TimelineSteps.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <QCoreApplication>
#include <QQuickWindow>
#include <QSGRendererInterface>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

constexpr int widestFilled = 31; // the step of zooming out up to which a film of 30 min fills the window, too

struct Costs {
    double firstFrame = 0;
    double scroll = 0;
    double usualScroll = 0; // the median
    std::size_t parts = 0;  // nodes of what is scrolled
    double zoom = 0;
    double edit = 0;
    // The medians, which tell what grows.
    double usualZoom = 0;
    double usualEdit = 0;
};

/// What the main thread does for one frame: draw it, and the renderer's work, which is on it too.
class Window {
public:
    Window() : item(new TimelineItem(window.contentItem())) {
        window.resize(1600, 420);
        item->setSize({1600, 420});
        window.show();
        frame();
    }
    void frame() { (void)window.grabWindow(); }

    QQuickWindow window;
    TimelineItem* item;
};

Costs costsOf(DemoProject const& project) {
    auto const folder = fs::temp_directory_path() / ("tavaro-timeline-bench-" + std::to_string(::getpid()));
    ProjectPackage const package(folder / "long.recproj");
    package.createDirectories();
    package.save(project);
    OpenProject open(package.url());
    Window at;
    // What a grab costs beside drawing: the copy of the window's pixels.
    std::vector<double> idle;
    for (int i = 0; i < 200; ++i) idle.push_back(threadSeconds([&] { at.frame(); }));
    double const grab = percentile(idle, 0.5);

    Costs costs;
    costs.firstFrame = threadSeconds([&] {
        at.item->show(open.document());
        at.frame();
    });
    auto const observation =
        open.observe([&](ProjectChange const& change) { at.item->show(open.document(), change.fields, change.items); });
    at.item->setView(project.duration() / 3, 0.06);
    at.frame();
    for (auto const& layer : at.item->drawing().layers) costs.parts += layer.rects.size() + layer.pictures.size();
    std::vector<double> scrolls, zooms, filled, edits;
    for (int i = 0; i < 200; ++i) {
        scrolls.push_back(threadSeconds([&] {
            at.item->setContentX(at.item->contentX() + 37);
            at.frame();
        }));
    }
    for (int i = 0; i < 120; ++i) {
        zooms.push_back(threadSeconds([&] {
            at.item->setView(project.duration() / 3, 0.02 * std::exp2(i % 60 / 6.0));
            at.frame();
        }));
        if (i % 60 <= widestFilled) filled.push_back(zooms.back());
    }
    at.item->setView(project.duration() / 3, 0.06);
    TimelineSteps steps(open);
    auto const dragged = project.zoomEvents[project.zoomEvents.size() / 3].id;
    steps.take(timelineIntents::EditBegan{"Move Zoom"});
    for (int i = 0; i < 300; ++i) {
        edits.push_back(threadSeconds([&] {
            steps.take(timelineIntents::MoveItems{{dragged}, 0.02 * (i % 60 + 1)});
            at.frame();
        }));
    }
    steps.take(timelineIntents::EditEnded{});
    costs.scroll = std::max(percentile(scrolls, 0.95) - grab, 0.0);
    costs.usualScroll = std::max(percentile(scrolls, 0.5) - grab, 0.0);
    costs.zoom = std::max(percentile(zooms, 0.95) - grab, 0.0);
    costs.edit = std::max(percentile(edits, 0.95) - grab, 0.0);
    costs.usualZoom = std::max(percentile(filled, 0.5) - grab, 0.0);
    costs.usualEdit = std::max(percentile(edits, 0.5) - grab, 0.0);
    fs::remove_all(folder);
    return costs;
}

void print(char const* name, double seconds) { std::printf("%s %.2f ms\n", name, seconds * 1000); }

}

void benchTimeline() {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    costsOf(longFilm(0.1)); // fonts and Qt's own parts are loaded
    auto const half = costsOf(longFilm(0.5)), three = costsOf(longFilm(3));
    print("timeline.first_frame", three.firstFrame);
    print("timeline.scroll_step_p95", three.scroll);
    print("timeline.scroll_step_p50", three.usualScroll);
    std::printf("timeline.parts_in_view %zu nodes\n", three.parts);
    print("timeline.zoom_step_p95", three.zoom);
    print("timeline.edit_to_picture_p95", three.edit);
    print("timeline.edit_to_picture_p50", three.usualEdit);
    std::printf("timeline.scroll_3h_over_30min %.2f ratio\n", three.usualScroll / half.usualScroll);
    std::printf("timeline.zoom_3h_over_30min %.2f ratio\n", three.usualZoom / half.usualZoom);
    std::printf("timeline.edit_3h_over_30min %.2f ratio\n", three.usualEdit / half.usualEdit);
}

}
