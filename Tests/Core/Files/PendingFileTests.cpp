#include "WithoutCalls.h"

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Files/HiddenFolder.h>
#include <TavaroCore/Files/MoveUnlessTaken.h>
#include <TavaroCore/Files/PendingFile.h>
#include <Tests/Core/Package/TemporaryFolder.h>

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fmt/format.h>
#include <fstream>
#include <functional>
#include <set>
#include <sys/stat.h>
#include <sys/wait.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

std::set<std::string> namesIn(fs::path const& folder) {
    std::set<std::string> names;
    for (auto const& entry : fs::directory_iterator(folder)) names.insert(entry.path().filename().string());
    return names;
}

void writeAged(fs::path const& file, std::chrono::minutes age) {
    std::ofstream(file) << "half a file";
    fs::last_write_time(file, fs::file_time_type::clock::now() - age);
}

pid_t inAnotherProcess(std::function<int()> const& work) {
    pid_t const child = fork();
    if (child != 0) return child;
    int outcome = 99;
    try {
        outcome = work();
    } catch (std::exception const& error) {
        fprintf(stderr, "%s\n", error.what());
    }
    _exit(outcome);
}

int outcomeOf(pid_t child) {
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

/// A process that has something pending, until it is killed.
class Unfinished {
public:
    template<class Made> Unfinished(std::type_identity<Made>, fs::path const& beside) {
        int ready[2];
        if (pipe(ready) != 0) throw std::bad_alloc();
        child_ = inAnotherProcess([&] {
            Made const made(beside);
            [[maybe_unused]] auto const told = write(ready[1], "x", 1);
            while (true) pause();
            return 0;
        });
        char told;
        if (read(ready[0], &told, 1) != 1) ADD_FAILURE() << "nothing was begun";
        close(ready[0]), close(ready[1]);
    }
    void kill() {
        ::kill(child_, SIGKILL);
        outcomeOf(child_);
    }

private:
    pid_t child_;
};

}

TEST(PendingFile, endsACopyThatNobodyWaitsForAnyMore) {
    TemporaryFolder folder;
    auto const from = folder / "large";
    std::ofstream(from) << "begins";
    fs::resize_file(from, 200 << 20);
    std::vector<std::uint64_t> told;
    try {
        PendingFile pending(folder / "copy");
        pending.copy(from, [&](std::uint64_t copied) {
            told.push_back(copied);
            return told.size() < 2;
        });
        ADD_FAILURE() << "all of it was copied";
    } catch (FileError const& error) {
        EXPECT_EQ(error.errorNumber, ECANCELED);
    }
    ASSERT_EQ(told.size(), 2u);
    EXPECT_LT(told[1], std::uint64_t{200} << 20);
    EXPECT_EQ(namesIn(folder.path()), std::set<std::string>{"large"});
}

TEST(PendingFile, aLinkPlantedAtAHalfWrittenNameIsNeitherFollowedNorOverwritten) {
    TemporaryFolder const folder;
    std::ofstream(folder / "victim") << "precious";
    auto const next = [&] { // this process counts its names
        auto const name = PendingFile(folder / "a.json").path().stem().string();
        return std::stoi(name.substr(name.rfind('-') + 1)) + 1;
    }();
    std::vector<fs::path> links{folder / "a.json.tmp", folder / "b.json.tmp"};
    for (int number = next; number < next + 8; ++number)
        for (auto const file : {"a", "b"})
            links.push_back(folder / fmt::format(".{}.json.tavaro-{}-{}.tmp", file, getpid(), number));
    for (auto const& link : links) fs::create_symlink(folder / "victim", link);
    writeFileAtomically(folder / "a.json", "one");
    replaceFileKeepingBackup(folder / "a.json", folder / "b.json", "two");
    EXPECT_EQ(readWholeFile(folder / "victim"), "precious");
    EXPECT_EQ(readWholeFile(folder / "a.json"), "two");
    EXPECT_EQ(readWholeFile(folder / "b.json"), "one");
    for (auto const& link : links) EXPECT_EQ(fs::read_symlink(link), folder / "victim");
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(folder / "b.json")));
}

TEST(PendingFile, whatAKilledProcessLeftGoesWithTheNextWriteAndWhatALivingOneWritesStays) {
    TemporaryFolder const folder;
    Unfinished file(std::type_identity<PendingFile>(), folder / "film.mp4");
    Unfinished building(std::type_identity<HiddenFolder>(), folder / "take.recproj");
    ASSERT_EQ(namesIn(folder.path()).size(), 2u);
    writeFileAtomically(folder / "film.mp4", "whole");
    { HiddenFolder const other(folder / "take.recproj"); }
    EXPECT_EQ(namesIn(folder.path()).size(), 3u);
    file.kill();
    building.kill();
    writeFileAtomically(folder / "another.mp4", "whole");
    EXPECT_EQ(namesIn(folder.path()), (std::set<std::string>{"film.mp4", "another.mp4"}));
}

TEST(PendingFile, leftoversOfEarlierVersionsGoWhenTheyAreOldAndNothingElseDoes) {
    using std::chrono::minutes;
    TemporaryFolder const folder;
    for (auto const abandoned : {"film.mp4.tmp", ".film.4711-0.part.mp4", ".film.mp4.4711-0.tmp"})
        writeAged(folder / abandoned, minutes(10));
    std::set<std::string> kept{".film two.4711-0.part.mp4", ".film.notes-1.part.mp4", ".film.mp4.4711.tmp",
                               ".film two.mp4.4711-0.tmp", "film two.mp4.tmp"};
    for (auto const& name : kept) writeAged(folder / name, minutes(10));
    kept.insert(".film.4711-1.part.mp4");
    writeAged(folder / ".film.4711-1.part.mp4", minutes(0));
    { PendingFile const film(folder / "film.mp4"); }
    EXPECT_EQ(namesIn(folder.path()), kept);
}

