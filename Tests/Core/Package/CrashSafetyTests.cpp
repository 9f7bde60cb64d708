#include "TemporaryFolder.h"

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Package/EditorState.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <optional>
#include <random>
#include <sys/mount.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>
#include <utility>
#include <vector>

using namespace tavaro;
namespace fs = std::filesystem;

namespace {

/// The same object for the same number, one after the other.
CopyOnWrite<RecordingMetadata> const& logOf(int number) {
    static std::pair<int, CopyOnWrite<RecordingMetadata>> last{-1, {}};
    if (last.first == number) return last.second;
    RecordingMetadata log;
    log.cursorSamples.resize(static_cast<std::size_t>(number * 37 % 11) * 200, {.t = static_cast<double>(number)});
    last = {number, std::move(log)};
    return last.second;
}

/// Documents of very different lengths whose content tells their number; some have the log of the one before.
DemoProject numbered(int number) {
    auto project = decodeProject("{}");
    project.id = {};
    project.createdAt = project.modifiedAt = {};
    project.name = std::string(static_cast<std::size_t>(number * 29 % 13 * 100), '0') + std::to_string(number);
    project.metadata = logOf(number / 3);
    return project;
}

int numberOf(DemoProject const& project) { return std::stoi(project.name); }

bool isTakenBack(int number) { return number % 3 == 0; }

/// Saves and goes back without end, and tells through the pipe which save is next.
[[noreturn]] void saveForEver(ProjectPackage const& package, int first, int progress) {
    std::optional<SavedDocument> saved;
    for (int i = first;; ++i) {
        [[maybe_unused]] auto const told = write(progress, &i, sizeof i);
        saved = package.save(numbered(i), saved);
        package.saveEditorState({.playhead = static_cast<double>(i)});
        if (isTakenBack(i)) package.restoreBackup();
    }
}

}

TEST(CrashSafety, aSaverKilledAtAnyInstantLeavesAWholeDocumentAndAWholeBackup) {
    constexpr int kills = 300;
    TemporaryFolder const folder(TemporaryFolder::fastest());
    ProjectPackage const package(folder / "take.recproj");
    package.createDirectories();
    package.save(numbered(0));
    package.save(numbered(1));
    std::mt19937 random(5);
    int next = 2, rounds = 0;
    int known[2] = {1, 0};
    for (int kill = 0; kill < kills; ++kill) {
        int progress[2];
        ASSERT_EQ(pipe(progress), 0);
        pid_t const child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) saveForEver(package, next, progress[1]);
        close(progress[1]);
        int reached = next;
        for (auto saves = 1 + random() % 4; saves > 0; --saves) { // however fast the disk is
            ASSERT_EQ(read(progress[0], &reached, sizeof reached), static_cast<ssize_t>(sizeof reached));
        }
        timespec const instant{0, static_cast<long>(random() % 4'000'000)};
        nanosleep(&instant, nullptr);
        ::kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        while (read(progress[0], &reached, sizeof reached) == static_cast<ssize_t>(sizeof reached)) {
        }
        close(progress[0]);

        auto const present = package.load();
        auto const before = package.loadBackup();
        ASSERT_EQ(present, numbered(numberOf(present))) << "kill " << kill;
        ASSERT_EQ(before, numbered(numberOf(before))) << "kill " << kill;
        for (int const found : {numberOf(present), numberOf(before)}) {
            bool const wasThere = found == known[0] || found == known[1];
            ASSERT_TRUE(wasThere || (found >= next && found <= reached)) << found << " after kill " << kill;
        }
        // The save before the last one begun was complete, but where it was taken back, it may be forgotten by now.
        int const kept = reached - (isTakenBack(reached - 1) ? 2 : 1);
        if (kept >= next) {
            ASSERT_GE(std::max(numberOf(present), numberOf(before)), kept) << "kill " << kill;
            ++rounds;
        }
        known[0] = numberOf(present), known[1] = numberOf(before);
        ASSERT_LE(package.loadEditorState().playhead, reached);
        next = reached + 1;
    }
    EXPECT_GT(rounds, kills / 4); // it did save in between
}

TEST(CrashSafety, processesThatSaveAtOnceDoNotSpoilEachOthersFiles) {
    constexpr int savers = 6, saves = 60;
    TemporaryFolder const folder(TemporaryFolder::fastest());
    ProjectPackage const package(folder / "take.recproj");
    package.createDirectories();
    package.save(numbered(0));
    package.save(numbered(1));
    std::vector<pid_t> children;
    for (int saver = 1; saver <= savers; ++saver) {
        pid_t const child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            try {
                for (int i = 0; i < saves; ++i) {
                    package.save(numbered(saver * 1000 + i));
                    auto const found = package.load();
                    if (!(found == numbered(numberOf(found)))) _exit(2); // torn
                    if (isTakenBack(i)) package.restoreBackup();
                }
                _exit(0);
            } catch (std::exception const& error) {
                fprintf(stderr, "%s\n", error.what());
                _exit(1);
            }
        }
        children.push_back(child);
    }
    for (auto const child : children) {
        int status = 0;
        waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << "status " << status;
    }
    auto const present = package.load(), before = package.loadBackup();
    EXPECT_EQ(present, numbered(numberOf(present)));
    EXPECT_EQ(before, numbered(numberOf(before)));
    EXPECT_FALSE(fs::equivalent(package.projectFileURL(), package.backupFileURL()));
    for (auto const& entry : fs::directory_iterator(package.url())) EXPECT_NE(entry.path().extension(), ".tmp");
}

