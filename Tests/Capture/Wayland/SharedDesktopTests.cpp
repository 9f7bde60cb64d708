#include <TavaroCapture/Wayland/Private/SharedDesktop.h>

#include "../TemporaryFolder.h"
#include "../TestDisplay.h"
#include "../TestPortal.h"

#include <TavaroCapture/Devices/ListSources.h>
#include <TavaroCapture/Recorder/ScreenRecorder.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cmath>
#include <gmock/gmock.h>

namespace tavaro::wayland {

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;

class SharedDesktopTest : public testing::Test {
protected:
    void SetUp() override {
        if (!TestPortal::isInstalled()) GTEST_SKIP() << "pipewire, wireplumber or xdg-desktop-portal is not installed";
        portal.emplace();
    }

    static int greyAt(SharedDesktop const& desktop, int x, int y) { return desktop.screen->picture().row(y)[4 * x]; }
    static bool shows(SharedDesktop const& desktop, int grey) {
        return eventually([&] {
            desktop.screen->grab(mediaClockNow());
            return greyAt(desktop, 9, 9) == grey;
        });
    }
    std::string failureOf(CaptureSource const& source, CaptureError::Kind kind) {
        questionsBegun = 0;
        try {
            shareDesktop(source, 60, {.begins = [this] { ++questionsBegun; }});
        } catch (CaptureError const& error) {
            EXPECT_EQ(error.kind, kind) << error.what();
            return error.what();
        }
        ADD_FAILURE() << "shared";
        return {};
    }

