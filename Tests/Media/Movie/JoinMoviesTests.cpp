#include <gtest/gtest.h>

#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Movie/JoinMovies.h>
#include <Tests/Capture/TemporaryFolder.h>
#include <Tests/Media/Files/FullDisk.h>
#include <Tests/Media/Movie/NumberedMovie.h>

namespace tavaro {
namespace {

using Kind = MediaError::Kind;

MovieWriterSettings segmentSettings() {
    auto settings = smallMovie();
    settings.container = MovieContainer::mov;
    settings.intent = MovieIntent::live;
    return settings;
}

/// Segments of 40 frames, numbered through, each starting where the one before it ends.
std::vector<MoviePart> writeSegments(std::filesystem::path const& folder, int count) {
    std::vector<MoviePart> parts;
    for (int i = 0; i < count; ++i) {
        auto const file = folder / ("segment-" + std::to_string(i) + ".mov");
        writeNumbered(file, segmentSettings(), steadyTimes(40, 30), 40 * i);
        parts.push_back({file, 40 * i / 30.0});
    }
    return parts;
}

void expectNumbered(std::filesystem::path const& file, int count) {
    MovieReader reader(file);
    EXPECT_EQ(reader.info().frameCount, count);
    EXPECT_NEAR(reader.info().duration, count / 30.0, 0.001);
    for (int n = count - 1; n >= 0; n -= 3) ASSERT_EQ(numberAt(reader, n / 30.0), n);
    for (int n = 0; n < count; ++n) ASSERT_EQ(numberAt(reader, n / 30.0), n);
}

TEST(JoinMovies, joinedSegmentsShowEveryFrameAtItsTime) {
    TemporaryFolder folder;
    auto const parts = writeSegments(folder.path(), 3);
    for (auto const* name : {"joined.mov", "joined.mp4"}) {
        auto const output = folder.path() / name;
        auto const joined = joinMovies(parts, output);
        EXPECT_EQ(joined.frameCount, 120);
        EXPECT_NEAR(joined.duration, 4.0, 0.001);
        EXPECT_TRUE(joined.unreadable.empty());
        expectNumbered(output, 120);
        auto const bytes = bytesOf(output);
        EXPECT_LT(bytes.find("moov"), bytes.find("mdat")) << "the index stands behind the pictures";
    }
}

TEST(JoinMovies, aLastSegmentCutShortGivesTheFramesItHas) {
    TemporaryFolder folder;
    auto const parts = writeSegments(folder.path(), 2);
    auto const whole = bytesOf(parts[1].file);
    auto const output = folder.path() / "joined.mov";
    for (int tenth = 0; tenth < 10; ++tenth) {
        writeBytes(parts[1].file,
                   std::string_view(whole).substr(0, whole.size() * static_cast<std::size_t>(tenth) / 10));
        auto const joined = joinMovies(parts, output);
        EXPECT_GE(joined.frameCount, 40);
        EXPECT_EQ(joined.unreadable.size(), joined.frameCount == 40 ? 1u : 0u);
        expectNumbered(output, static_cast<int>(joined.frameCount));
    }
}

TEST(JoinMovies, aMissingSegmentLeavesAStillPictureAndKeepsTheTimes) {
    TemporaryFolder folder;
    auto parts = writeSegments(folder.path(), 3);
    std::filesystem::remove(parts[1].file);
    auto const output = folder.path() / "joined.mov";
    auto const joined = joinMovies(parts, output);
    EXPECT_EQ(joined.unreadable, std::vector{parts[1].file});
    MovieReader reader(output);
    EXPECT_EQ(numberAt(reader, 39 / 30.0), 39);
    EXPECT_EQ(numberAt(reader, 60 / 30.0), 39);
    EXPECT_EQ(numberAt(reader, 80 / 30.0), 80);
    EXPECT_EQ(numberAt(reader, 119 / 30.0), 119);
}

TEST(JoinMovies, framesPastTheNextSegmentsStartAreLeftOut) {
    TemporaryFolder folder;
    auto parts = writeSegments(folder.path(), 2);
    parts[1].start = 30 / 30.0;
    auto const output = folder.path() / "joined.mov";
    EXPECT_EQ(joinMovies(parts, output).frameCount, 70);
    MovieReader reader(output);
    EXPECT_EQ(numberAt(reader, 29 / 30.0), 29);
    EXPECT_EQ(numberAt(reader, 30 / 30.0), 40);
}

TEST(JoinMovies, whatCannotBeJoinedIsRefusedAndLeavesNothing) {
    TemporaryFolder folder;
    auto parts = writeSegments(folder.path(), 2);
    auto const output = folder.path() / "joined.mov";
    auto const kindOf = [&](std::vector<MoviePart> const& some) {
        try {
            joinMovies(some, output);
            ADD_FAILURE() << "joined";
        } catch (MediaError const& error) {
            EXPECT_FALSE(std::filesystem::exists(output));
            EXPECT_EQ(filesIn(folder.path()), 2);
            return error.kind();
        }
        return Kind::missing;
    };
    EXPECT_EQ(kindOf({}), Kind::unreadable);
    EXPECT_EQ(kindOf({{folder.path() / "none.mov", 0}}), Kind::unreadable);
    {
        FullDisk const full(60'000);
        EXPECT_EQ(kindOf(parts), Kind::diskFull);
    }
    auto other = segmentSettings();
    other.width = 160;
    writeNumbered(parts[1].file, other, steadyTimes(10, 30));
    EXPECT_EQ(kindOf(parts), Kind::unsupported);
}

}
}
