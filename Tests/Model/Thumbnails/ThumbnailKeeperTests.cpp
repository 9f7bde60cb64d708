#include "../../Render/Export/TestTake.h"

#include <Tavaro/Model/Thumbnails/Thumbnail.h>
#include <Tavaro/Model/Thumbnails/ThumbnailKeeper.h>

#include <TavaroCore/Files/AtomicFile.h>

#include <gtest/gtest.h>

#include <array>

using namespace tavaro;
namespace fs = std::filesystem;

namespace {

constexpr double never = 1e6; // seconds

/// A project that is open, without a thumbnail.
struct Opened {
    explicit Opened(std::string const& name) : take(name, 30) {
        take.package.save(take.project);
        project = std::make_shared<OpenProject>(take.package.url());
    }
    void paint(double red) const {
        project->commit("Paint", [&](DemoProject& edited) {
            edited.background.content = BackgroundStyle::Solid{{red, 0.5, 0.5}};
        });
    }
    bool isDrawn() const { return fs::exists(take.package.thumbnailURL()); }
    std::string thumbnail() const { return readWholeFile(take.package.thumbnailURL()).value_or("none"); }
    std::string expected() const {
        writeThumbnail(take.package, project->document());
        return thumbnail();
    }

    TestTake take;
    std::shared_ptr<OpenProject> project;
};

}

TEST(ThumbnailKeeper, drawsThePictureOnceNothingChangesAnyMore) {
    MainQueue queue;
    Opened const opened("thumbnails");
    ThumbnailKeeper keeper(queue, 0.3);
    keeper.watch(opened.project);
    for (int i = 0; i < 50; ++i) {
        opened.paint(i / 50.0);
        queue.runPending();
        ASSERT_FALSE(opened.isDrawn()) << "after edit " << i;
    }
    queue.runUntil([&] { return opened.isDrawn(); });
    auto const drawn = opened.thumbnail();
    EXPECT_EQ(drawn, opened.expected());
}

TEST(ThumbnailKeeper, drawsWhatIsSavedAndSeenAndNothingElse) {
    MainQueue queue;
    Opened const seen("seen"), renamed("renamed"), unsaved("unsaved");
    Opened replaced("replaced");
    ThumbnailKeeper keeper(queue, never);
    std::array<Opened const*, 4> const all{&seen, &renamed, &unsaved, &replaced};
    for (auto const* const each : all) keeper.watch(each->project);
    seen.paint(1);
    renamed.project->commit("Rename", [](DemoProject& edited) { edited.name = "another"; });
    unsaved.project->edit("Crop", [](DemoProject& edited) { edited.sourceCrop = NormalizedRect{0, 0, 0.5, 0.5}; });
    replaced.take.project.canvas = {640, 360};
    replaced.take.package.save(replaced.take.project); // another program looks after its picture, too
    replaced.project->refresh();
    auto const drawAll = [&] {
        keeper.hurry();
        queue.runUntil([&] { return !keeper.isDrawing(); });
    };
    drawAll();
    EXPECT_TRUE(seen.isDrawn());
    for (auto const* const each : all) EXPECT_EQ(each->isDrawn(), each == &seen);
    unsaved.project->save();
    drawAll();
    auto const drawn = unsaved.thumbnail();
    EXPECT_EQ(drawn, unsaved.expected());
}

TEST(ThumbnailKeeper, aProjectThatIsClosedMeanwhileIsDrawnAllTheSame) {
    MainQueue queue;
    Opened opened("closed");
    ThumbnailKeeper keeper(queue, never);
    keeper.watch(opened.project);
    opened.paint(0.3);
    auto const expected = opened.expected();
    fs::remove(opened.take.package.thumbnailURL());
    opened.project.reset();
    keeper.hurry();
    queue.runUntil([&] { return !keeper.isDrawing(); });
    EXPECT_EQ(opened.thumbnail(), expected);
}
