#include "../Package/TemporaryFolder.h"

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Library/Private/LibraryIndex.h>
#include <TavaroCore/Library/ProjectLibrary.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <gmock/gmock.h>

#include <fcntl.h>
#include <fmt/format.h>
#include <fstream>
#include <random>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tavaro;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::UnorderedElementsAre;
namespace fs = std::filesystem;

namespace {

class ProjectLibraryTest : public ::testing::Test {
protected:
    /// A project of so many seconds, last saved that many seconds after 1970.
    ProjectPackage make(std::string const& place, double duration, std::int64_t saved) const {
        ProjectPackage const package(movies / (place + ".recproj"));
        package.createDirectories();
        auto project = decodeProject("{}");
        project.name = fs::path(place).filename().string();
        project.timeline.clips.push_back({.asset = "a.mov", .duration = duration});
        package.save(project);
        setSaved(package, saved);
        return package;
    }
    static void setSaved(ProjectPackage const& package, std::int64_t seconds) {
        timespec const times[2]{{seconds, 0}, {seconds, 0}};
        utimensat(AT_FDCWD, package.projectFileURL().c_str(), times, 0);
    }
    std::vector<LibraryItem> list() const { return ProjectLibrary(index).list({movies}); }
    std::vector<std::string> names() const {
        std::vector<std::string> result;
        for (auto const& item : list()) result.push_back(item.name);
        return result;
    }
    static void write(fs::path const& file, std::string_view text) { std::ofstream(file, std::ios::binary) << text; }

    TemporaryFolder const folder{TemporaryFolder::fastest()};
    fs::path const movies = folder / "Movies";
    fs::path const index = folder / "cache/library.json";
};

}

TEST_F(ProjectLibraryTest, listsTheNewestFirstWithWhatTheDocumentsSay) {
    make("old", 1, 1000);
    make("work/new", 2.5, 3000);
    auto const middle = make("middle", 3, 2000);
    make(".trash/hidden", 3, 2000);
    write(middle.thumbnailURL(), "png");
    write(middle.assetURL("a.mov"), std::string(5000, 'x'));
    for (auto const* state : {"cold", "warm"}) {
        auto const items = list();
        ASSERT_EQ(items.size(), 3u) << state;
        EXPECT_EQ(items[0].name, "new");
        EXPECT_EQ(items[0].duration, 2.5);
        EXPECT_EQ(items[0].modified.milliseconds, 3'000'000);
        EXPECT_EQ(items[1].path, middle.url());
        EXPECT_EQ(items[1].thumbnail, middle.thumbnailURL());
        EXPECT_GT(items[1].size, 5000);
        EXPECT_EQ(items[2].name, "old");
        EXPECT_FALSE(items[2].thumbnail || items[2].problem);
    }
}

TEST_F(ProjectLibraryTest, noticesWhatOthersDoToProjects) {
    auto const a = make("a", 1, 1000);
    make("b", 1, 2000);
    ASSERT_THAT(names(), ElementsAre("b", "a"));
    auto project = a.load();
    project.name = "renamed";
    a.save(project);
    setSaved(a, 1000); // even when its time is set back, it is another file
    EXPECT_THAT(names(), ElementsAre("b", "renamed"));
    fs::rename(movies / "b.recproj", movies / "c.recproj");
    EXPECT_EQ(list()[0].path, movies / "c.recproj");
    fs::remove_all(a.url());
    EXPECT_THAT(names(), ElementsAre("b"));
    EXPECT_EQ(LibraryIndex::read(index).projects.size(), 1u); // what is gone is forgotten
    write(movies / "c.recproj/thumbnail.png", "png");
    EXPECT_TRUE(list()[0].thumbnail);
    write(movies / "c.recproj/assets/x.mov", std::string(9000, 'x'));
    EXPECT_GT(list()[0].size, 9000);
}

TEST_F(ProjectLibraryTest, aBrokenProjectIsListedWithItsSentence) {
    make("good", 1, 1000);
    auto const wrong = make("wrong", 1, 2000);
    write(wrong.projectFileURL(), R"({"zoomEvents":[{"scale":"big"}]})");
    fs::create_directories(movies / "empty.recproj");
    for (auto const* state : {"cold", "warm"}) {
        std::vector<std::string> problems;
        for (auto const& item : list()) problems.push_back(item.problem.value_or(""));
        EXPECT_THAT(problems,
                    UnorderedElementsAre("", HasSubstr("zoomEvents[0].scale: expected a number, found a string"),
                                         HasSubstr("it has no project.json")))
            << state;
    }
    EXPECT_THROW(ProjectLibrary(index).list({folder / "nowhere"}), FileError);
}

TEST_F(ProjectLibraryTest, theIndexIsOnlyACache) {
    for (int i = 0; i < 5; ++i) make(fmt::format("p{}", i), i, 1000 + i);
    auto const expected = names();
    auto const whole = readWholeFile(index).value();
    std::mt19937 random(3);
    for (int i = 0; i < 60; ++i) {
        auto damaged = whole.substr(0, i % 3 ? whole.size() : random() % whole.size());
        for (int n = 0; n < 3 && !damaged.empty(); ++n)
            damaged[random() % damaged.size()] = static_cast<char>(random());
        write(index, i == 0 ? "" : damaged);
        auto const items = list(); // never fails; a digit changed inside a name may be believed
        ASSERT_EQ(items.size(), expected.size()) << "round " << i;
    }
    fs::remove(index);
    EXPECT_EQ(names(), expected);
    fs::remove(index);
    fs::create_directories(index); // cannot be written
    EXPECT_EQ(names(), expected);
}

TEST_F(ProjectLibraryTest, aDocumentThatWasSeenIsNotReadAgain) {
    auto const package = make("a", 1, 1000);
    list();
    // Same time, size and inode, another content: only who reads it could tell.
    std::fstream(package.projectFileURL(), std::ios::in | std::ios::out).seekp(0).put('!');
    setSaved(package, 1000);
    EXPECT_FALSE(list()[0].problem);
    fs::remove(index);
    EXPECT_TRUE(list()[0].problem);
}

TEST_F(ProjectLibraryTest, programsThatListAtOnceLeaveAWholeIndex) {
    for (int i = 0; i < 20; ++i) make(fmt::format("p{}", i), i, 1000 + i);
    std::vector<pid_t> children;
    for (int n = 0; n < 4; ++n) {
        children.push_back(fork());
        if (children.back() == 0) {
            bool isRight = true;
            for (int i = 0; i < 20; ++i) {
                std::error_code ignored;
                if (i % 4 == n) fs::remove(index, ignored);
                isRight = isRight && list().size() == 20;
            }
            _exit(isRight ? 0 : 1);
        }
    }
    for (auto const child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_EQ(status, 0);
    }
    list();
    EXPECT_EQ(LibraryIndex::read(index).projects.size(), 20u);
    EXPECT_EQ(std::distance(fs::directory_iterator(index.parent_path()), fs::directory_iterator()), 1);
}

TEST_F(ProjectLibraryTest, listingOneFolderForgetsNothingOfOthers) {
    make("one/a", 1, 1000);
    make("two/b", 1, 1000);
    list();
    ProjectLibrary(index).list({movies / "one"});
    EXPECT_EQ(LibraryIndex::read(index).projects.size(), 2u);
    EXPECT_EQ(ProjectLibrary().list({movies / "one/", movies / "one/a.recproj", movies}).size(), 2u); // each once
}
