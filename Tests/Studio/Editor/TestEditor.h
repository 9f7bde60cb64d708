#pragma once

#include "../RandomEdits.h"
#include "../TestProject.h"

#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Loop/QueueInLoop.h>

#include <TavaroPlatform/Queues/MainQueue.h>

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>

#include <string>
#include <vector>

namespace tavaro {

/// An editor of a project of one test, inside of Qt's loop, and what it told its user.
class TestEditor {
public:
    explicit TestEditor(DemoProject document) : project(std::move(document)) { open(); }

    EditorSession* operator->() const { return session.get(); }
    DemoProject const& document() const { return project.document(); }

    void open() {
        session = std::make_unique<EditorSession>(queue, project.open());
        QObject::connect(session.get(), &EditorSession::told,
                         [this](QString const& sentence) { told.push_back(sentence.toStdString()); });
    }
    void run(char const* command) const { session->command(QString::fromUtf8(command))->trigger(); }
    bool isEnabled(char const* command) const { return session->command(QString::fromUtf8(command))->isEnabled(); }

    /// Runs the loop until it is so; a minute is more than any machine takes.
    template<class IsSo> static void waitFor(IsSo isSo) {
        QDeadlineTimer const deadline(60'000);
        while (!isSo() && !deadline.hasExpired()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
        EXPECT_TRUE(isSo());
    }

    MainQueue queue;
    QueueInLoop loop{queue};
    TestProject project;
    std::vector<std::string> told;
    std::unique_ptr<EditorSession> session;
};

/// Two clips, 0–6 and 6–10, of one recording with its microphone; zooms 1–2, 4–5 and 7–8, a title 7–9, a caption 2–3.
inline DemoProject shortFilm() {
    DemoProject project;
    project.name = "Film";
    project.assetDurations = {{"screen.mp4", 60}, {"mic.m4a", 60}};
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 6},
                              {.asset = "screen.mp4", .start = 6, .sourceStart = 20, .duration = 4}};
    project.audioTracks = {{.role = AudioRole::microphone,
                            .clips = {{.asset = "mic.m4a", .duration = 6},
                                      {.asset = "mic.m4a", .start = 6, .sourceStart = 20, .duration = 4}}}};
    project.zoomEvents = {{.start = 1, .duration = 1, .rampIn = 0.25, .rampOut = 0.25},
                          {.start = 4, .duration = 1, .rampIn = 0.25, .rampOut = 0.25},
                          {.start = 7, .duration = 1, .rampIn = 0.25, .rampOut = 0.25}};
    project.overlays = {{.start = 7, .duration = 2}};
    project.captions.cues = {{.start = 2, .duration = 1, .text = "said"}};
    return project;
}

}
