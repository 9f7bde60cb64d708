#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Model/Project/DuplicatedProject.h>
#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Files/FileError.h>

#include <gtest/gtest.h>

using namespace tavaro;
namespace fs = std::filesystem;

namespace {

class DuplicatedProject : public testing::Test {
protected:
    DuplicatedProject() {
        package.createDirectories();
        project.id = UUID::random();
        project.assetDurations["screen.mov"] = 3;
        package.save(project);
        project.name = "Welcome: 1/2";
        package.save(project); // there is a previous save by now
        writeFileAtomically(package.assetURL("screen.mov"), std::string(3 << 20, 'm'));
        fs::create_symlink("screen.mov", package.assetURL("again.mov"));
    }
    std::size_t entries() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder.path()), fs::directory_iterator()));
    }

    TemporaryFolder const folder{TemporaryFolder::fastest()};
    ProjectPackage const package{folder / "onboarding.recproj"};
    DemoProject project;
    MainQueue queue;
};

}

TEST_F(DuplicatedProject, isTheSameFilmAsAProjectOfItsOwn) {
    std::vector<fs::path> made;
    std::uint64_t done = 0;
    for (int i = 0; i < 2; ++i) {
        auto job = duplicationJob(queue, package.url());
        job.onProgress([&](CopyProgress const& progress) { done = progress.bytesDone; });
        job.start();
        made.push_back(job.wait());
    }
    EXPECT_EQ(made, (std::vector{folder / "Welcome- 1-2 copy.recproj", folder / "Welcome- 1-2 copy 2.recproj"}))
        << "as people know it, not as its file was called once";
    EXPECT_EQ(openProject(made.front()).project.name, "Welcome: 1/2 copy");
    EXPECT_EQ(openProject(made.back()).project.name, "Welcome- 1-2 copy 2");
    EXPECT_GE(done, std::uint64_t{3} << 20);
    for (auto const& path : made) {
        auto copy = openProject(path);
        EXPECT_NE(copy.project.id, project.id);
        copy.project.id = project.id;
        copy.project.name = project.name;
        auto original = openProject(package.url()).project;
        copy.project.modifiedAt = original.modifiedAt;
        EXPECT_EQ(copy.project, original);
        EXPECT_EQ(readWholeFile(copy.package.assetURL("again.mov")), readWholeFile(package.assetURL("screen.mov")));
        EXPECT_FALSE(fs::exists(copy.package.backupFileURL()));
    }
}

TEST_F(DuplicatedProject, nothingStaysOfACopyThatFailsOrIsCancelled) {
    auto cancelled = duplicationJob(queue, package.url());
    cancelled.cancel();
    cancelled.start();
    EXPECT_THROW(cancelled.wait(), Error);
    writeFileAtomically(package.projectFileURL(), "{");
    auto damaged = duplicationJob(queue, package.url());
    damaged.start();
    EXPECT_THROW(damaged.wait(), FileError);
    EXPECT_EQ(entries(), 1U);
}
