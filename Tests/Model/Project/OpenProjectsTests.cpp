#include "../../Core/Package/TemporaryFolder.h"
#include "../Answered.h"

#include <Tavaro/Model/Project/OpenProjects.h>

#include <TavaroCore/Files/FileError.h>

#include <fmt/format.h>
#include <gmock/gmock.h>

using namespace tavaro;
using ::testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

class OpenProjectsTest : public testing::Test {
protected:
    UUID make(std::string const& name) const {
        ProjectPackage const package(folder / (name + ".recproj"));
        package.createDirectories();
        DemoProject project;
        project.id = UUID::random();
        project.name = name;
        package.save(project);
        return project.id;
    }
    OpenProjects::Opened open(fs::path const& path) {
        return answered<OpenProjects::Opened>(queue, [&](auto answer) { projects.open(path, answer); }).value();
    }

    TemporaryFolder const folder{TemporaryFolder::fastest()};
    MainQueue queue;
    OpenProjects projects{queue};
};

}

TEST_F(OpenProjectsTest, everybodyGetsTheSameObjectHoweverTheProjectIsNamed) {
    auto const id = make("one");
    EXPECT_EQ(projects.find(id), nullptr);
    fs::create_directory_symlink(folder / "one.recproj", folder / "link.recproj");
    std::vector<OpenProjects::Opened> opened;
    for (auto const* path : {"one.recproj", "one", "./one.recproj/", "link.recproj"})
        projects.open(folder / path,
                      [&](Outcome<OpenProjects::Opened> const& outcome) { opened.push_back(outcome.value()); });
    queue.runUntil([&] { return opened.size() == 4; });
    opened.push_back(open(folder / "one.recproj"));
    opened.push_back(projects.find(id));
    for (auto const& each : opened) EXPECT_EQ(each, opened.front());
}

TEST_F(OpenProjectsTest, aProjectStaysOpenWhileSomebodyKeepsItOrWasAmongTheLastToAsk) {
    auto const used = open((make("used"), folder / "used"));
    auto const first = make("first");
    std::weak_ptr<OpenProject> const unused = open(folder / "first");
    for (std::size_t i = 0; i < OpenProjects::kept; ++i) {
        EXPECT_FALSE(unused.expired()) << i;
        auto const name = fmt::format("other {}", i);
        make(name);
        open(folder / name);
    }
    EXPECT_TRUE(unused.expired());
    EXPECT_EQ(projects.find(first), nullptr);
    EXPECT_EQ(projects.find(used->document().id), used);
}

TEST_F(OpenProjectsTest, whatIsNoProjectFailsAndWhatWentAwayIsFoundNoMore) {
    auto const outcome =
        answered<OpenProjects::Opened>(queue, [&](auto answer) { projects.open(folder / "none", answer); });
    try {
        outcome.value();
        ADD_FAILURE() << "opened";
    } catch (FileError const& error) {
        EXPECT_THAT(error.what(), HasSubstr("there is no such project"));
    }
    auto const id = make("none"); // made meanwhile
    auto const opened = open(folder / "none");
    EXPECT_EQ(projects.find(id), opened);
    fs::remove_all(folder / "none.recproj");
    EXPECT_EQ(projects.find(id), nullptr);
}

TEST_F(OpenProjectsTest, anEditFromAfarIsOneNamedStepOnTheDiskAndGoesBackToTheLastByte) {
    auto const id = make("one");
    auto const open = this->open(folder / "one");
    auto const before = encodeProject(open->document());
    auto const outcome = commitFor(*open, "claude-code", "Rename", [](DemoProject& project) { project.name = "two"; });
    EXPECT_TRUE(outcome.isChanged);
    EXPECT_EQ(ProjectPackage(folder / "one.recproj").load().name, "two");
    EXPECT_EQ(open->undoName(), "Rename (claude-code)");
    EXPECT_EQ(open->steps().back().maker, StepMaker::agent);
    EXPECT_FALSE(commitFor(*open, "claude-code", "Rename", [](DemoProject&) {}).isChanged);
    EXPECT_TRUE(projects.find(id)->undo());
    EXPECT_EQ(encodeProject(open->document()), before);
}
