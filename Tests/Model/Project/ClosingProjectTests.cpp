#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Model/Project/ClosingProject.h>

#include <TavaroCore/Project/DemoProject.h>

#include <gtest/gtest.h>

#include <memory>
#include <optional>

using namespace tavaro;

namespace {

class ClosingProjectTest : public testing::Test {
protected:
    ClosingProjectTest() {
        package.createDirectories();
        package.save({});
        open = std::make_shared<OpenProject>(readProject(package.url()));
        closing.emplace(open);
    }
    void rename(char const* name) {
        open->edit("Rename", [&](DemoProject& project) { project.name = name; });
    }

    TemporaryFolder const folder;
    ProjectPackage const package{folder / "Tour.recproj"};
    std::shared_ptr<OpenProject> open;
    std::optional<ClosingProject> closing;
};

}

TEST_F(ClosingProjectTest, whatWasEditedLastIsSaved) {
    rename("Film");
    EXPECT_EQ(closing->loss(), std::nullopt);
    EXPECT_EQ(package.load().name, "Film");
}

TEST_F(ClosingProjectTest, whatCannotBeSavedIsToldOnceForEachEdit) {
    auto const theirs = package.lockForEditing();
    EXPECT_EQ(closing->loss(), std::nullopt) << "there is nothing to lose";
    for (auto const* name : {"Film", "Tour"}) {
        rename(name);
        EXPECT_TRUE(closing->loss().value_or("").ends_with("is lost if you close it once more."));
        EXPECT_EQ(closing->loss(), std::nullopt) << "they know";
    }
}

TEST_F(ClosingProjectTest, whatSomebodyElseSavedInsteadIsToldOf) {
    rename("Film");
    auto theirs = package.load();
    theirs.name = "Tour";
    package.save(theirs);
    EXPECT_EQ(closing->loss(), "Another program saved “Tour” meanwhile. What you did last is one undo away.");
    EXPECT_TRUE(open->undo());
    EXPECT_EQ(open->document().name, "Film");
}
