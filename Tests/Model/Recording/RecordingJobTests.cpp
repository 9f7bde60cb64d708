#include "../../Capture/TestDisplay.h"
#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Model/Recording/RecordingJob.h>
#include <Tavaro/Model/Recording/UnfinishedRecording.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <cstdlib>

using namespace tavaro;
namespace fs = std::filesystem;

namespace {

/// A user's folders and a screen of their own.
class RecordingJobTest : public DisplayTest {
protected:
    RecordingJobTest() { setenv("XDG_DATA_HOME", folder.path().c_str(), 1); }
    ~RecordingJobTest() override { unsetenv("XDG_DATA_HOME"); }

    RecordingRequest request(fs::path const& package) const {
        return {.recorder = {.source = DisplaySource{}, .display = display->name(), .fps = 10},
                .project = {.package = package}};
    }
    /// Runs the take until it has so many frames.
    void recordFrames(RecordingJob& job, std::int64_t frames) {
        std::int64_t written = 0;
        job.onProgress([&](RecordingProgress const& progress) { written = progress.take.framesWritten; });
        job.start();
        queue.runUntil([&] { return written >= frames || job.isFinished(); });
        job.onProgress({});
    }
    std::string failureOf(RecordingJob& job) {
        try {
            job.wait();
            return "";
        } catch (JobCancelled const& error) {
            return error.what();
        }
    }

    TemporaryFolder const folder;
    MainQueue queue;
};

}

TEST_F(RecordingJobTest, aTakeThatIsKeptBecomesAPolishedProjectWhereUnsavedOnesGo) {
    RecordingJob job(queue, request({}));
    recordFrames(job, 3);
    job.setPaused(true);
    job.setPaused(false);
    job.end(TakeEnd::keep);
    job.end(TakeEnd::discard); // too late
    auto const& taken = job.wait();
    auto const& made = taken.made;
    ProjectPackage const package(made.path);
    EXPECT_EQ(package.url().parent_path(), folders::unsavedProjects());
    EXPECT_GT(package.load().duration(), 0);
    EXPECT_EQ(package.load().id, taken.id);
    EXPECT_TRUE(made.report && !taken.health.empty() && fs::exists(package.thumbnailURL()));
    EXPECT_TRUE(unfinishedRecordings().empty());
}

TEST_F(RecordingJobTest, aTakeThatIsDiscardedLeavesNothing) {
    RecordingJob job(queue, request(folder / "take.recproj"));
    recordFrames(job, 2);
    job.end(TakeEnd::discard);
    EXPECT_EQ(failureOf(job), "The recording was discarded.");
    EXPECT_FALSE(fs::exists(folder / "take.recproj"));
    EXPECT_TRUE(unfinishedRecordings().empty());
}

TEST_F(RecordingJobTest, aTakeWhoseJobGoesAwayCanBeRecovered) {
    {
        RecordingJob job(queue, request(folder / "take.recproj"));
        recordFrames(job, 8);
    }
    ASSERT_EQ(unfinishedRecordings().size(), 1u);
    auto job = recoveryJob(queue, unfinishedRecording("last"), {.package = folder / "back.recproj"});
    job.start();
    EXPECT_GT(job.wait().made.duration, 0.3);
    EXPECT_TRUE(fs::exists(folder / "back.recproj/project.json"));
    EXPECT_TRUE(unfinishedRecordings().empty());
    EXPECT_THROW(unfinishedRecording("last"), Error);
}
