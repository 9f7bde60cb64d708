#include "RecorderTest.h"

#include <Tavaro/Model/Recording/RecordingChoice.h>
#include <Tavaro/Model/Recording/UnfinishedRecording.h>
#include <Tavaro/Studio/Recorder/FirstTake.h>
#include <Tavaro/Studio/Recorder/RecorderBarModel.h>
#include <Tavaro/Studio/Recorder/RecorderKeys.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::ElementsAre;
namespace fs = std::filesystem;

namespace {

class RecorderModelTest : public RecorderTest {
protected:
    void begin(RecorderModel& model) {
        model.record();
        ASSERT_TRUE(becomes([&] { return model.phase() == RecorderModel::Recording; }))
            << model.failure().toStdString();
    }
    bool isIdle(RecorderModel const& model) {
        return becomes([&] { return model.phase() == RecorderModel::Idle; });
    }
    std::size_t projects() const {
        std::error_code none;
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder / "Movies", none), {}));
    }
};

}

TEST_F(RecorderModelTest, aTakeOfWhatIsChosenIsToldFromItsCountdownToItsProject) {
    application.preferences().set(countdownChosen, 1);
    RecorderModel model(queue, application, settings());
    std::vector<int> phases;
    QObject::connect(&model, &RecorderModel::changed, [&] {
        if (phases.empty() || phases.back() != model.phase()) phases.push_back(model.phase());
    });
    QString path;
    QObject::connect(&model, &RecorderModel::saved, [&](QString const& made, QString const& startedBy) {
        path = made;
        EXPECT_EQ(startedBy, "");
    });
    model.sources()->choose("area:20,10,160,100;free;display-1");
    model.setKeys(QStringLiteral("none"));
    begin(model);
    EXPECT_EQ(model.filmedPlace(), (PixelRect{20, 10, 160, 100}));
    model.togglePause();
    EXPECT_EQ(model.phase(), RecorderModel::Paused);
    model.togglePause();
    model.record(); // an order that does not fit
    model.stop();
    ASSERT_TRUE(isIdle(model));
    ASSERT_TRUE(becomes([&] { return !path.isEmpty(); })) << model.failure().toStdString();
    auto const made = ProjectPackage(path.toStdString()).load();
    EXPECT_EQ(made.sourceSize, (Size2{160, 100}));
    EXPECT_EQ(made.metadata->health.keyboardCaptured, false);
    using enum RecorderModel::Phase;
    EXPECT_THAT(phases, ElementsAre(Countdown, Recording, Paused, Recording, Finishing, Idle));
}

TEST_F(RecorderModelTest, whatCannotBeRecordedIsSaidUntilTheNextTry) {
    RecorderModel model(queue, application, settings());
    model.sources()->choose("display:display-9");
    model.record();
    ASSERT_TRUE(becomes([&] { return !model.failure().isEmpty(); }));
    EXPECT_TRUE(model.failure().contains("There is no display “display-9”"));
    model.sources()->choose("display:display-1");
    begin(model);
    EXPECT_EQ(model.failure(), "");
    model.throwAway();
}

TEST_F(RecorderModelTest, whatBecameOfATakeIsSaidOnceItIsSaved) {
    RecorderModel model(queue, application, settings());
    QString said, path;
    QObject::connect(&model, &RecorderModel::remarked, [&](QString const& sentences) { said = sentences; });
    QObject::connect(&model, &RecorderModel::saved, [&](QString const& made) { path = made; });
    auto const filmed = client->makeWindow({.frame = {10, 10, 120, 80}, .windowClass = "Filmed"});
    client->connection().synchronize();
    model.sources()->choose(QString::fromStdString(sourceText(WindowSource{filmed})));
    begin(model);
    ASSERT_TRUE(becomes([&] { return application.recorder().state().take.framesWritten > 5; }));
    client->destroy(filmed);
    client->connection().synchronize();
    ASSERT_TRUE(becomes([&] { return !path.isEmpty(); })) << model.failure().toStdString();
    EXPECT_TRUE(said.contains("closed")) << said.toStdString();
}

