#include "../Records/RandomRecord.h"
#include "TemporaryFolder.h"

#include <TavaroCore/Package/ProjectPackage.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSONError.h>

#include <gtest/gtest.h>

#include <csignal>
#include <fstream>
#include <future>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

using namespace tavaro;
namespace fs = std::filesystem;

namespace {

class ProjectPackageTest : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "tavaro-package-XXXXXX").string();
        folder = mkdtemp(pattern.data());
        package = ProjectPackage(folder / "take.recproj");
        package.createDirectories();
    }
    void TearDown() override { fs::remove_all(folder); }

    static DemoProject named(std::string name) {
        auto project = decodeProject("{}");
        project.name = std::move(name);
        return project;
    }
    static void write(fs::path const& file, std::string_view text) { std::ofstream(file, std::ios::binary) << text; }
    static std::string read(fs::path const& file) { return readWholeFile(file).value_or("(no file)"); }
    std::size_t filesInPackage() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(package.url()), fs::directory_iterator()));
    }

    fs::path folder;
    ProjectPackage package{""};
};

}

TEST_F(ProjectPackageTest, whatIsSavedIsLoadedAndTheSaveBeforeIsKept) {
    auto const first = named("first");
    auto const second = named("second");
    package.save(first);
    EXPECT_FALSE(fs::exists(package.backupFileURL()));
    package.save(second);
    EXPECT_EQ(package.load(), second);
    EXPECT_EQ(decodeProject(read(package.backupFileURL())), first);
    package.save(second); // nothing changed, so the backup stays the first document
    EXPECT_EQ(decodeProject(read(package.backupFileURL())), first);
    EXPECT_EQ(filesInPackage(), 3u); // the document, its backup, assets
}

TEST_F(ProjectPackageTest, aSaveAfterASaveWritesTheSameBytesAsAnyOther) {
    std::optional<SavedDocument> saved;
    std::string before;
    DemoProject project;
    auto const expectSaved = [&](char const* what) {
        saved = package.save(project, saved);
        EXPECT_EQ(read(package.projectFileURL()), encodeProject(project)) << what;
        EXPECT_EQ(read(package.backupFileURL()), before) << what;
        before = read(package.projectFileURL());
    };
    before = "(no file)";
    for (unsigned seed = 0; seed < 20; ++seed) {
        auto const log = project.metadata;
        RandomRecord(seed).fill(project);
        if (seed % 3) project.metadata = log;
        expectSaved("another document, often with the same log");
        project.name += "longer";
        expectSaved("another name");
        auto const beforeThat = read(package.backupFileURL());
        saved = package.save(project, saved);
        EXPECT_EQ(read(package.backupFileURL()), beforeThat) << "nothing to save";
        write(package.projectFileURL(), before = R"({"name":"of another program"})");
        expectSaved("what another program wrote");
    }
}

TEST_F(ProjectPackageTest, aLogThatIsTheSameIsCopiedFromTheFileBefore) {
    auto project = named("first");
    project.metadata.edit().clicks.push_back({.t = 1234.5});
    auto const saved = package.save(project);
    auto const time = fs::last_write_time(package.projectFileURL());
    auto text = read(package.projectFileURL());
    text.replace(text.find("1234.5"), 6, "4321.5"); // behind the back of who saved it
    write(package.projectFileURL(), text);
    fs::last_write_time(package.projectFileURL(), time);
    project.name = "second";
    package.save(project, saved);
    EXPECT_EQ(package.load().metadata->clicks[0].t, 4321.5);
    EXPECT_EQ(package.load().name, "second");
    package.save(project);
    EXPECT_EQ(package.load(), project);
}

TEST_F(ProjectPackageTest, assetNamesNeverLeaveThePackage) {
    EXPECT_EQ(package.assetURL("../../x.mov"), package.assetsURL() / "x.mov");
    EXPECT_EQ(package.assetURL("/etc/passwd"), package.assetsURL() / "passwd");
    for (std::string_view name : {std::string_view(""), std::string_view(".."), std::string_view("."),
                                  std::string_view("a/"), std::string_view("a/.."), std::string_view("a\0b", 3)}) {
        EXPECT_EQ(ProjectPackage::confinedAssetName(name), "_invalid-asset") << name;
    }
}

TEST_F(ProjectPackageTest, aDocumentForItsOwnerOnlyStaysThat) {
    package.save(named("first"));
    fs::permissions(package.projectFileURL(), fs::perms(0600));
    auto const expectPrivate = [&](char const* after) {
        for (auto const& file : {package.projectFileURL(), package.backupFileURL()})
            EXPECT_EQ(fs::status(file).permissions(), fs::perms(0600)) << file << " after " << after;
    };
    package.save(named("second"));
    expectPrivate("a save");
    package.restoreBackup();
    expectPrivate("going back");
    package.saveOverDamaged(named("third"));
    expectPrivate("replacing a damaged one");
    EXPECT_EQ(fs::status(package.damagedFileURL()).permissions(), fs::perms(0600));
    for (auto const& file : {package.projectFileURL(), package.backupFileURL()})
        write(file, R"({"metadata":{"keystrokes":[{"characters":"hunter2"}]}})");
    package.load();
    EXPECT_EQ(read(package.backupFileURL()).find("hunter2"), std::string::npos);
    expectPrivate("what was typed is gone");
}