    std::optional<TestPortal> portal;
    int questionsBegun = 0; // by the last `failureOf`
};

TEST_F(SharedDesktopTest, pictureAndPointerFollowTheSharedScreen) {
    auto const desktop = shareDesktop(DisplaySource{}, 60);
    EXPECT_EQ(desktop.screen->size(), (Size2{320, 200}));
    EXPECT_TRUE(shows(desktop, 40)); // the first picture is there when it is opened
    EXPECT_EQ(desktop.screen->grab(mediaClockNow()), ScreenSource::Outcome::unchanged);
    EXPECT_EQ(greyAt(desktop, 0, 0), 255);
    EXPECT_EQ(greyAt(desktop, 319, 199), 255);
    EXPECT_DOUBLE_EQ(desktop.screen->scaleFactor(), 2); // 320 pixels of 160 units
    EXPECT_EQ(desktop.events->pointer(), std::nullopt);
    EXPECT_FALSE(desktop.events->hasKeyboard());

    portal->screen().movePointer({30, 40});
    EXPECT_TRUE(eventually([&] { return desktop.events->pointer() == PixelPoint{30, 40}; }));
    portal->screen().hidePointer();
    EXPECT_TRUE(eventually([&] { return !desktop.events->pointer(); })) << "a click elsewhere has no place here";
    portal->screen().show(90);
    EXPECT_TRUE(shows(desktop, 90));
    EXPECT_THAT(portal->questions(),
                ElementsAre(R"({"types": 1, "cursor_mode": 4, "persist_mode": 2, "restored": null})"));
}

TEST_F(SharedDesktopTest, anAnswerCountsForItsSourceUntilTheUserIsAskedAnew) {
    auto const restored = [&] {
        std::vector<bool> result;
        for (auto const& question : portal->questions())
            result.push_back(question.find(R"("restored": "chosen")") != std::string::npos);
        return result;
    };
    shareDesktop(DisplaySource{}, 60);
    shareDesktop(AreaSource{.rect = {0, 0, 100, 100}}, 60); // of the same display
    shareDesktop(DisplaySource{"display-2"}, 60);
    EXPECT_THAT(restored(), ElementsAre(false, true, false));
    portal->answer({.kind = 2});
    shareDesktop(WindowSource{1}, 60);
    shareDesktop(WindowSource{1}, 60);
    EXPECT_THAT(restored(), ElementsAre(false, true, false, false, true));
    portal->answer({.answer = 1});
    failureOf(WindowSource{1}, CaptureError::Kind::refused);
    portal->answer({.kind = 2});
    shareDesktop(WindowSource{1}, 60); // an answer that was taken back is none
    EXPECT_THAT(restored(), ElementsAre(false, true, false, false, true, true, false));
}

TEST_F(SharedDesktopTest, whatCannotBeSharedIsRefusedWithASentence) {
    portal->answer({.answer = 1});
    EXPECT_THAT(failureOf(DisplaySource{}, CaptureError::Kind::refused), HasSubstr("the answer was no"));
    EXPECT_EQ(questionsBegun, 1);
    portal->answer({.answer = 2});
    EXPECT_THAT(failureOf(DisplaySource{}, CaptureError::Kind::unsupported), HasSubstr("could not ask"));
    portal->answer({.kind = 2});
    EXPECT_THAT(failureOf(DisplaySource{}, CaptureError::Kind::badSource), HasSubstr("but a window was shared"));
    EXPECT_THAT(failureOf(ApplicationSource{"gedit"}, CaptureError::Kind::unsupported), HasSubstr("“gedit”"));
    EXPECT_EQ(questionsBegun, 0);
    EXPECT_THAT(failureOf(DisplaySource{"eDP-1"}, CaptureError::Kind::noSuchSource), HasSubstr("“eDP-1”"));
    EXPECT_EQ(questionsBegun, 0);
    portal->answer({});
    EXPECT_THAT(failureOf(AreaSource{.rect = {320, 0, 50, 50}}, CaptureError::Kind::badSource),
                HasSubstr("outside the shared screen of 320 × 200"));
}

TEST_F(SharedDesktopTest, whoGivesUpWaitingForTheAnswerGoesOnAtOnce) {
    portal->answer({.answer = 3});
    double const asked = mediaClockNow();
    ScreenRecorder recorder({.source = WindowSource{1}});
    EXPECT_THROW(recorder.prepare({.isGivenUp = [&] { return mediaClockNow() - asked > 0.3; }}), CaptureError);
    EXPECT_LT(mediaClockNow() - asked, 1);
    EXPECT_TRUE(recorder.asksUser());
}

TEST_F(SharedDesktopTest, aScreenThatSendsNoPictureIsReportedAndOneThatGotLostIsAskedForAgain) {
    portal->showScreen(320, 200, 1);
    EXPECT_NO_THROW(shareDesktop(DisplaySource{}, 60));
    portal->showScreen(320, 200, 1000);
    double const asked = mediaClockNow();
    auto const sentence = failureOf(DisplaySource{}, CaptureError::Kind::unsupported);
    EXPECT_LT(mediaClockNow() - asked, 3);
    EXPECT_THAT(sentence, testing::ContainsRegex("portal version 4.*its stream is .*320 × 200 pixels"));
}

TEST_F(SharedDesktopTest, anAreaIsAPartOfThePictureAlsoWhenTheScreenChangesItsSize) {
    auto const desktop = shareDesktop(AreaSource{.rect = {300, 180, 101, 20}, .shape = AreaShape::free}, 60);
    EXPECT_EQ(desktop.screen->frame(), (PixelRect{300, 180, 20, 20}));
    EXPECT_TRUE(shows(desktop, 40));
    EXPECT_EQ(greyAt(desktop, 19, 19), 255); // the screen's lower right corner
    portal->screen().resize(310, 400);
    portal->screen().show(70);
    EXPECT_TRUE(shows(desktop, 70));
    EXPECT_EQ(greyAt(desktop, 9, 19), 70);
    EXPECT_EQ(greyAt(desktop, 10, 5), 0); // beyond it
}

TEST_F(SharedDesktopTest, aWindowInAPictureOfTheScreenIsAllThatIsRecorded) {
    portal->screen().crop({100, 150, 220, 600});
    portal->answer({.kind = 2});
    auto const desktop = shareDesktop(WindowSource{1}, 60);
    EXPECT_EQ(desktop.screen->size(), (Size2{220, 50}));
    EXPECT_TRUE(shows(desktop, 40));
    EXPECT_EQ(greyAt(desktop, 0, 0), 40);
    EXPECT_EQ(greyAt(desktop, 219, 49), 255); // the picture's lower right corner
    portal->screen().crop({0, 0, 5, 9});      // it is made smaller, and is elsewhere
    portal->screen().show(70);
    EXPECT_TRUE(eventually([&] {
        desktop.screen->grab(mediaClockNow());
        return greyAt(desktop, 4, 8) == 70;
    }));
    EXPECT_EQ(greyAt(desktop, 0, 0), 255);
    EXPECT_EQ(greyAt(desktop, 5, 8), 0);
    EXPECT_EQ(greyAt(desktop, 4, 9), 0);
}

TEST_F(SharedDesktopTest, whatEndsIsLostWithinTwoSecondsAndAStillScreenIsNot) {
    auto const isLost = [](SharedDesktop const& desktop) {
        return [&] { return desktop.screen->grab(mediaClockNow()) == ScreenSource::Outcome::lost; };
    };
    auto const killed = shareDesktop(DisplaySource{}, 60);
    double const still = mediaClockNow();
    while (mediaClockNow() - still < 1.3) ASSERT_FALSE(isLost(killed)());
    portal->killScreen();
    double const gone = mediaClockNow();
    EXPECT_TRUE(eventually(isLost(killed)));
    EXPECT_LT(mediaClockNow() - gone, 2);

    portal->showScreen();
    auto const served = shareDesktop(DisplaySource{}, 60);
    portal->session().killServer();
    EXPECT_TRUE(eventually(isLost(served)));
}

TEST_F(SharedDesktopTest, whatIsListedIsWhatTheDesktopCanShare) {
    auto const all = listSources();
    ASSERT_EQ(all.displays.size(), 1u);
    ASSERT_EQ(all.windows.size(), 1u);
    EXPECT_EQ(all.displays[0].id, "display-1");
    EXPECT_EQ(all.windows[0].id(), "window-1");
    EXPECT_THAT(all.limits, ElementsAre(HasSubstr("clicks and keys"), HasSubstr("in front"),
                                        HasSubstr("No sound can be recorded")));

    portal.reset();
    portal.emplace(TestPortal::Answers{.kind = 2, .kinds = 1, .pointers = 3}); // calls its screens windows
    auto const fewer = listSources();
    EXPECT_THAT(fewer.windows, testing::IsEmpty());
    EXPECT_THAT(fewer.limits,
                ElementsAre(HasSubstr("clicks and keys"), HasSubstr("in front"), HasSubstr("part of the picture"),
                            HasSubstr("no single windows"), HasSubstr("No sound can be recorded")));
    EXPECT_THAT(failureOf(WindowSource{1}, CaptureError::Kind::unsupported), HasSubstr("single windows"));
    EXPECT_EQ(questionsBegun, 0);
    shareDesktop(DisplaySource{}, 60);
    EXPECT_THAT(portal->questions().back(), HasSubstr(R"("cursor_mode": 2)"));
}

/// When the picture of a movie first is as bright as that.
double brightFrom(std::filesystem::path const& movie, int grey) {
    MovieReader reader(movie);
    FrameConverter converter;
    Image image;
    for (double at = 0; at < reader.info().duration; at += 1.0 / 120) {
        converter.convert(reader.frame(at), image);
        if (image.row(50)[4 * 50] > grey) return at;
    }
    return -1;
}

TEST_F(SharedDesktopTest, aTakeHasThePicturesOfAStillScreenAndThePointersPath) {
    TemporaryFolder const folder;
    ScreenRecorder recorder({.recordingsFolder = folder.path()});
    EXPECT_TRUE(recorder.asksUser());
    recorder.prepare();
    EXPECT_FALSE(recorder.asksUser());
    EXPECT_THAT(recorder.limits(), ElementsAre(HasSubstr("clicks and keys"), HasSubstr("in front")));
    recorder.start();
    double const begun = mediaClockNow();
    auto const waitUntil = [&](double seconds) {
        double const left = begun + seconds - mediaClockNow();
        recorder.waitForEnd(std::chrono::milliseconds(std::lround(1000 * left)));
    };
    portal->screen().movePointer({0, 0});
    waitUntil(0.5);
    portal->screen().movePointer({319, 199});
    waitUntil(1);
    double const flash = portal->screen().show(200) - begun;
    waitUntil(1.5);
    auto const take = recorder.stop();

    EXPECT_NEAR(take.duration, 1.5, 0.2);
    EXPECT_NEAR(static_cast<double>(take.metadata.health.framesWritten), take.duration * 60, 3);
    EXPECT_NEAR(brightFrom(take.movie, 120), flash, 0.05);
    EXPECT_EQ(take.metadata.health.keyboardCaptured, false);
    auto const& path = take.metadata.cursorSamples;
    ASSERT_GT(path.size(), 60u);
    EXPECT_NEAR(path.front().position.x, 0, 1e-9);
    EXPECT_NEAR(path.back().position.x, 319.0 / 320, 1e-9);
    auto const moved = std::ranges::find_if(path, [](CursorSample const& sample) { return sample.position.x > 0; });
    EXPECT_NEAR(moved->t, 0.5, 0.06);
    EXPECT_EQ(portal->questions().size(), 1u);

    ScreenRecorder second({.recordingsFolder = folder.path()});
    second.start();
    EXPECT_FALSE(second.waitForEnd(600ms));
    portal->killScreen();
    EXPECT_TRUE(eventually([&] { return second.waitForEnd(100ms); }));
    auto const lost = second.stop();
    EXPECT_TRUE(lost.metadata.health.captureLost);
    EXPECT_GT(lost.duration, 0.5);
}

}

}
