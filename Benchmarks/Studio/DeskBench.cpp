#include <Benchmarks/Studio/DeskBench.h>
#include <Benchmarks/Studio/EventSleep.h>
#include <Benchmarks/Studio/LongFilm.h>

#include <Tavaro/Studio/Desk/EditorDesk.h>
#include <Tavaro/Studio/Loop/QueueInLoop.h>
#include <Tavaro/Studio/Playback/PulseOutput.h>

#include <TavaroPlatform/Clocks/MediaClock.h>
#include <TavaroPlatform/Queues/MainQueue.h>

#include "../../Tests/Core/Package/TemporaryFolder.h"
#include "../Core/HourTake.h"

#include <QCoreApplication>
#include <QQuickWindow>
#include <QSGRendererInterface>

#include <algorithm>
#include <cstdio>
#include <memory>
#include <string>
#include <vector>

namespace tavaro {

namespace {

/// A project in a window of its own.
class Room {
public:
    explicit Room(DemoProject const& project) {
        ProjectPackage const package(folder_ / "Film.recproj");
        package.createDirectories();
        package.save(project);
        open = std::make_shared<OpenProject>(readProject(package.url()));
        desk = std::make_unique<EditorDesk>(
            queue_, open, FilmPlayback::Means{std::make_unique<PulseOutput>("unix:/nonexistent"), {}});
        window_.resize(1600, 420);
        timeline = new TimelineItem(window_.contentItem());
        timeline->setSize({1600, 420});
        window_.show();
        desk->showIn(timeline);
        timeline->setView(project.duration() / 3, 0.06);
        frame();
    }
    ~Room() { desk->showIn(nullptr); }

    void frame() { (void)window_.grabWindow(); }

private:
    TemporaryFolder folder_{TemporaryFolder::fastest()};
    MainQueue queue_;
    QueueInLoop loop_{queue_};
    QQuickWindow window_;

public:
    std::shared_ptr<OpenProject> open;
    std::unique_ptr<EditorDesk> desk;
    TimelineItem* timeline = nullptr; // the window's
};

double dragStep(double hours) {
    using namespace timelineIntents;
    auto const film = longFilm(hours);
    Room room(film);
    auto* const session = room.desk->session();
    auto const dragged = film.zoomEvents[film.zoomEvents.size() / 3].id;
    session->select(std::vector{dragged});
    (void)session->list(QStringLiteral("zoom"));
    (void)session->list(QStringLiteral("caption"));
    (void)session->stepsModel();
    std::vector<double> steps;
    room.timeline->ask(EditBegan{"Move Zoom"});
    for (int i = 0; i < 60; ++i) {
        steps.push_back(threadSeconds([&] { room.timeline->ask(MoveItems{{dragged}, 0.02 * (i + 1)}); }));
        QCoreApplication::processEvents();
    }
    room.timeline->ask(EditEnded{});
    return percentile(steps, 0.5);
}

void measureDrags() {
    dragStep(0.1); // fonts and Qt's own parts are loaded
    double const half = dragStep(0.5), three = dragStep(3);
    std::printf("desk.drag_step_p50 %.3f ms\n", three * 1000);
    std::printf("desk.drag_step_3h_over_30min %.2f ratio\n", three / half);
    std::fflush(stdout);
}

void measureSaving() {
    Room room(hourTake());
    auto* const session = room.desk->session();
    std::vector<double> longest, toDisk;
    for (int i = 0; i < 7; ++i) {
        double const began = mediaClockNow();
        session->rename(QStringLiteral("Film %1").arg(i));
        double most = 0;
        while (!session->isSaved()) most = std::max(most, threadSeconds(sleepUntilEvent));
        toDisk.push_back(mediaClockNow() - began);
        longest.push_back(most);
    }
    room.open->edit("Rename", [](DemoProject& project) { project.name = "last"; });
    double const whole = threadSeconds([&] { room.open->save(); });
    std::printf("desk.save_longest_on_main_thread %.2f ms\n", 1000 * percentile(longest, 0.5));
    std::printf("desk.save_beside %.2f ms\n", 1000 * whole);
    std::printf("desk.edit_to_disk %.3f s\n", percentile(toDisk, 0.5));
    std::fflush(stdout);
}

}

void benchDesk() {
    QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
    measureDrags();
    measureSaving();
}

}
