#include "ProcessFixture.h"
#include "TestTerminal.h"

#include <Tavaro/Control/TakeCaller.h>
#include <Tavaro/Control/TakeServer.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <fstream>
#include <gmock/gmock.h>
#include <unistd.h>

using namespace tavaro;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

/// Recording from a virtual display of its own, 640 × 360.
class RecordCommand : public ProcessFixture {
protected:
    RecordCommand()
        : display_(
              start("sh", {"-c", "exec Xvfb -displayfd 3 -screen 0 640x360x24 -nolisten tcp 3>" + path("display")})) {}

    void SetUp() override {
        bool const isUp = becomesTrue([&] { return !read("display").empty() || !display_.isRunning(); });
        if (!isUp || !display_.isRunning()) GTEST_SKIP() << "no virtual display: " << display_.wait().error;
        auto number = read("display");
        number.erase(number.find_last_not_of('\n') + 1);
        setenv("DISPLAY", (":" + number).c_str(), 1);
    }
    ~RecordCommand() override { unsetenv("DISPLAY"); }

    fs::path recordings() const { return folder / "data/Tavaro/Recordings"; }
    /// Whether so many takes have written something that can be read back.
    bool hasWritten(int takes = 1) const {
        if (!fs::exists(recordings())) return false;
        for (auto const& entry : fs::recursive_directory_iterator(recordings())) {
            if (entry.path().extension() == ".mov" && entry.file_size() > 4000) --takes;
        }
        return takes <= 0;
    }

private:
    RunningProcess display_;
};

/// A take that is ordered about from its terminal, in a shell that says whether it got that back as it was.
class TakeOnTerminal {
public:
    explicit TakeOnTerminal(std::string const& output)
        : terminal_([&] {
            execl("/bin/sh", "sh", "-c",
                  "\"$0\" record --no-polish -o \"$1\"; stty -a | grep -q -e ' -echo ' && exit 9; exit 0",
                  TAVARO_PROGRAM, output.c_str(), nullptr);
        }) {}

    std::string shownUntil(std::string const& end) const { return terminal_.shownUntil(end); }
    void type(std::string const& keys) const { terminal_.type(keys); }
    int exitCode() { return terminal_.exitCode(); }

private:
    TestTerminal terminal_;
};

}

TEST_F(RecordCommand, keysOfTheTerminalPauseATakeAndEndIt) {
    TakeOnTerminal take(path("take.recproj"));
    EXPECT_THAT(take.shownUntil("Space pauses, q ends, x throws away."), HasSubstr("Recording 0:00"));
    take.type(" ");
    EXPECT_THAT(take.shownUntil("Space goes on, q ends, x throws away."), HasSubstr("paused at 0:0"));
    take.type(" ");
    take.shownUntil("Space pauses, q ends, x throws away.");
    take.type("x");
    take.shownUntil("any other key does not.");
    take.type("n");
    take.shownUntil("Space pauses, q ends, x throws away.");
    take.type("q");
    EXPECT_THAT(take.shownUntil(path("take.recproj") + "\r\n"), HasSubstr("640×360"));
    EXPECT_EQ(take.exitCode(), 0);
    EXPECT_GT(ProjectPackage(path("take.recproj")).load().duration(), 0.05);
}

TEST_F(RecordCommand, aTakeIsSeenPausedAndEndedByTheUsersOtherPrograms) {
    auto const folder = takeSocketFolder();
    EXPECT_TRUE(runningTakes(folder).empty());
    auto killed = start(TAVARO_PROGRAM, {"record", "-o", path("killed.recproj")});
    ASSERT_TRUE(becomesTrue([&] { return runningTakes(folder).size() == 1; }));
    killed.send(SIGKILL);
    killed.wait();
    EXPECT_TRUE(runningTakes(folder).empty());

    auto running = start(TAVARO_PROGRAM, {"record", "-o", path("take.recproj")});
    auto const is = [&](RecorderPhase phase) {
        return becomesTrue([&] {
            auto const takes = runningTakes(folder);
            return takes.size() == 1 && takes.front().phase == phase;
        });
    };
    ASSERT_TRUE(is(RecorderPhase::recording));
    auto const take = runningTakes(folder).front();
    orderTake(take.socket, TakeOrder::pause);
    EXPECT_TRUE(is(RecorderPhase::paused));
    orderTake(take.socket, TakeOrder::pause);
    EXPECT_TRUE(is(RecorderPhase::recording));
    running.send(SIGSTOP); // one that does not answer holds up nobody for long
    EXPECT_TRUE(runningTakes(folder).empty());
    running.send(SIGCONT);
    orderTake(take.socket, TakeOrder::stop);
    EXPECT_EQ(running.wait().exitCode, 0);
    EXPECT_GT(ProjectPackage(path("take.recproj")).load().duration(), 0);
    EXPECT_THAT(names(folder), ElementsAre()) << "nor is what the killed one left";
}