TEST(CrashSafety, aSaveToAFullDiskLeavesBothDocumentsAsTheyWere) {
    TemporaryFolder const folder;
    fs::create_directory(folder / "disk");
    if (mount("tmpfs", (folder / "disk").c_str(), "tmpfs", 0, "size=256k") != 0)
        GTEST_SKIP() << "this user may not mount a small disk";
    struct Unmount {
        fs::path disk;
        ~Unmount() { umount2(disk.c_str(), MNT_DETACH); }
    } const unmount{folder / "disk"};
    ProjectPackage const package(folder / "disk/take.recproj");
    package.createDirectories();
    auto const old = numbered(11), newer = numbered(1);
    package.save(old);
    package.save(newer);
    auto tooLarge = numbered(2);
    tooLarge.metadata.edit().cursorSamples.resize(20'000);
    try {
        package.save(tooLarge);
        FAIL() << "the disk was large enough";
    } catch (FileError const& error) {
        EXPECT_EQ(error.kind, FileError::Kind::diskFull);
        EXPECT_NE(std::string(error.what()).find("project.json"), std::string::npos);
    }
    EXPECT_EQ(package.load(), newer);
    EXPECT_EQ(package.loadBackup(), old);
    EXPECT_EQ(std::distance(fs::directory_iterator(package.url()), fs::directory_iterator()), 3);
    package.save(old); // and there is room again
    EXPECT_EQ(package.loadBackup(), newer);
}

TEST(CrashSafety, goingBackCanItselfBeTakenBack) {
    TemporaryFolder const folder;
    ProjectPackage const package(folder / "take.recproj");
    package.createDirectories();
    EXPECT_THROW(package.restoreBackup(), FileError);
    package.save(numbered(1));
    package.save(numbered(2));
    EXPECT_EQ(package.restoreBackup(), numbered(1));
    EXPECT_EQ(package.load(), numbered(1));
    EXPECT_EQ(package.loadBackup(), numbered(2));
    EXPECT_EQ(package.restoreBackup(), numbered(2));
    EXPECT_EQ(package.load(), numbered(2));
    // A document that somebody broke is kept aside.
    std::string const broken = "{\"name\":";
    std::ofstream(package.projectFileURL()) << broken;
    EXPECT_EQ(package.restoreBackup(), numbered(1));
    EXPECT_EQ(readWholeFile(package.damagedFileURL()), broken);
    EXPECT_EQ(package.load(), numbered(1));
    EXPECT_EQ(package.loadBackup(), numbered(1));
    fs::remove(package.projectFileURL());
    fs::permissions(package.backupFileURL(), fs::perms(0600));
    EXPECT_EQ(package.restoreBackup(), numbered(1));
    EXPECT_EQ(package.load(), numbered(1));
    EXPECT_EQ(fs::status(package.projectFileURL()).permissions(), fs::perms(0600));
}

TEST(CrashSafety, aFullDiskTakesNothingOfADamagedDocument) {
    TemporaryFolder const folder;
    fs::create_directory(folder / "disk");
    if (mount("tmpfs", (folder / "disk").c_str(), "tmpfs", 0, "size=256k") != 0)
        GTEST_SKIP() << "this user may not mount a small disk";
    struct Unmount {
        fs::path disk;
        ~Unmount() { umount2(disk.c_str(), MNT_DETACH); }
    } const unmount{folder / "disk"};
    ProjectPackage const package(folder / "disk/take.recproj");
    package.createDirectories();
    package.save(numbered(11));
    std::string const damaged(100'000, '{');
    std::ofstream(package.projectFileURL()) << damaged;
    auto tooLarge = numbered(2);
    tooLarge.metadata.edit().cursorSamples.resize(20'000);
    EXPECT_THROW(package.saveOverDamaged(tooLarge), FileError);
    EXPECT_EQ(readWholeFile(package.projectFileURL()), damaged);
    std::ofstream(folder / "disk/filler") << std::string(1 << 20, 'x'); // as far as there is room
    EXPECT_THROW(package.saveOverDamaged(numbered(2)), FileError);
    EXPECT_EQ(readWholeFile(package.projectFileURL()), damaged);
    fs::remove(folder / "disk/filler");
    package.saveOverDamaged(numbered(2));
    EXPECT_EQ(package.load(), numbered(2));
    EXPECT_EQ(readWholeFile(package.damagedFileURL()), damaged);
}

TEST(EditorState, isKeptBesideTheDocumentAndNeverStopsAProject) {
    TemporaryFolder const folder;
    ProjectPackage const package(folder / "take.recproj");
    package.createDirectories();
    EXPECT_EQ(package.loadEditorState(), EditorState{});
    EditorState const state{.playhead = 12.5, .selection = {UUID::random()}, .inspector = "zoom", .snaps = false};
    package.saveEditorState(state);
    EXPECT_EQ(package.loadEditorState(), state);
    for (std::string const broken :
         {"", "[]", "{\"playhead\":\"late\"}", "{\"selection\":[1]}", "\xff", "{\"playhead\":-3}"}) {
        std::ofstream(package.editorStateURL(), std::ios::trunc) << broken;
        EXPECT_EQ(package.loadEditorState(), EditorState{}) << broken;
    }
    fs::remove(package.editorStateURL());
    fs::create_directory(package.editorStateURL());
    EXPECT_EQ(package.loadEditorState(), EditorState{});
}
