#include "../../Core/Package/TemporaryFolder.h"

#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Project/StoredProject.h>
#include <Tavaro/Studio/Library/Library.h>
#include <Tavaro/Studio/Library/LibraryText.h>

#include <TavaroCapture/Recovery/RecoveryStore.h>
#include <TavaroPlatform/Archive/ProjectArchive.h>

#include <gmock/gmock.h>

#include <QAbstractItemModelTester>
#include <QCoreApplication>

#include <chrono>
#include <cstdlib>

using namespace tavaro;
using ::testing::ElementsAre;
using ::testing::UnorderedElementsAre;
namespace fs = std::filesystem;

namespace {

class LibraryTest : public testing::Test {
protected:
    LibraryTest() {
        setenv("XDG_DATA_HOME", (folder / "data").c_str(), 1);
        QObject::connect(&library(), &Library::said, [this](QString const& text, QString const& action) {
            said = (text + QStringLiteral(" [") + action + QStringLiteral("]")).toStdString();
        });
        QObject::connect(&library(), &Library::failed,
                         [this](QString const& sentence) { failure = sentence.toStdString(); });
        QObject::connect(&library(), &Library::openRequested,
                         [this](QString const& path) { opened.push_back(libraryText::path(path).filename()); });
    }
    ~LibraryTest() override {
        library_.reset();
        unsetenv("XDG_DATA_HOME");
    }

    Library& library() {
        if (!library_) library_ = std::make_unique<Library>(queue, application);
        return *library_;
    }
    fs::path make(std::string const& name) const {
        ProjectPackage const package(folder / "library" / (name + ".recproj"));
        package.createDirectories();
        DemoProject project;
        project.id = UUID::random();
        project.name = name;
        package.save(project);
        return package.url();
    }
    std::vector<std::string> shown() {
        std::vector<std::string> names;
        for (int row = 0; row < library().projects()->rowCount(); ++row)
            names.push_back(library().projects()->index(row).data(LibraryModel::nameRole).toString().toStdString());
        return names;
    }
    /// Until it is so, in ten seconds at most.
    bool becomes(std::function<bool()> const& isSo) {
        auto const end = std::chrono::steady_clock::now() + std::chrono::seconds(10);
        queue.runUntil([&] {
            QCoreApplication::processEvents();
            return isSo() || std::chrono::steady_clock::now() > end;
        });
        return isSo();
    }
    bool shows(std::vector<std::string> const& names) {
        return becomes([&] { return library().isLoaded() && shown() == names; });
    }
    static QString text(fs::path const& path) { return libraryText::text(path); }

    TemporaryFolder const folder{TemporaryFolder::fastest()};
    MainQueue queue;
    Application application{
        queue,
        {.library = {folder / "library"}, .index = folder / "index.json", .preferences = folder / "preferences.json"}};
    std::unique_ptr<Library> library_;
    std::string said, failure;
    std::vector<std::string> opened;
};

}

TEST_F(LibraryTest, aProjectInTheTrashComesBackByOneUndo) {
    auto const project = make("One");
    make("Two");
    library().refresh();
    ASSERT_TRUE(becomes([&] { return shown().size() == 2; }));
    library().moveToTrash(text(project));
    EXPECT_THAT(shown(), ElementsAre("Two")) << "at once";
    ASSERT_TRUE(becomes([&] { return said == "“One” is in the trash [Undo]"; })) << failure;
    EXPECT_FALSE(fs::exists(project));
    library().accept();
    EXPECT_TRUE(becomes([&] { return shown().size() == 2; }));
    EXPECT_TRUE(fs::exists(project));
    library().moveToTrash(text(folder / "library/None.recproj"));
    EXPECT_TRUE(becomes([&] { return !failure.empty(); }));
}

