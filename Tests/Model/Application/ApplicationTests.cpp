#include "../../Capture/TestDisplay.h"
#include "../../Core/Package/TemporaryFolder.h"
#include "../../Render/Export/TestTake.h"
#include "../Answered.h"

#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Privacy/PrivacyPreferences.h>
#include <Tavaro/Model/Recording/UnfinishedRecording.h>

#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Files/FileError.h>

#include <cstdlib>

using namespace tavaro;
namespace fs = std::filesystem;

namespace {

class ApplicationTest : public DisplayTest {
protected:
    ApplicationTest() { setenv("XDG_DATA_HOME", folder.path().c_str(), 1); }
    ~ApplicationTest() override { unsetenv("XDG_DATA_HOME"); }

    RecordingRequest request() const {
        return {.recorder = {.source = DisplaySource{}, .display = display->name(), .fps = 20}};
    }
    OpenProjects::Opened project(UUID const& id) {
        return answered<OpenProjects::Opened>(queue, [&](auto answer) { application.project(id, answer); }).value();
    }
    void end() {
        application.end();
        application.end(); // a second signal changes nothing
        queue.runUntil([&] { return !application.isBusy(); });
    }

    TemporaryFolder const folder;
    MainQueue queue;
    Application application{queue,
                            {.library = {folder / "Movies/Tavaro", folder / "Unsaved"},
                             .index = folder / "cache/library.json",
                             .preferences = folder / "config/preferences.json"}};
};

}

TEST_F(ApplicationTest, aLibraryThatCannotBeEnteredIsToldOfBeforeARecordingBegins) {
    fs::create_symlink("Movies", folder / "Movies");
    EXPECT_THROW(application.record(request(), {}), FileError);
    EXPECT_FALSE(application.isBusy());
}

TEST_F(ApplicationTest, aTakeIsInTheLibraryByItsIdAndCanBeEditedDrawnAndExported) {
    std::optional<RecordingOutcome> over;
    auto wanted = request();
    wanted.seconds = 0.3;
    application.record(wanted, {.over = [&](RecordingOutcome const& outcome) { over = outcome; }});
    queue.runUntil([&] { return over.has_value(); });
    ASSERT_TRUE(over->made) << over->sentence();
    EXPECT_EQ(fs::path(over->made->made.path).parent_path(), folder / "Movies/Tavaro");

    auto const opened = project(over->made->id);
    EXPECT_EQ(project(over->made->id), opened);
    EXPECT_TRUE(commitFor(*opened, "test", "Rename", [](DemoProject& edited) { edited.name = "Tour"; }).isChanged);
    auto const listed = answered<ProjectCatalogue::Listed>(
        queue, [&](auto answer) { application.catalogue().list(20, std::move(answer)); });
    ASSERT_EQ(listed.value().size(), 1u);
    EXPECT_EQ(listed.value()[0].name, "Tour");

    FrameDrawer::Interest interest;
    auto const frame = answered<DrawnFrame>(queue, [&](auto answer) {
        interest = application.frames().draw({opened->package(), opened->document(), 0.1}, answer);
    });
    EXPECT_EQ(frame.value().width, 1280);
    std::optional<ExportOutcome> film;
    application.exporter().start(
        {opened->package(), opened->document(), {.size = Size2{320, 180}, .output = (folder / "film.mp4").string()}},
        {.over = [&](ExportOutcome const& outcome) { film.emplace(outcome); }});
    queue.runUntil([&] { return film.has_value(); });
    EXPECT_TRUE(fs::exists(film->value().path));
    EXPECT_THROW(project(UUID{}), NoSuchProject);
}

TEST_F(ApplicationTest, newTakesAreLookedAtForPrivateTextAlsoOneThatWasRecordedByAProgramThatDied) {
    setenv("XDG_STATE_HOME", folder.path().c_str(), 1);
    ApplicationPlaces const places{.library = {folder / "Movies/Tavaro"},
                                   .index = folder / "cache/library.json",
                                   .preferences = folder / "config/preferences.json"};
    auto const lookedAt = [&](std::string const& path) {
        return ProjectPackage(path).load().redactionScan.has_value();
    };
    auto const look = [](ScanRequest const&, auto const&, std::stop_token const&) {
        return ScanOutcome{.ranges = {{0, 60}}};
    };
    application.newTakes().scanBy(look);
    application.preferences().set(newTakesScanned, true);
    std::optional<RecordingOutcome> over;
    auto wanted = request();
    wanted.seconds = 0.3;
    application.record(wanted, {.over = [&](RecordingOutcome const& outcome) { over = outcome; }});
    queue.runUntil([&] { return over && !application.newTakes().isBusy(); });
    ASSERT_TRUE(over->made) << over->sentence();
    EXPECT_TRUE(lookedAt(over->made->made.path));
    {
        Application dying(queue, places);
        dying.record(request());
        queue.runUntil([&] { return dying.recorder().state().take.seconds > 1.5; });
    }
    application.preferences().set(newTakesScanned, false);
    auto recovery = recoveryJob(queue, unfinishedRecording("last"), application.recovered("Back"));
    recovery.start();
    auto const back = recovery.wait().made.path;
    EXPECT_FALSE(lookedAt(back));
    Application next(queue, places);
    next.newTakes().scanBy(look);
    next.newTakes().takeUp();
    EXPECT_TRUE(eventually([&] {
        queue.runPending();
        return lookedAt(back);
    }));
    unsetenv("XDG_STATE_HOME");
}

TEST_F(ApplicationTest, tellsWhatCanBeRecordedAndWhyNothingCan) {
    auto const sources = [&] {
        return answered<SourceList>(queue, [&](auto answer) { application.sources(std::move(answer)); });
    };
    char const* const set = std::getenv("DISPLAY");
    auto const before = set ? std::optional<std::string>(set) : std::nullopt;
    setenv("DISPLAY", display->name().c_str(), 1);
    EXPECT_EQ(sources().value().displays.front().frame, (PixelRect{0, 0, 640, 480}));
    setenv("DISPLAY", ":4711", 1);
    EXPECT_THROW(sources().value(), CaptureError);
    before ? setenv("DISPLAY", before->c_str(), 1) : unsetenv("DISPLAY");
}

TEST_F(ApplicationTest, endingSavesTheTakeAndEndsTheCountdown) {
    for (bool const inCountdown : {false, true}) {
        std::optional<RecordingOutcome> over;
        auto wanted = request();
        wanted.countdown = inCountdown ? 10 : 0;
        application.record(wanted, {.over = [&](RecordingOutcome const& outcome) { over = outcome; }});
        if (!inCountdown) queue.runUntil([&] { return application.recorder().state().take.framesWritten > 3; });
        EXPECT_TRUE(application.isBusy());
        end();
        ASSERT_TRUE(over);
        EXPECT_EQ(over->kind, inCountdown ? RecordingOutcome::Kind::discarded : RecordingOutcome::Kind::saved);
    }
    EXPECT_TRUE(unfinishedRecordings().empty());
}

TEST_F(ApplicationTest, endingCancelsTheExport) {
    TestTake const take("application-end");
    std::optional<ExportOutcome> film;
    application.exporter().start(
        {take.package, take.project, {.size = Size2{640, 360}, .output = take.output("film.mp4").string()}},
        {.over = [&](ExportOutcome const& outcome) { film.emplace(outcome); }});
    end();
    ASSERT_TRUE(film);
    EXPECT_THROW(film->value(), ExportError);
    EXPECT_EQ(take.filesLeft(), 0);
}