TEST_F(RecordCommand, aTakeIsThrownAwayFromTheTerminalAfterAQuestion) {
    TakeOnTerminal take(path("take.recproj"));
    take.shownUntil("x throws away.");
    take.type("xy");
    take.shownUntil("The recording was discarded.\r\n");
    EXPECT_EQ(take.exitCode(), 0);
    EXPECT_FALSE(fs::exists(path("take.recproj")));
    EXPECT_THAT(names(recordings()), ElementsAre());
}

TEST_F(RecordCommand, aSignalPausesATakeAndACountdownComesBeforeIt) {
    auto running = start(TAVARO_PROGRAM, {"record", "--countdown", "1", "-o", path("take.recproj")});
    ASSERT_TRUE(becomesTrue([&] { return hasWritten(); }));
    running.send(SIGUSR1);
    auto const size = [&] {
        std::uintmax_t bytes = 0;
        for (auto const& entry : fs::recursive_directory_iterator(recordings()))
            if (entry.path().extension() == ".mov") bytes += entry.file_size();
        return bytes;
    };
    auto const stands = [&] {
        auto const before = size();
        auto const until = std::chrono::steady_clock::now() + std::chrono::milliseconds(1200);
        becomesTrue([&] { return std::chrono::steady_clock::now() > until; });
        return size() == before;
    };
    EXPECT_TRUE(becomesTrue(stands)) << "nothing is written in a pause";
    running.send(SIGUSR1);
    EXPECT_TRUE(becomesTrue([&] { return !stands(); }));
    running.send(SIGINT);
    auto const outcome = running.wait();
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_THAT(outcome.error, HasSubstr("Recording begins in 1."));
}

TEST_F(RecordCommand, aTakeOfSomeSecondsBecomesAProject) {
    auto const outcome = tavaro({"record", "--seconds", "1.5", "-o", path("take"), "--json"});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_THAT(outcome.out, HasSubstr("\"path\":\"" + path("take.recproj") + "\""));
    EXPECT_THAT(outcome.out, HasSubstr("\"sourceSize\":{\"height\":360,\"width\":640}"));
    EXPECT_THAT(outcome.out, HasSubstr("\"report\":{"));
    auto const project = ProjectPackage(path("take.recproj")).load();
    EXPECT_EQ(project.sourceSize, (Size2{640, 360}));
    EXPECT_NEAR(project.duration(), 1.5, 0.2);
    EXPECT_FALSE(project.metadata->cursorSamples.empty());
    EXPECT_THAT(names(recordings()), ElementsAre()); // the working folder has gone
}

TEST_F(RecordCommand, interruptingARecordingKeepsTheTake) {
    auto running = start(TAVARO_PROGRAM, {"record", "-o", path("take.recproj")});
    ASSERT_TRUE(becomesTrue([&] { return hasWritten(); }));
    running.send(SIGINT);
    auto const outcome = running.wait();
    EXPECT_EQ(outcome.exitCode, 0) << outcome.error;
    EXPECT_GT(ProjectPackage(path("take.recproj")).load().duration(), 0.2);
}

