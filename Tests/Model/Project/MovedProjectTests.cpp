#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Model/Project/MovedProject.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Files/FileError.h>

#include <gtest/gtest.h>

using namespace tavaro;
namespace fs = std::filesystem;

namespace {

fs::path makeProject(fs::path const& path) {
    ProjectPackage const package(path);
    package.createDirectories();
    DemoProject project;
    project.name = "Recording";
    project.assetDurations["screen.mov"] = 3;
    package.save(project);
    writeFileAtomically(package.assetURL("screen.mov"), "movie");
    return path;
}

void expectMoved(fs::path const& from, fs::path const& to) {
    EXPECT_FALSE(fs::exists(from));
    auto const moved = openProject(to);
    EXPECT_EQ(moved.project.name, to.stem().string());
    EXPECT_EQ(moved.project.assetDurations.at("screen.mov"), 3);
    EXPECT_EQ(readWholeFile(moved.package.assetURL("screen.mov")), "movie");
}

}

TEST(MovedProject, isWholeAndNamedForItsNewPlaceAlsoOnAnotherDisk) {
    TemporaryFolder const here, elsewhere(TemporaryFolder::fastest());
    auto const from = makeProject(here / "one.recproj");
    moveProject(from, here / "new folder/two.recproj");
    expectMoved(from, here / "new folder/two.recproj");
    moveProject(here / "new folder/two.recproj", elsewhere / "three.recproj"); // another disk on most machines
    expectMoved(here / "new folder/two.recproj", elsewhere / "three.recproj");
    EXPECT_EQ(std::distance(fs::directory_iterator(elsewhere.path()), fs::directory_iterator()), 1)
        << "nothing is left";
}

TEST(MovedProject, nothingIsReplaced) {
    TemporaryFolder const here, elsewhere(TemporaryFolder::fastest());
    auto const from = makeProject(here / "one.recproj");
    for (auto const* const folder : {&here, &elsewhere}) {
        auto const taken = *folder / "taken.recproj";
        fs::create_directory_symlink("nowhere", taken);
        EXPECT_THROW(moveProject(from, taken), FileError);
        EXPECT_TRUE(fs::is_symlink(taken));
        EXPECT_EQ(openProject(from).project.name, "Recording");
    }
}
