#include <TavaroMedia/Files/OutputFile.h>

#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <fstream>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

/// A folder of its own, gone when this is.
class OutputFiles : public testing::Test {
protected:
    void SetUp() override { fs::create_directories(folder_); }
    void TearDown() override { fs::remove_all(folder_); }

    fs::path made(std::string const& name, std::chrono::minutes age) {
        auto const file = folder_ / name;
        std::ofstream(file) << "half a film";
        fs::last_write_time(file, fs::file_time_type::clock::now() - age);
        return file;
    }

    fs::path const folder_ = fs::path(testing::TempDir()) / ("tavaro-output-" + std::to_string(getpid()));
};

}

TEST_F(OutputFiles, whatAKilledProcessLeftOfTheSameFileIsRemovedAndNothingElse) {
    using std::chrono::minutes;
    auto const abandoned = made(".film.4711-0.part.mp4", minutes(10));
    auto const fresh = made(".film.4711-1.part.mp4", minutes(0));
    auto const ofAnother = made(".film two.4711-0.part.mp4", minutes(10));
    auto const notOurs = made(".film.notes-1.part.mp4", minutes(10));
    OutputFile const file(folder_ / "film.mp4", OutputFile::Place::beside);
    EXPECT_FALSE(fs::exists(abandoned));
    EXPECT_TRUE(fs::exists(fresh));
    EXPECT_TRUE(fs::exists(ofAnother));
    EXPECT_TRUE(fs::exists(notOurs));
}

TEST_F(OutputFiles, aFileThatIsStillBeingWrittenIsLeftAloneHoweverOldItIs) {
    OutputFile slow(folder_ / "film.mp4", OutputFile::Place::beside);
    auto const hidden = slow.writtenPath();
    fs::last_write_time(hidden, fs::file_time_type::clock::now() - std::chrono::hours(3));
    OutputFile const other(folder_ / "film.mp4", OutputFile::Place::beside);
    EXPECT_TRUE(fs::exists(hidden));
    slow.commit();
    EXPECT_TRUE(fs::exists(folder_ / "film.mp4"));
}

}
