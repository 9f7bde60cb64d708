#include <TavaroPlatform/Processes/DetachedProcess.h>

#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <unistd.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

bool becomesTrue(auto const& condition) {
    for (int i = 0; i < 500; ++i) {
        if (condition()) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return false;
}

}

TEST(DetachedProcess, aProgramIsFoundInTheSearchPathAndNothingElseIs) {
    auto const shell = findProgram("sh");
    ASSERT_TRUE(shell);
    EXPECT_TRUE(shell->is_absolute());
    EXPECT_FALSE(findProgram("no-such-program-anywhere"));
    EXPECT_FALSE(findProgram("")) << "a folder is no program";
}

TEST(DetachedProcess, runsInASessionOfItsOwnAndAFailureIsSeen) {
    std::string pattern = (fs::temp_directory_path() / "tavaro-process-XXXXXX").string();
    fs::path const folder = mkdtemp(pattern.data());
    auto const file = folder / "session";
    auto const script = "(cut -d' ' -f6 /proc/self/stat; pwd) > " + file.string() + "; cat; exit 3";
    auto process = DetachedProcess::start({findProgram("sh")->string(), "-c", script});
    ASSERT_TRUE(process);
    EXPECT_TRUE(becomesTrue([&] { return process->hasFailed(); })) << "cat reads nothing from this program";
    long session = 0;
    std::string workingFolder;
    std::ifstream(file) >> session >> workingFolder;
    EXPECT_EQ(workingFolder, "/");
    EXPECT_NE(session, 0);
    EXPECT_NE(session, static_cast<long>(getsid(0)));
    fs::remove_all(folder);
}

TEST(DetachedProcess, hasTheVariablesOfHereAndThoseThatAreGivenBefore) {
    setenv("TAVARO_HERE", "1", 1);
    setenv("TAVARO_BOTH", "here", 1);
    auto const script = "test \"$TAVARO_HERE $TAVARO_BOTH $TAVARO_MORE\" = '1 given 2' && exit 3";
    auto process =
        DetachedProcess::start({findProgram("sh")->string(), "-c", script}, {"TAVARO_BOTH=given", "TAVARO_MORE=2"});
    EXPECT_TRUE(becomesTrue([&] { return process->hasFailed(); }));
    unsetenv("TAVARO_HERE");
    unsetenv("TAVARO_BOTH");
}

TEST(DetachedProcess, whatIsNoProgramDoesNotStart) {
    EXPECT_FALSE(DetachedProcess::start({"/no/such/program"}));
    EXPECT_FALSE(DetachedProcess::start({}));
}

}
