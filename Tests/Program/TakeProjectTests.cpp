#include <Tavaro/Model/Making/AddStreams.h>

#include "../Capture/FakeSources.h"
#include "ProcessFixture.h"

#include <TavaroCapture/Recorder/ScreenRecorder.h>
#include <TavaroCapture/Recovery/RecoveryStore.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

using namespace tavaro;
using namespace std::chrono_literals;

class TakeProjectTest : public ProcessFixture {};

TEST_F(TakeProjectTest, aRecoveredTakeIsAProjectWithAllItsAssetsInStep) {
    double const now = mediaClockNow();
    FakeScene const scene{now + 0.9};
    {
        ScreenRecorder recorder({.recordingsFolder = path("recordings"), .segmentSeconds = 0.5},
                                {fakeScreen(scene), fakeEvents(), fakeCamera(scene, {.from = now + 0.4}),
                                 fakeMicrophone(scene, {.from = now + 0.6}), fakeMicrophone(scene)});
        recorder.start();
        ASSERT_TRUE(becomesTrue([&] { return recorder.waitForEnd(5ms) || recorder.progress().seconds > 2; }));
    } // never stopped
    auto const takes = RecoveryStore::findRecoverable(path("recordings"));
    ASSERT_EQ(takes.size(), 1u);
    auto const take = RecoveryStore::recover(takes[0]);
    NewProject made{.movie = take.movie, .importMode = ImportMode::move, .metadata = take.metadata};
    addStreams(made, take.streams);
    ProjectPackage const package(path("take.recproj"));
    createProject(package, made);

    auto const project = package.load();
    double const shown = flashInMovie(package.assetURL(project.timeline.clips.at(0).asset));
    ASSERT_GT(shown, 0);
    ASSERT_TRUE(project.cameraAsset);
    EXPECT_NEAR(flashInMovie(package.assetURL(*project.cameraAsset)), shown + project.cameraOffset, 0.055);
    EXPECT_LT(project.cameraOffset, -0.2) << "the camera came later";
    ASSERT_EQ(project.audioTracks.size(), 2u);
    EXPECT_EQ(project.audioTracks[0].role, AudioRole::microphone);
    EXPECT_EQ(project.audioTracks[1].role, AudioRole::system);
    for (auto const& track : project.audioTracks) {
        auto const& clip = track.clips.at(0);
        double const heard = flashInSound(package.assetURL(clip.asset));
        ASSERT_GE(heard, 0) << nameOf(track.role);
        EXPECT_NEAR(clip.start + heard - clip.sourceStart, shown, 0.025) << nameOf(track.role);
        EXPECT_LE(clip.range().end(), project.duration());
    }
}
