#include "../../Capture/TestDisplay.h"
#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Model/Recording/RecordingController.h>
#include <Tavaro/Model/Recording/UnfinishedRecording.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/Fields.h>

#include <cstdlib>
#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::ElementsAre;
using ::testing::StartsWith;
namespace fs = std::filesystem;
using Kind = RecordingOutcome::Kind;
using Phase = RecorderPhase;

namespace {

class RecordingControllerTest : public DisplayTest {
protected:
    RecordingControllerTest() { setenv("XDG_DATA_HOME", folder.path().c_str(), 1); }
    ~RecordingControllerTest() override { unsetenv("XDG_DATA_HOME"); }

    RecordingRequest request() const {
        return {.recorder = {.source = DisplaySource{}, .display = display->name(), .fps = 20},
                .project = {.package = folder / "take.recproj"}};
    }
    void start(RecordingRequest const& wanted) {
        outcome.reset();
        hasBegun = false;
        recorder.start(wanted, {.begun = [this] { hasBegun = true; },
                                .over = [this](RecordingOutcome const& over) { outcome = over; }});
    }
    void runUntilBegun() {
        queue.runUntil([&] { return hasBegun || outcome; });
        ASSERT_TRUE(hasBegun && !outcome);
    }
    RecordingOutcome end() {
        queue.runUntil([&] { return outcome.has_value(); });
        EXPECT_TRUE(recorder.isIdle());
        return *outcome;
    }
    double untilTakeIs(double seconds) {
        queue.runUntil([&] { return recorder.state().take.seconds >= seconds; });
        return recorder.state().take.seconds;
    }
    template<class Order> std::string refusalOf(Order order) {
        try {
            order();
            return "";
        } catch (RecordingError const& error) {
            auto const* const kind = error.kind == RecordingError::Kind::busy ? "busy: " : "not recording: ";
            return kind + std::string(error.what());
        }
    }
    std::vector<std::string> refusals() {
        return {refusalOf([&] { recorder.pause(); }), refusalOf([&] { recorder.resume(); }),
                refusalOf([&] { recorder.stop(); }), refusalOf([&] { recorder.cancel(); })};
    }

    TemporaryFolder const folder;
    MainQueue queue;
    RecordingController recorder{queue};
    bool hasBegun = false;
    std::optional<RecordingOutcome> outcome;
};

}

TEST_F(RecordingControllerTest, aTakeGoesThroughItsPhasesToASavedProject) {
    std::vector<std::string> phases;
    auto const observation = recorder.observe([&](RecorderState const& state) {
        auto name = std::string(nameOf(state.phase));
        if (state.countdown > 0) name += " " + std::to_string(state.countdown);
        if (phases.empty() || phases.back() != name) phases.push_back(name);
    });
    auto wanted = request();
    wanted.countdown = 1;
    start(wanted);
    EXPECT_FALSE(recorder.isTaking());
    constexpr auto wait = "busy: The countdown is still running; wait for it, then ";
    EXPECT_EQ(refusalOf([&] { recorder.stop(); }), wait + std::string("stop."));
    EXPECT_EQ(refusalOf([&] { recorder.pause(); }), wait + std::string("pause."));
    runUntilBegun();
    EXPECT_EQ(refusalOf([&] { recorder.start(request()); }), "busy: A recording is already in progress.");
    EXPECT_EQ(refusalOf([&] { recorder.resume(); }), "not recording: The recording isn't paused.");
    double const at = untilTakeIs(0.3);
    recorder.pause();
    recorder.pause();
    EXPECT_TRUE(recorder.isTaking());
    queue.runUntil([&] { return recorder.state().take.isPaused; });
    recorder.resume();
    untilTakeIs(at + 0.2);
    int others = 0;
    recorder.whenOver([&](RecordingOutcome const& over) { others += over.kind == Kind::saved; });
    recorder.stop();
    recorder.stop(); // by somebody else at once
    EXPECT_EQ(refusalOf([&] { recorder.cancel(); }), "not recording: Nothing is recording.");
    auto const over = end();
    ASSERT_EQ(over.kind, Kind::saved) << over.sentence();
    EXPECT_EQ(others, 1);
    auto const project = ProjectPackage(folder / "take.recproj").load();
    EXPECT_EQ(project.id, over.made->id);
    EXPECT_NEAR(project.duration(), recorder.state().take.seconds, 0.2);
    EXPECT_THAT(phases, ElementsAre("countdown 1", "recording", "paused", "recording", "finishing", "idle"));
}

