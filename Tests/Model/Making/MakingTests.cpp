#include "../../Render/Export/TestTake.h"

#include <Tavaro/Model/Making/ImportedMovie.h>
#include <Tavaro/Model/Making/Polish.h>
#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Model/Project/PackagePath.h>
#include <Tavaro/Model/Thumbnails/Thumbnail.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Library/ProjectLibrary.h>
#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroPlatform/Folders/Folders.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>

using namespace tavaro;
namespace fs = std::filesystem;

TEST(ImportJob, makesAProjectWithAThumbnailThatTheLibraryShows) {
    TestTake const take("model-import", 30);
    MainQueue queue;
    auto job = importJob(queue, {.movie = take.package.assetURL("screen.mp4"), .package = take.folder / "new.recproj"});
    job.start();
    auto const& made = job.wait();
    EXPECT_EQ(made.path, take.folder / "new.recproj");
    EXPECT_NEAR(made.duration, 1, 1e-6);
    auto const items = ProjectLibrary().list({made.path});
    ASSERT_TRUE(items.size() == 1 && items[0].thumbnail);
    auto const picture = readPNG(*items[0].thumbnail);
    EXPECT_EQ(std::max(picture.width(), picture.height()), 480);
}

TEST(ImportJob, thatFailsOrIsCancelledLeavesNoPackage) {
    TestTake const take("model-import-failed", 30);
    std::ofstream(take.folder / "text.mp4") << "no movie";
    for (auto const& movie : {take.folder / "text.mp4", take.package.assetURL("screen.mp4")}) {
        MainQueue queue;
        auto job = importJob(queue, {.movie = movie, .package = take.folder / "new.recproj"});
        bool const isCancelled = movie.filename() == "screen.mp4";
        if (isCancelled) job.cancel();
        job.start();
        EXPECT_THROW(job.wait(), Error);
        EXPECT_FALSE(fs::exists(take.folder / "new.recproj"));
    }
}

TEST(ImportJob, ofALargeMovieTellsHowFarItIsAndEndsInTheMiddleOfTheCopy) {
    TestTake const take("model-import-large", 30);
    auto const movie = take.folder / "large.mp4";
    fs::copy_file(take.package.assetURL("screen.mp4"), movie);
    auto const bytes = std::uintmax_t{2} << 30; // sparse
    fs::resize_file(movie, bytes);
    MainQueue queue;
    auto job = importJob(queue, {.movie = movie, .package = take.folder / "new.recproj"});
    std::uint64_t told = 0;
    job.onProgress([&](ImportProgress const& progress) {
        told = progress.bytesDone;
        EXPECT_EQ(progress.bytesTotal, bytes);
        job.cancel();
    });
    job.start();
    EXPECT_THROW(job.wait(), JobCancelled);
    EXPECT_GT(told, 0u);
    EXPECT_EQ(std::distance(fs::directory_iterator(take.folder), {}), 2) << "the take and the movie";
}

TEST(Thumbnail, showsTheFirstZoomOnceItHasArrivedAndAThirdOfTheWayInWithoutOne) {
    DemoProject project;
    project.timeline.clips = {{.asset = "a", .duration = 30}};
    EXPECT_EQ(tellingMoment(project), 10);
    project.zoomEvents = {{.start = 20, .duration = 4, .rampIn = 0.5}, {.start = 6, .duration = 4, .rampIn = 0.5}};
    EXPECT_EQ(tellingMoment(project), 6.5);
    project.intro = TitleCard{.duration = 2};
    EXPECT_EQ(tellingMoment(project), 8.5);
}

TEST(Thumbnail, thatCannotBeDrawnFailsNothing) {
    TestTake const take("model-thumbnail", 30);
    fs::remove(take.package.assetURL("screen.mp4"));
    EXPECT_FALSE(writeThumbnail(take.package, take.project));
    EXPECT_FALSE(fs::exists(take.package.thumbnailURL()));
}

TEST(PolishJob, givesAStepThatUndoTakesBackToTheLastByte) {
    TestTake const take("model-polish", 30);
    take.package.save(take.project);
    OpenProject open(take.package.url());
    auto const before = encodeProject(open.document());
    MainQueue queue;
    auto job = polishJob(queue, open.document(), {.mode = DemoMode::mobileApp});
    job.start();
    auto const& result = job.wait();
    EXPECT_TRUE(open.commit(polishStep, [&](DemoProject& project) { project = result.project; }).isChanged);
    EXPECT_EQ(take.package.load().mode, DemoMode::mobileApp);
    EXPECT_EQ(open.undoName(), polishStep);
    open.undo();
    EXPECT_EQ(encodeProject(open.document()), before);
}

TEST(UnsavedProjects, getAFolderAndFreeNames) {
    TestTake const take("model-unsaved", 30);
    setenv("XDG_DATA_HOME", take.folder.c_str(), 1);
    auto const first = unsavedPackagePath("Recording");
    EXPECT_EQ(first, folders::unsavedProjects() / "Recording.recproj");
    fs::create_directory(first);
    EXPECT_EQ(unsavedPackagePath("Recording").filename(), "Recording 2.recproj");
    unsetenv("XDG_DATA_HOME");
}