/// As `timeout` and a terminal that is closed end a program: two signals at once.
TEST_F(RecordCommand, twoSignalsAtOnceEndATakeAndNotTheProgram) {
    for (int const signal : {SIGTERM, SIGHUP}) {
        auto const project = path("take-" + std::to_string(signal) + ".recproj");
        auto running = start(TAVARO_PROGRAM, {"record", "-o", project});
        ASSERT_TRUE(becomesTrue([&] { return hasWritten(); }));
        for (int i = 0; i < 2; ++i) running.send(signal);
        EXPECT_EQ(running.wait().exitCode, 0);
        EXPECT_GT(ProjectPackage(project).load().duration(), 0.2);
    }
}

TEST_F(RecordCommand, nobodyHasToReadWhatIsTold) {
    for (std::string const reader : {"2>&1 | head -c 1", "2>&-", "<&- >&- 2>&-"}) {
        fs::remove_all(path("take.recproj"));
        start("sh", {"-c", "\"$0\" record --no-polish --seconds 0.5 -o \"$1\" " + reader, TAVARO_PROGRAM, path("take")})
            .wait();
        EXPECT_TRUE(fs::exists(path("take.recproj/project.json"))) << reader;
    }
}

TEST_F(RecordCommand, whatCannotBeDoneIsSaidBeforeTheTake) {
    auto const file = path("file");
    std::ofstream(file) << "x";
    for (Arguments const& wrong : std::vector<Arguments>{
             {"--app", ""}, {"--display", ""}, {"--pause-key", ""}, {"-o", ".."}, {"-o", "/"}, {"-o", ".recproj"}}) {
        auto const outcome = tavaro({"record", "--seconds", "0.5", wrong[0], wrong[1]});
        EXPECT_EQ(outcome.exitCode, 2) << wrong[0] << " " << wrong[1] << ": " << outcome.out;
    }
    for (Arguments const& impossible : std::vector<Arguments>{{"-o", path(std::string(300, 'x'))},
                                                              {"-o", "/proc/x"},
                                                              {"-o", file + "/x"},
                                                              {"--pause-key", "p"},
                                                              {"--pause-key", "shift+Return"}}) {
        auto const outcome = tavaro({"record", "--seconds", "0.5", impossible[0], impossible[1]});
        EXPECT_EQ(outcome.exitCode, 1) << impossible[1];
        EXPECT_FALSE(fs::exists(recordings()) && !fs::is_empty(recordings())) << impossible[1];
    }
}

TEST_F(RecordCommand, aTakeWhoseProgramDiedIsBroughtBack) {
    auto running = start(TAVARO_PROGRAM, {"record", "-o", path("take.recproj")});
    ASSERT_TRUE(becomesTrue([&] { return hasWritten(); }));
    running.send(SIGKILL);
    running.wait();
    EXPECT_FALSE(fs::exists(path("take.recproj")));
    auto const modeOf = [](fs::path const& file) { return fs::status(file).permissions(); };
    for (auto const& take : fs::directory_iterator(recordings())) {
        EXPECT_EQ(modeOf(take.path()), fs::perms(0700)) << "nobody else comes in";
        EXPECT_EQ(modeOf(take.path() / "segment-000.mov"), fs::perms(0600));
    }
    EXPECT_THAT(tavaro({"recover"}).out, HasSubstr("(display)"));
    for (Arguments const& work : {Arguments{"library"}, Arguments{"library", "--json"},
                                  Arguments{"record", "--seconds", "0.2", "-o", path("next")}})
        EXPECT_THAT(tavaro(work).error, HasSubstr("We found an unfinished recording of 20")) << work[0];
    EXPECT_THAT(tavaro({"recover", "--json"}).out, HasSubstr("\"mode\":\"display\""));
    auto const outcome = tavaro({"recover", "last", "-o", path("take.recproj")});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
    auto const project = ProjectPackage(path("take.recproj")).load();
    fs::path const movie = path("take.recproj/assets/" + project.timeline.clips.at(0).asset);
    EXPECT_GT(MovieReader(movie).info().duration, 0.2);
    EXPECT_EQ(modeOf(movie), fs::perms(0600));
    EXPECT_EQ(modeOf(path("take.recproj")), fs::perms(0700));
    EXPECT_THAT(tavaro({"recover"}).out, HasSubstr("no unfinished recording"));
    EXPECT_EQ(tavaro({"recover", "--json"}).out, "[]\n");
    EXPECT_EQ(tavaro({"library"}).error, "");
}