TEST_F(RecordingControllerTest, withoutARecordingThereIsNothingToOrder) {
    auto const nothing = "not recording: Nothing is recording.";
    EXPECT_THAT(refusals(), ElementsAre(nothing, nothing, nothing, nothing));
    EXPECT_EQ(refusalOf([&] { recorder.whenOver({}); }), nothing);
}

TEST_F(RecordingControllerTest, aTakeOfSomeSecondsEndsByItself) {
    auto wanted = request();
    wanted.seconds = 0.4;
    start(wanted);
    auto const over = end();
    ASSERT_EQ(over.kind, Kind::saved) << over.sentence();
    EXPECT_NEAR(over.made->made.duration, 0.4, 0.2);
}

TEST_F(RecordingControllerTest, whatIsCancelledLeavesNothing) {
    for (bool const inCountdown : {true, false}) {
        auto wanted = request();
        wanted.countdown = inCountdown ? 10 : 0;
        start(wanted);
        if (!inCountdown) runUntilBegun();
        recorder.cancel();
        auto const over = end();
        EXPECT_EQ(over.kind, Kind::discarded);
        EXPECT_EQ(over.sentence(), inCountdown ? "Recording didn't start." : "The recording was discarded.");
        EXPECT_EQ(over.hasBegun, !inCountdown);
        EXPECT_FALSE(fs::exists(folder / "take.recproj"));
        EXPECT_TRUE(unfinishedRecordings().empty());
        EXPECT_TRUE(!fs::exists(folder / "Tavaro/Recordings") || fs::is_empty(folder / "Tavaro/Recordings"));
    }
}

TEST_F(RecordingControllerTest, whatCannotBeRecordedFailsBeforeTheCountdownAndTheNextOneMayBegin) {
    auto wanted = request();
    wanted.countdown = 10;
    wanted.recorder.source = DisplaySource{"display-9"};
    start(wanted);
    auto over = end(); // would take ten seconds and more
    EXPECT_EQ(over.kind, Kind::notBegun);
    EXPECT_THAT(over.sentence(), StartsWith("Recording didn't start. There is no display “display-9”"));

    wanted = request();
    wanted.seconds = 0.2;
    outcome.reset();
    recorder.start(request(), {.over = [&](RecordingOutcome const&) { start(wanted); }});
    queue.runUntil([&] { return recorder.isTaking(); });
    recorder.cancel();
    queue.runUntil([&] { return outcome.has_value(); }); // the one that was started when the first was over
    EXPECT_EQ(outcome->kind, Kind::saved) << outcome->sentence();
}

TEST_F(RecordingControllerTest, aTakeWhosePlaceIsTakenMeanwhileIsKept) {
    start(request());
    runUntilBegun();
    fs::create_directories(folder / "take.recproj");
    recorder.stop();
    auto const over = end();
    EXPECT_EQ(over.kind, Kind::notSaved);
    EXPECT_THAT(over.sentence(), StartsWith("Couldn't save to the library. "));
    EXPECT_EQ(unfinishedRecordings().size(), 1u);
}

TEST_F(RecordingControllerTest, aControllerThatGoesAwayLeavesATakeThatCanBeRecovered) {
    {
        MainQueue other;
        RecordingController going(other);
        going.start(request());
        other.runUntil([&] { return going.state().take.seconds > 1.2; }); // some of it is on the disk by then
    }
    EXPECT_EQ(unfinishedRecordings().size(), 1u);
}

TEST_F(RecordingControllerTest, nothingIsOpenedBeforeWhoeverUsesADeviceHasLetGoOfIt) {
    std::function<void()> next;
    recorder.onStarting([&](std::function<void()> goOn) { next = std::move(goOn); });
    auto wanted = request();
    wanted.seconds = 0.2;
    wanted.startedBy = "tester";
    start(wanted);
    for (bool const isCancelled : {true, false}) {
        EXPECT_EQ(recorder.state().phase, Phase::countdown);
        EXPECT_EQ(recorder.state().startedBy, "tester");
        queue.runPending();
        EXPECT_TRUE(!fs::exists(folder / "Tavaro/Recordings") || fs::is_empty(folder / "Tavaro/Recordings"));
        if (isCancelled) recorder.cancel();
        next();
        next(); // once is enough
        EXPECT_EQ(end().kind, isCancelled ? Kind::discarded : Kind::saved);
        if (isCancelled) start(wanted);
    }
    next(); // of a recording that is over
    EXPECT_TRUE(recorder.isIdle());
}