TEST_F(RecorderModelTest, aTakeThatIsThrownAwayComesBackWhileThatCanBeUndone) {
    RecorderModel model(queue, application, settings());
    begin(model);
    model.throwAway();
    EXPECT_EQ(model.phase(), RecorderModel::ThrownAway);
    EXPECT_EQ(model.undoSeconds(), 3);
    model.undoThrowAway();
    EXPECT_EQ(model.phase(), RecorderModel::Paused);
    model.togglePause();
    model.stop();
    ASSERT_TRUE(isIdle(model));
    EXPECT_EQ(projects(), 1u);
}

TEST_F(RecorderModelTest, aTakeThatIsThrownAwayIsGoneAfterItsTimeOrWithTheNextTake) {
    auto quick = settings();
    quick.undoTick = 30;
    RecorderModel model(queue, application, quick);
    begin(model);
    model.throwAway();
    ASSERT_TRUE(isIdle(model));
    begin(model);
    model.throwAway();
    begin(model); // the time is not over
    model.throwAway();
    application.recorder().resume(); // somebody else wants it
    EXPECT_EQ(model.phase(), RecorderModel::Recording);
    model.stop();
    ASSERT_TRUE(isIdle(model));
    EXPECT_EQ(projects(), 1u);
    EXPECT_TRUE(unfinishedRecordings().empty());
}

TEST_F(RecorderModelTest, aRecordingGoesOnWhereItsWindowGoesWhileItBegins) {
    std::optional<RecordingOutcome> over;
    auto model = std::make_optional<RecorderModel>(queue, application, settings());
    application.record({.seconds = 0.2}, {.over = [&](RecordingOutcome const& outcome) { over = outcome; }});
    model.reset(); // devices are still let go of
    ASSERT_TRUE(becomes([&] { return over.has_value(); }));
    EXPECT_EQ(over->kind, RecordingOutcome::Kind::saved) << over->sentence();
}

TEST_F(RecorderModelTest, aTakeThatSomebodyElseStartedIsLabelledSo) {
    RecorderModel model(queue, application, settings());
    QString who;
    QObject::connect(&model, &RecorderModel::saved, [&](QString const&, QString const& startedBy) { who = startedBy; });
    application.record({.recorder = {.source = WindowSource{client->makeWindow({.frame = {0, 0, 200, 100}})}},
                        .seconds = 0.3,
                        .startedBy = "agent"});
    ASSERT_TRUE(becomes([&] { return model.phase() == RecorderModel::Recording; }));
    EXPECT_EQ(model.startedBy(), "agent");
    EXPECT_FALSE(model.filmedPlace()) << "nothing that lies above a window is in its picture";
    ASSERT_TRUE(isIdle(model));
    EXPECT_TRUE(becomes([&] { return who == "agent"; }));
    EXPECT_EQ(model.startedBy(), "");
}

TEST_F(RecorderModelTest, whoIsNewIsLedToAPolishedTakeOnce) {
    RecorderModel model(queue, application, settings());
    FirstTake first(model, application.preferences(), 1);
    QString path;
    QObject::connect(&first, &FirstTake::made, [&](QString const& made) { path = made; });
    EXPECT_TRUE(first.isWanted());
    EXPECT_FALSE(first.canGoOn()) << "nothing is known to be there yet";
    model.setWatched(true);
    ASSERT_TRUE(becomes([&] { return first.canGoOn(); }));
    for (auto const step : {FirstTake::Source, FirstTake::Sound, FirstTake::Take}) {
        EXPECT_EQ(first.step(), step);
        first.goOn();
    }
    ASSERT_TRUE(becomes([&] { return !path.isEmpty(); })) << model.failure().toStdString();
    EXPECT_FALSE(first.isWanted());
    EXPECT_TRUE(fs::exists(fs::path(path.toStdString()) / "project.json"));
}