TEST_F(RecordCommand, aTakeToHideSecretsInIsLookedAtAlsoWhenItsProgramDied) {
    auto running = start(TAVARO_PROGRAM, {"record", "--hide-secrets", "-o", path("take.recproj")});
    ASSERT_TRUE(becomesTrue([&] { return hasWritten(); }));
    running.send(SIGKILL);
    running.wait();
    auto const outcome = tavaro({"recover", "last", "-o", path("take.recproj")});
    ASSERT_EQ(outcome.exitCode, 0) << outcome.error;
    if (outcome.error.find("was not looked at") != std::string::npos) {
        EXPECT_THAT(tavaro({"export", path("take"), "-o", path("film.mp4")}).error, HasSubstr("tavaro scan"));
        GTEST_SKIP() << "Nothing reads text here: " << outcome.error;
    }
    EXPECT_TRUE(ProjectPackage(path("take.recproj")).load().redactionScan);
    EXPECT_FALSE(fs::exists(path("take.recproj/scan.due")));
}

TEST_F(RecordCommand, whoeverDiscardsARecordingReadsWhatIsGone) {
    for (int take = 1; take <= 2; ++take) {
        auto const killed = start(TAVARO_PROGRAM, {"record", "-o", path("take.recproj")});
        ASSERT_TRUE(becomesTrue([&] { return hasWritten(take); }));
    }
    auto const said = tavaro({"recover", "last", "--discard"});
    EXPECT_EQ(said.exitCode, 0) << said.error;
    EXPECT_THAT(said.out, AllOf(HasSubstr("Discarded the recording of 20"), HasSubstr("Its files are removed.\n")));
    EXPECT_THAT(tavaro({"recover", "last", "--discard", "--json"}).out,
                HasSubstr("{\"discarded\":{\"estimatedDuration\":"));
    EXPECT_TRUE(names(recordings()).empty());
}

TEST_F(RecordCommand, sourcesThatCannotBeFilmedAreExplained) {
    for (Arguments const& source : std::vector<Arguments>{{"--area", "5000,5000,100,100"},
                                                          {"--display", "display-9"},
                                                          {"--window", "window-1"},
                                                          {"--app", "Nobody"}}) {
        Arguments arguments{"record", "--seconds", "1", "-o", path("take.recproj")};
        arguments.insert(arguments.end(), source.begin(), source.end());
        auto const outcome = tavaro(arguments);
        EXPECT_EQ(outcome.exitCode, 1) << source[1];
        EXPECT_GT(outcome.error.size(), 20u) << source[1];
        EXPECT_FALSE(fs::exists(path("take.recproj"))) << source[1];
    }
    write("file", "in the way");
    auto const misplaced = tavaro({"record", "--seconds", "60", "-o", path("file/take.recproj")});
    EXPECT_THAT(misplaced.error, HasSubstr(path("file") + "” is not a folder")) << "before the take, not after it";
    setenv("DISPLAY", ":987", 1);
    EXPECT_EQ(tavaro({"record", "--seconds", "1", "-o", path("take.recproj")}).exitCode, 1);
    EXPECT_EQ(tavaro({"sources"}).exitCode, 1);
}

TEST_F(RecordCommand, aFullDiskEndsTheTakeAndKeepsWhatWasThere) {
    // Small enough to stop the movie's file and any project's, however few frames a busy machine films; large enough
    // for the take's manifest and a fragment of the movie.
    auto const outcome = tavaroWithFilesUpTo(3'000, {"record", "--seconds", "15", "-o", path("take.recproj")});
    EXPECT_EQ(outcome.exitCode, 1);
    EXPECT_THAT(outcome.error, HasSubstr("Could not write the recording: "));
    EXPECT_FALSE(fs::exists(path("take.recproj")));
    auto const recovered = tavaro({"recover", "last", "-o", path("take.recproj")});
    ASSERT_EQ(recovered.exitCode, 0) << recovered.error;
    EXPECT_GT(ProjectPackage(path("take.recproj")).load().duration(), 0.2);
}
