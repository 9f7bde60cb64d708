#include <Benchmarks/Studio/LongFilm.h>
#include <Benchmarks/Studio/TranscriptBench.h>

#include <Tavaro/Studio/Editor/EditorSession.h>
#include <Tavaro/Studio/Editor/TranscriptModel.h>
#include <Tavaro/Studio/Loop/QueueInLoop.h>

#include <TavaroPlatform/Queues/MainQueue.h>

#include "../../Tests/Core/Package/TemporaryFolder.h"

#include <QCoreApplication>

#include <cstdio>
#include <memory>
#include <vector>

namespace tavaro {

namespace {

constexpr double wordEvery = 0.4; // seconds
constexpr int rounds = 21;

DemoProject spokenFilm(double hours) {
    auto film = longFilm(hours);
    Transcript transcript;
    for (int i = 0; i * wordEvery < hours * 3600; ++i) {
        double const start = i * wordEvery;
        transcript.words.push_back({.text = i % 12 == 11 ? "end." : "word", .start = start, .end = start + 0.3});
    }
    film.transcript = std::move(transcript);
    return film;
}

/// Seconds of this thread.
struct TranscriptCost {
    double open = 0;
    double deleteWord = 0; // the median
    double edit = 0;       // of that, an edit that cuts as much while no transcript is shown
    double page = 0;
    double follow = 0;
};

/// A project in a session, as a window has it.
struct Room {
    explicit Room(DemoProject const& project) {
        ProjectPackage const package(folder / "Film.recproj");
        package.createDirectories();
        package.save(project);
        session = std::make_unique<EditorSession>(queue, std::make_shared<OpenProject>(readProject(package.url())));
    }

    TemporaryFolder folder{TemporaryFolder::fastest()};
    MainQueue queue;
    QueueInLoop loop{queue};
    std::unique_ptr<EditorSession> session;
};

template<class Work> double median(Work work) {
    std::vector<double> seconds;
    for (int i = 0; i < rounds; ++i) {
        seconds.push_back(threadSeconds([&] { work(i); }));
        QCoreApplication::processEvents();
    }
    return percentile(seconds, 0.5);
}

TranscriptCost costOf(double hours) {
    Room const room(spokenFilm(hours));
    auto& session = *room.session;
    TranscriptCost cost;
    cost.edit = median([&](int i) { session.perform(operations::Cut{100.0 + i, 100.3 + i}); });
    TranscriptModel* words = nullptr;
    cost.open = threadSeconds([&] { words = qobject_cast<TranscriptModel*>(session.transcriptModel()); });
    words->setSought(QStringLiteral("end"));
    cost.deleteWord = median([&](int i) {
        words->place(words->entryCount() / 3 + 10 * i);
        words->deleteSelected();
    });
    auto const roles = words->roleNames().keys();
    cost.page = median([&](int i) {
        for (int row = 0; row < 12; ++row) {
            auto const index = words->index(words->rowCount() * i / rounds + row);
            for (int const role : roles) (void)words->data(index, role);
        }
    });
    cost.follow = median([&](int i) { session.setPlayhead(session.duration() * i / rounds); });
    return cost;
}

void print(char const* name, double three, double half) {
    std::printf("transcript.%s %.3f ms\n", name, three * 1000);
    std::printf("transcript.%s_3h_over_30min %.2f ratio\n", name, three / half);
    std::fflush(stdout);
}

}

void benchTranscript() {
    (void)costOf(0.05); // Qt's own parts are loaded
    auto const half = costOf(0.5), three = costOf(3);
    print("open", three.open, half.open);
    print("delete_word", three.deleteWord, half.deleteWord);
    print("delete_word_beyond_edit", three.deleteWord - three.edit, half.deleteWord - half.edit);
    print("page", three.page, half.page);
    print("follow_playhead", three.follow, half.follow);
}

}