TEST_F(LibraryTest, aNewNameIsThatOfTheDocumentAndOfThePackageWhereNobodyHasItOpen) {
    auto const project = make("Old");
    make("New");
    library().refresh();
    ASSERT_TRUE(becomes([&] { return shown().size() == 2; }));
    library().rename(text(project), QStringLiteral("  "));
    library().rename(text(project), QStringLiteral("A/B: draft"));
    ASSERT_TRUE(becomes([&] { return shown() == std::vector<std::string>{"A/B: draft", "New"}; })) << failure;
    EXPECT_FALSE(fs::exists(project));
    auto const moved = library().projects()->index(0).data(LibraryModel::pathRole).toString();
    EXPECT_EQ(openProject(libraryText::path(moved)).project.name, "A/B: draft");

    std::shared_ptr<OpenProject> open;
    application.projects().open(libraryText::path(moved), [&](auto const& outcome) { open = outcome.value(); });
    ASSERT_TRUE(becomes([&] { return open != nullptr; }));
    library().rename(moved, QStringLiteral("Open"));
    EXPECT_TRUE(shows({"Open", "New"}));
    EXPECT_EQ(open->document().name, "Open");
    EXPECT_TRUE(fs::exists(libraryText::path(moved)));

    // Whose file still has the name from before.
    EXPECT_EQ(library().archiveFor(moved).fileName(), "Open.zip");
    library().duplicate(moved);
    EXPECT_TRUE(becomes([&] { return said == "“Open copy” is in the library [Open]"; })) << said << failure;
    open.reset();
    library().moveToTrash(moved);
    EXPECT_TRUE(becomes([&] { return said == "“Open” is in the trash [Undo]"; })) << said << failure;
}

TEST_F(LibraryTest, whatIsBroughtBecomesProjectsOneAfterTheOtherAndAFailureStopsNoneOfThem) {
    auto const project = make("Shared");
    auto const archive =
        archiveProject(ProjectPackage(project), {.file = folder / "Shared.zip"}, [](auto const&) { return true; }).file;
    auto const url = [](fs::path const& path) { return QUrl::fromLocalFile(libraryText::text(path)); };
    fs::remove_all(project);
    library().bring(
        {url(folder / "none.mov"), url(archive), url(archive), url(folder / "library/Open.recproj/project.json")});
    EXPECT_TRUE(becomes([&] { return opened.size() == 3; })) << failure;
    EXPECT_THAT(opened, UnorderedElementsAre("Open.recproj", "Shared.recproj", "Shared 2.recproj"));
    EXPECT_THAT(failure, testing::HasSubstr("none.mov"));
    library().bring({QUrl("https://example.org/film.mp4")});
    EXPECT_THAT(failure, testing::StartsWith("“https://example.org/film.mp4” is no file of this machine."));
    EXPECT_TRUE(becomes([&] { return shown().size() == 2 && library().activities()->count() == 0; }));
}

TEST(UnfinishedTakes, whatIsBeingKeptOrThrownAwayIsOfferedByNoListingUntilItIsPutBack) {
    std::vector<RecoveryStore::Recoverable> takes(3);
    for (std::size_t i = 0; i < takes.size(); ++i) {
        takes[i].id = UUID::random();
        takes[i].marker.startedAt = {-static_cast<std::int64_t>(i)};
    }
    UnfinishedTakes model;
    QAbstractItemModelTester const tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    auto const shown = [&] {
        std::vector<std::string> ids;
        for (int row = 0; row < model.rowCount(); ++row)
            ids.push_back(model.index(row).data(UnfinishedTakes::idRole).toString().toStdString());
        return ids;
    };
    auto const ids = [&](auto... which) { return std::vector<std::string>{takes[which].id.text()...}; };
    model.setTakes(takes);
    auto const second = QString::fromStdString(takes[1].id.text());
    auto const claimed = model.claim(second);
    ASSERT_TRUE(claimed);
    EXPECT_FALSE(model.claim(second)) << "by a second press";
    model.setTakes(takes);
    EXPECT_EQ(shown(), ids(0, 2));
    model.putBack(*claimed);
    EXPECT_EQ(shown(), ids(0, 1, 2)) << "the newest first";
    EXPECT_TRUE(model.claim(second));
}

TEST_F(LibraryTest, anotherListingOfFiveHundredProjectsIsQuickAndChangesNoRow) {
    constexpr int many = 500;
    for (int i = 0; i < many; ++i) make("Project " + std::to_string(i));
    library().refresh();
    ASSERT_TRUE(becomes([&] { return shown().size() == many; }));
    int changes = 0;
    QObject::connect(library().projects(), &LibraryModel::dataChanged, [&] { ++changes; });
    QObject::connect(library().projects(), &LibraryModel::rowsInserted, [&] { ++changes; });
    bool isListed = false;
    QObject::connect(&library(), &Library::changed, [&] { isListed = true; });
    auto const began = std::chrono::steady_clock::now();
    library().refresh();
    ASSERT_TRUE(becomes([&] { return isListed; }));
    EXPECT_EQ(changes, 0);
    EXPECT_LT(std::chrono::steady_clock::now() - began, std::chrono::seconds(2));
}