TEST(PendingFile, processesThatWriteOneNameAtOnceEachEndWhole) {
    constexpr int writers = 6, writes = 150;
    TemporaryFolder const folder(TemporaryFolder::fastest());
    std::vector<pid_t> children;
    for (int writer = 0; writer < writers; ++writer)
        children.push_back(inAnotherProcess([&] {
            for (int i = 0; i < writes; ++i) {
                writeFileAtomically(folder / "a", std::string(static_cast<std::size_t>(1 + writer * 5000), 'a'));
                auto const found = readWholeFile(folder / "a").value();
                if (found.size() % 5000 != 1) return 1;
            }
            return 0;
        }));
    for (auto const child : children) EXPECT_EQ(outcomeOf(child), 0);
    EXPECT_EQ(namesIn(folder.path()), std::set<std::string>{"a"});
}

TEST(PendingFile, aRaceForANameLosesNoFileWhateverTheFileSystemKnows) {
    constexpr int writers = 6, writes = 20;
    enum class Disk { whole, withoutExclusiveRenaming, withoutSecondNames };
    for (auto const disk : {Disk::whole, Disk::withoutExclusiveRenaming, Disk::withoutSecondNames}) {
        TemporaryFolder const folder(TemporaryFolder::fastest());
        auto const write = [&](int writer, int i) {
            auto const content = fmt::format("{} {}", writer, i);
            PendingFile film(folder / "0");
            film.append(content);
            for (int number = 0; !film.commitUnlessTaken(folder / std::to_string(number)); ++number) {
            }
            HiddenFolder const building(folder / "folder 0");
            fs::create_directory(building.path() / content);
            for (int number = 0; !moveUnlessTaken(building.path() / content, folder / fmt::format("folder {}", number));
                 ++number) {
            }
        };
        std::vector<pid_t> children;
        for (int writer = 0; writer < writers; ++writer)
            children.push_back(inAnotherProcess([&] {
                if (disk == Disk::withoutExclusiveRenaming && !goWithoutExclusiveRenaming(SecondNames::known))
                    return 77;
                if (disk == Disk::withoutSecondNames && !goWithoutExclusiveRenaming(SecondNames::unknown)) return 77;
                for (int i = 0; i < writes; ++i) write(writer, i);
                return 0;
            }));
        for (auto const child : children) {
            auto const outcome = outcomeOf(child);
            if (outcome == 77) GTEST_SKIP() << "system calls cannot be taken away here";
            EXPECT_EQ(outcome, 0);
        }
        EXPECT_EQ(namesIn(folder.path()).size(), 2u * writers * writes) << "disk " << static_cast<int>(disk);
        std::set<std::string> contents;
        for (int number = 0; number < writers * writes; ++number)
            contents.insert(readWholeFile(folder / std::to_string(number)).value_or(""));
        EXPECT_EQ(contents.size(), std::size_t{writers * writes}) << "disk " << static_cast<int>(disk);
    }
}

TEST(PendingFile, filesTradePlacesAndKeepBackupsWhereTheFileSystemKnowsNoSecondNames) {
    TemporaryFolder const folder;
    auto const outcome = outcomeOf(inAnotherProcess([&] {
        if (!goWithoutExclusiveRenaming(SecondNames::unknown)) return 77;
        writeFileAtomically(folder / "a", "one");
        replaceFileKeepingBackup(folder / "a", folder / "b", "two");
        exchangeFiles(folder / "a", folder / "b");
        return 0;
    }));
    if (outcome == 77) GTEST_SKIP() << "system calls cannot be taken away here";
    EXPECT_EQ(outcome, 0);
    EXPECT_EQ(readWholeFile(folder / "a"), "one");
    EXPECT_EQ(readWholeFile(folder / "b"), "two");
    EXPECT_EQ(namesIn(folder.path()).size(), 2u);
}

TEST(PendingFile, aFileThatIsReplacedPassesItsPermissionsOn) {
    TemporaryFolder const folder;
    auto const modeOf = [&](char const* name) {
        struct stat about {};
        stat((folder / name).c_str(), &about);
        return about.st_mode & 07777;
    };
    auto const before = umask(0027);
    writeFileAtomically(folder / "new", "x");
    EXPECT_EQ(modeOf("new"), 0640u);
    for (unsigned const mode : {0600u, 0666u, 0444u, 0755u}) {
        writeFileAtomically(folder / "a", "one");
        chmod((folder / "a").c_str(), mode);
        replaceFileKeepingBackup(folder / "a", folder / "b", "two");
        EXPECT_EQ(modeOf("a"), mode);
        EXPECT_EQ(modeOf("b"), mode);
        fs::remove(folder / "a");
    }
    umask(before);
}

TEST(PendingFile, aCopyIsEqualAlsoFromAnotherDisk) {
    TemporaryFolder const here, there(TemporaryFolder::fastest());
    std::string bytes(5'000'001, '\0');
    for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * i >> 7);
    for (auto const* const from : {&here, &there}) {
        writeFileAtomically(*from / "original", bytes);
        PendingFile copy(here / "copy");
        copy.copy(*from / "original");
        copy.commit();
        EXPECT_TRUE(readWholeFile(here / "copy") == bytes);
    }
}

}