TEST_F(ProjectPackageTest, documentsThatCannotBeReadSaySo) {
    EXPECT_THROW(package.load(), FileError);
    write(package.projectFileURL(), R"({"createdAt":"soon"})");
    try {
        package.load();
        FAIL();
    } catch (JSONError const& error) {
        EXPECT_EQ(error.problem(), "Unrecognised date 'soon'");
        EXPECT_EQ(error.path(), "createdAt");
    }
}

TEST_F(ProjectPackageTest, importedAssetsKeepTheirNamesAndNeverReplaceOthers) {
    write(folder / "clip.mov", "one");
    EXPECT_EQ(package.importAsset(folder / "clip.mov"), "clip.mov");
    write(folder / "clip.mov", "two");
    EXPECT_EQ(package.importAsset(folder / "clip.mov"), "clip 2.mov");
    EXPECT_EQ(package.importAsset(folder / "clip.mov", ImportMode::move), "clip 3.mov");
    EXPECT_FALSE(fs::exists(folder / "clip.mov"));
    EXPECT_EQ(read(package.assetURL("clip.mov")), "one");
    EXPECT_EQ(read(package.assetURL("clip 3.mov")), "two");
    EXPECT_EQ(package.importAsset(package.assetURL("clip.mov")), "clip.mov");
    write(folder / "clip.mov", "three");
    EXPECT_EQ(package.importAsset(folder / "clip.mov", ImportMode::link), "clip 4.mov");
    EXPECT_TRUE(fs::equivalent(package.assetURL("clip 4.mov"), folder / "clip.mov"));
    EXPECT_THROW(package.importAsset(folder / "absent.mov"), FileError);
}

TEST_F(ProjectPackageTest, aSaveThatCannotFinishLeavesBothDocumentsAsTheyWere) {
    auto const first = named("first");
    auto const second = named("second");
    package.save(first);
    package.save(second);
    pid_t const child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        signal(SIGXFSZ, SIG_IGN);
        rlimit const limit{1000, 1000}; // stands for a full disk: every write past this fails
        setrlimit(RLIMIT_FSIZE, &limit);
        try {
            package.save(named(std::string(100'000, 'x')));
        } catch (FileError const&) {
            _exit(0);
        }
        _exit(1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_EQ(WEXITSTATUS(status), 0);
    EXPECT_EQ(package.load(), second);
    EXPECT_EQ(decodeProject(read(package.backupFileURL())), first);
    EXPECT_EQ(filesInPackage(), 3u);
}

TEST_F(ProjectPackageTest, ofTwoThatSaveAtOnceWithoutALockEachFileIsWhole) {
    TemporaryFolder const fast{TemporaryFolder::fastest()};
    ProjectPackage const shared(fast / "take.recproj");
    shared.createDirectories();
    auto mine = named("mine"), other = named("another program's, whose name is of another length");
    mine.metadata.edit().clicks.resize(40);
    constexpr int times = 1000;
    auto const saving = std::async(std::launch::async, [&] {
        for (int i = 0; i < times; ++i) shared.save(other);
    });
    std::optional<SavedDocument> saved;
    for (int i = 0; i < times; ++i) {
        mine.name = "mine " + std::string(static_cast<std::size_t>(i % 50), 'x');
        saved = shared.save(mine, saved);
        auto const name = shared.load().name; // throws where two texts are mixed
        EXPECT_TRUE(name == mine.name || name == other.name) << name;
    }
    saving.wait();
}

TEST_F(ProjectPackageTest, anAssetThatTheDiskHasNoRoomForIsRefusedAsThat) {
    auto const disk = folder / "disk";
    fs::create_directory(disk);
    if (mount("tmpfs", disk.c_str(), "tmpfs", 0, "size=64k") != 0) GTEST_SKIP() << "no right to mount a small disk";
    write(folder / "clip.mov", std::string(200'000, 'x'));
    ProjectPackage const small(disk / "take.recproj");
    try {
        small.importAsset(folder / "clip.mov");
        ADD_FAILURE() << "it was imported";
    } catch (FileError const& error) {
        EXPECT_EQ(error.kind, FileError::Kind::diskFull);
        EXPECT_TRUE(std::string(error.what()).ends_with("into the project: the disk is full.")) << error.what();
    }
    EXPECT_TRUE(fs::is_empty(small.assetsURL()));
    EXPECT_TRUE(fs::exists(folder / "clip.mov"));
    umount(disk.c_str());
}
