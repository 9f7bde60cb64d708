#include "../../Core/Package/TemporaryFolder.h"
#include "../Answered.h"

#include <Tavaro/Model/Project/ProjectCatalogue.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <fcntl.h>
#include <fstream>
#include <gmock/gmock.h>
#include <sys/stat.h>

using namespace tavaro;
using ::testing::ElementsAre;
namespace fs = std::filesystem;

namespace {

class ProjectCatalogueTest : public testing::Test {
protected:
    /// A project that was last saved that many seconds after 1970.
    UUID make(std::string const& place, std::int64_t saved) const {
        ProjectPackage const package(folder / (place + ".recproj"));
        package.createDirectories();
        DemoProject project;
        project.id = UUID::random();
        project.name = place;
        package.save(project);
        touch(package.url(), saved);
        return project.id;
    }
    static void touch(fs::path const& package, std::int64_t saved) {
        timespec const times[2]{{saved, 0}, {saved, 0}};
        utimensat(AT_FDCWD, (package / "project.json").c_str(), times, 0);
    }
    fs::path copy(std::string const& from, std::string const& to, std::int64_t saved) const {
        fs::copy(folder / (from + ".recproj"), folder / (to + ".recproj"), fs::copy_options::recursive);
        touch(folder / (to + ".recproj"), saved);
        return folder / (to + ".recproj");
    }
    std::vector<std::string> listed(std::size_t atMost = 100) {
        auto const outcome =
            answered<ProjectCatalogue::Listed>(queue, [&](auto answer) { catalogue.list(atMost, std::move(answer)); });
        std::vector<std::string> names;
        for (auto const& item : outcome.value()) names.push_back(item.path.stem());
        return names;
    }
    /// Of all that is there; "!" with what cannot be opened.
    std::vector<std::string> listedAll() {
        auto const outcome =
            answered<ProjectCatalogue::Listed>(queue, [&](auto answer) { catalogue.listAll(std::move(answer)); });
        std::vector<std::string> names;
        for (auto const& item : outcome.value()) names.push_back(item.path.stem().string() + (item.problem ? "!" : ""));
        return names;
    }
    /// The name of the package, or what the failure says.
    std::string find(UUID const& id) {
        auto const outcome = answered<LibraryItem>(queue, [&](auto answer) { catalogue.find(id, std::move(answer)); });
        try {
            return outcome.value().path.stem();
        } catch (NoSuchProject const& error) {
            return error.what();
        }
    }

    TemporaryFolder const folder{TemporaryFolder::fastest()};
    MainQueue queue;
    ProjectCatalogue catalogue{queue, {folder.path(), folder / "none"}, folder / "index/library.json"};
};

}

TEST_F(ProjectCatalogueTest, listsTheNewestFirstUpToALimitAndLeavesOutWhatCannotBeOpened) {
    make("b", 2000), make("a", 1000), make("c", 3000), make("broken", 4000);
    std::ofstream(folder / "broken.recproj/project.json") << "{";
    EXPECT_THAT(listed(), ElementsAre("c", "b", "a"));
    EXPECT_THAT(listed(2), ElementsAre("c", "b"));
    EXPECT_THAT(listed(0), ElementsAre());
}

TEST_F(ProjectCatalogueTest, findsAProjectAlsoAfterItMovedAndNoneThatIsGone) {
    auto const id = make("first", 1000), other = make("other", 2000);
    EXPECT_EQ(find(id), "first");
    fs::create_directories(folder / "deep/er");
    fs::rename(folder / "first.recproj", folder / "deep/er/moved.recproj");
    fs::rename(folder / "other.recproj", folder / "first.recproj"); // another project where the first was
    EXPECT_EQ(find(id), "moved");
    EXPECT_EQ(find(other), "first");
    fs::remove_all(folder / "deep");
    EXPECT_EQ(find(id), "There is no project “" + id.text() + "”.");
    EXPECT_EQ(find(UUID{}), "There is no project “00000000-0000-0000-0000-000000000000”.");
}

TEST_F(ProjectCatalogueTest, ofCopiesTheNewestIsMeantAndStaysMeant) {
    auto const id = make("original", 1000);
    auto const copied = copy("original", "copy", 2000);
    EXPECT_EQ(find(id), "copy");
    touch(folder / "original.recproj", 3000);
    EXPECT_EQ(find(id), "copy");
    EXPECT_THAT(listed(), ElementsAre("copy"));
    make("broken", 4000);
    std::ofstream(folder / "broken.recproj/project.json") << "{";
    touch(folder / "broken.recproj", 4000);
    EXPECT_THAT(listedAll(), ElementsAre("broken!", "original", "copy"));
    fs::remove_all(copied);
    EXPECT_EQ(find(id), "original");
    EXPECT_THAT(listed(), ElementsAre("original"));
}

TEST_F(ProjectCatalogueTest, thatGoesAwayAnswersNobody) {
    bool isAnswered = false;
    {
        ProjectCatalogue going(queue, {folder.path()}, {});
        for (int i = 0; i < 20; ++i) going.list(1, [&](auto const&) { isAnswered = true; });
    }
    queue.runPending();
    EXPECT_FALSE(isAnswered);
}