TEST_F(RecorderModelTest, windowsHaveTimeToLeaveThePictureBeforeATake) {
    auto settings = this->settings();
    settings.clearing = std::chrono::milliseconds(150);
    RecorderModel model(queue, application, settings);
    RecorderBarModel bar(model, application.preferences());
    bar.setHasOtherWay(true);
    bar.setSize({100000, 40}); // no screen has room for it
    std::optional<std::chrono::steady_clock::time_point> clearedAt;
    QObject::connect(&model, &RecorderModel::changed, [&] {
        if (model.isClearing() && !clearedAt) clearedAt = std::chrono::steady_clock::now();
        EXPECT_FALSE(bar.isShown() && (model.isClearing() || model.phase() == RecorderModel::Recording));
    });
    for (int const countdown : {1, 0}) {
        model.setCountdown(countdown);
        clearedAt.reset();
        begin(model);
        ASSERT_TRUE(clearedAt);
        EXPECT_GE(std::chrono::steady_clock::now() - *clearedAt, settings.clearing / 2) << "less what it took to hear";
        model.stop();
        ASSERT_TRUE(isIdle(model));
    }
}

TEST_F(RecorderModelTest, theBarIsBesideWhatIsFilmedAndWhereItWasPut) {
    RecorderModel model(queue, application, settings());
    RecorderBarModel bar(model, application.preferences());
    bar.setSize({100, 40});
    model.setWatched(true);
    ASSERT_TRUE(becomes([&] { return !model.sources()->chosenName().isEmpty(); }));
    model.sources()->choose("area:0,0,300,300;free;display-1");
    EXPECT_FALSE(bar.isShown());
    bar.keep({10, 10});
    begin(model);
    EXPECT_TRUE(bar.isShown());
    EXPECT_FALSE(bar.isInPicture());
    EXPECT_FALSE(QRect(bar.place(), bar.size()).intersects({0, 0, 300, 300}));
    model.throwAway();
    EXPECT_TRUE(bar.isShown()) << "it has the way back";
    model.sources()->choose("area:200,200,100,100;free;display-1");
    begin(model);
    EXPECT_EQ(bar.place(), QPoint(10, 10));
    bar.setSize({100000, 40}); // no screen has room for it
    EXPECT_TRUE(bar.isInPicture() && bar.isShown()) << "else nothing would end the take";
    bar.setHasOtherWay(true);
    EXPECT_FALSE(bar.isShown());
    model.togglePause();
    EXPECT_TRUE(bar.isShown()) << "nothing is filmed";
    model.throwAway();
}

TEST_F(RecorderModelTest, shortcutsWorkTheRecorderFromAnywhere) {
    RecorderModel model(queue, application, settings());
    application.preferences().set(toggleShortcut, "ctrl+alt+t");
    RecorderKeys keys(queue, application.preferences(), model);
    EXPECT_EQ(keys.problem(), "");
    auto const press = [&](std::string const& key) {
        for (auto const* const held : {"Control_L", "Alt_L"}) client->key(held, true);
        client->tap(key);
        for (auto const* const held : {"Control_L", "Alt_L"}) client->key(held, false);
        client->connection().synchronize();
    };
    press("t");
    ASSERT_TRUE(becomes([&] { return model.phase() == RecorderModel::Recording; }));
    press("p");
    EXPECT_TRUE(becomes([&] { return model.phase() == RecorderModel::Paused; }));
    press("t");
    EXPECT_TRUE(isIdle(model));
    ASSERT_EQ(projects(), 1u);
    auto const log = ProjectPackage(fs::directory_iterator(folder / "Movies")->path()).load().metadata;
    EXPECT_TRUE(log->keystrokes.empty()) << log->keystrokes.front().keys.back() << ", as the film would show";
    keys.setToggleKey("p");
    EXPECT_TRUE(keys.problem().contains("that one types with"));
    EXPECT_FALSE(keys.canToggle());
    keys.setToggleKey("");
    EXPECT_EQ(keys.problem(), "");
}
