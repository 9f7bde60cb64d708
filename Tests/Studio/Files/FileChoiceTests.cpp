#include "../../Capture/TestBus.h"
#include "../../Core/Package/TemporaryFolder.h"
#include "../Editor/TestEditor.h"
#include "TestFilePortal.h"

#include <Tavaro/Studio/Files/FileChoice.h>
#include <Tavaro/Studio/Files/FolderRows.h>

#include <QAbstractItemModelTester>
#include <QDir>

#include <fstream>
#include <memory>

using namespace tavaro;

namespace {

QString text(std::filesystem::path const& path) { return QString::fromStdString(path.string()); }

class FolderRowsTest : public testing::Test {
protected:
    FolderRowsTest() {
        for (auto const* name : {"beta", "Alpha", ".hidden"}) std::filesystem::create_directories(folder / name);
        for (auto const* name : {"Film.MP4", "words.srt", "notes.txt"}) std::ofstream(folder / name) << "text";
    }
    std::string names() const {
        std::string all;
        for (int row = 0; row < rows.rowCount(); ++row) all += rows.index(row).data().toString().toStdString() + " ";
        return all;
    }

    TemporaryFolder const folder;
    FolderRows rows;
    QAbstractItemModelTester const tester{&rows, QAbstractItemModelTester::FailureReportingMode::Fatal};
};

/// Asks a portal of its own.
class FileChoiceTest : public testing::Test {
protected:
    void SetUp() override {
        if (bus.address().empty()) GTEST_SKIP() << "no message bus";
        choice.setPortal(std::make_unique<PortalFiles>(connection("ours")));
        QObject::connect(&choice, &FileChoice::accepted, [this] { answers += "accepted "; });
        QObject::connect(&choice, &FileChoice::rejected, [this] { answers += "rejected "; });
        QObject::connect(&choice, &FileChoice::ownWanted, [this] { answers += "own "; });
    }
    ~FileChoiceTest() override {
        for (auto const* const name : {"ours", "desktop"}) QDBusConnection::disconnectFromBus(name);
    }
    QDBusConnection connection(char const* name) const {
        return QDBusConnection::connectToBus(QString::fromStdString(bus.address()), name);
    }
    void expectNext(std::string const& answer) {
        TestEditor::waitFor([&] { return !answers.empty(); });
        EXPECT_EQ(std::exchange(answers, {}), answer + " ");
    }

    TestBus bus;
    FileChoice choice;
    std::string answers;
};

}

TEST_F(FolderRowsTest, foldersComeFirstThenFilesOfTheWantedNames) {
    rows.setFolder(text(folder.path()));
    EXPECT_EQ(names(), "Alpha beta Film.MP4 notes.txt words.srt ");
    rows.setGlobs({"*.mp4", "*.srt"});
    EXPECT_EQ(names(), "Alpha beta Film.MP4 words.srt ");
    rows.setHasFiles(false);
    EXPECT_EQ(names(), "Alpha beta ");
    EXPECT_EQ(rows.rowOf(text(folder / "beta")), 1);
    rows.setFolder(text(folder / "gone/deeper"));
    EXPECT_EQ(rows.folder(), text(folder.path())) << "the nearest that is there";
    rows.setFolder(QDir::homePath() + "/");
    EXPECT_EQ(rows.shownFolder(), "~");
    rows.setFolder("/");
    EXPECT_EQ(rows.shownFolder(), "/");
    EXPECT_TRUE(rows.parentFolder().isEmpty());
}

TEST_F(FolderRowsTest, whatIsTypedIsAPathFromHere) {
    rows.setFolder(text(folder / "beta"));
    EXPECT_EQ(rows.parentFolder(), text(folder.path()));
    EXPECT_EQ(rows.resolved("a.srt"), text(folder / "beta/a.srt"));
    EXPECT_EQ(rows.resolved(" ../words.srt "), text(folder / "words.srt"));
    EXPECT_EQ(rows.resolved("/etc"), "/etc");
    EXPECT_EQ(rows.resolved("~/Films"), QDir::homePath() + "/Films");
    EXPECT_EQ(rows.resolved("~nobody"), text(folder / "beta/~nobody"));
}

TEST_F(FolderRowsTest, whatCannotBeTakenIsSaidBefore) {
    FileChoice choice;
    EXPECT_EQ(choice.problem(text(folder / "words.srt")), "");
    EXPECT_EQ(choice.problem(text(folder / "no.srt")), "There is no “no.srt” here.");
    choice.setProperty("mode", FileChoice::OpenFolder);
    EXPECT_EQ(choice.problem(text(folder / "words.srt")), "“words.srt” is not a folder.");
    choice.setProperty("mode", FileChoice::SaveFile);
    choice.setProperty("defaultSuffix", "srt");
    EXPECT_EQ(choice.problem(text(folder / "gone/new.srt")), "There is no folder “" + text(folder / "gone") + "”.");
    EXPECT_EQ(choice.problem(text(folder.path())), "The file needs a name.");
    EXPECT_EQ(choice.remark(text(folder / "words")), "“words.srt” is there already, and will be replaced.");
    EXPECT_EQ(choice.remark(text(folder / "new")), "");
    choice.take(QStringList(text(folder / "new")));
    EXPECT_EQ(choice.selectedFile(), QUrl::fromLocalFile(text(folder / "new.srt")));
}

TEST_F(FileChoiceTest, theDesktopIsAskedWithAllThatIsKnownAndItsAnswerIsTaken) {
    TestFilePortal portal(connection("desktop"));
    choice.setProperty("title", "Export captions");
    choice.setProperty("nameFilters", QStringList{"Captions (*.srt *.vtt)", "All files (*)"});
    choice.setProperty("mode", FileChoice::OpenFiles);
    choice.setProperty("currentFolder", QUrl::fromLocalFile("/films"));
    portal.results = {{"uris", QStringList{"file:///films/a%20b.srt", "file:///films/c.vtt"}}};
    choice.open();
    expectNext("accepted");
    EXPECT_EQ(portal.asked, QStringList("OpenFile: Export captions, multiple, /films, "
                                        "Captions *.[sS][rR][tT] *.[vV][tT][tT], All files *"));
    EXPECT_EQ(choice.selectedFiles(),
              (QList<QUrl>{QUrl::fromLocalFile("/films/a b.srt"), QUrl::fromLocalFile("/films/c.vtt")}));
    choice.setProperty("mode", FileChoice::SaveFile);
    choice.setProperty("defaultSuffix", "srt");
    choice.setProperty("currentFile", QUrl::fromLocalFile("/films/Tour.srt"));
    portal.results = {{"uris", QStringList{"file:///films/Other"}}};
    choice.open();
    expectNext("accepted");
    EXPECT_TRUE(portal.asked.back().startsWith("SaveFile: Export captions, /films, Tour.srt"));
    EXPECT_EQ(choice.selectedFile(), QUrl::fromLocalFile("/films/Other.srt"));
}

TEST_F(FileChoiceTest, withoutOneOnTheDesktopOursIsWanted) {
    choice.open();
    expectNext("own"); // there is no portal
    TestFilePortal portal(connection("desktop"));
    portal.response = 1;
    choice.open();
    expectNext("rejected");
    portal.response = 2; // it failed
    choice.open();
    expectNext("own");
}
