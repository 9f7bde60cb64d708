#include "../TemporaryFolder.h"

#include <TavaroCapture/Segments/Private/SegmentWriter.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroMedia/Frames/Image.h>
#include <TavaroMedia/Movie/JoinMovies.h>
#include <TavaroMedia/Movie/MovieReader.h>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <memory>

namespace tavaro {

namespace {

/// Writes frames at those times; false for each that was refused.
std::vector<bool> write(SegmentWriter& writer, std::vector<double> const& times) {
    Image image(64, 48);
    std::vector<bool> result;
    for (double const time : times) {
        auto picture = writer.picture();
        fillPicture(picture, image.view());
        result.push_back(writer.append(std::move(picture), time));
    }
    return result;
}

std::vector<double> frames(int from, int to, int fps = 60) {
    std::vector<double> result;
    for (int i = from; i < to; ++i) result.push_back(static_cast<double>(i) / fps);
    return result;
}

std::string drawn(std::vector<SegmentRecord> const& segments) {
    std::string result;
    for (auto const& s : segments) {
        if (!result.empty()) result += ' ';
        result += fmt::format("{}[{:.4g}-{:.4g}]", s.index, s.start, s.start + s.duration);
    }
    return result;
}

class SegmentWriterTest : public testing::Test {
protected:
    SegmentWriter::Options options(double segmentDuration) {
        return {.manifest = manifest, .width = 64, .height = 48, .fps = 60, .segmentDuration = segmentDuration};
    }
    std::int64_t framesOf(int segment) {
        return MovieReader(folder.path() / segmentFileName(segment)).info().frameCount.value_or(-1);
    }

    TemporaryFolder folder;
    std::shared_ptr<TakeManifest> manifest = std::make_shared<TakeManifest>(folder.path(), UUID::random());
};

}

TEST_F(SegmentWriterTest, aSegmentEndsAtTheFirstFrameThatReachesTheLimit) {
    SegmentWriter writer(options(0.5));
    writer.prepare();
    write(writer, frames(0, 95));
    writer.finish();
    EXPECT_EQ(drawn(writer.segments()), "0[0-0.5] 1[0.5-1] 2[1-1.5] 3[1.5-1.583]");
    EXPECT_EQ(framesOf(0), 30);
    EXPECT_EQ(framesOf(1), 30);
    EXPECT_EQ(framesOf(2), 30);
    EXPECT_EQ(framesOf(3), 5);
    auto const stored = readManifest(folder.path());
    ASSERT_TRUE(stored);
    EXPECT_FALSE(stored->isComplete) << "other streams may still be written";
    EXPECT_EQ(stored->segments, writer.segments());

    std::vector<MoviePart> parts;
    for (auto const& s : writer.segments()) parts.push_back({folder.path() / s.fileName, s.start});
    auto const joined = joinMovies(parts, folder.path() / "joined.mov");
    EXPECT_EQ(joined.frameCount, 95);
    EXPECT_NEAR(joined.duration, 95.0 / 60, 1e-4);
}

TEST_F(SegmentWriterTest, noFrameIsMoreThanASecondAfterAKeyFrame) {
    SegmentWriter writer(options(10));
    writer.prepare();
    write(writer, frames(0, 200));
    writer.finish();
    auto const command = "ffprobe -v error -show_entries packet=flags -of csv=p=0 '" +
                         (folder.path() / segmentFileName(0)).string() + "' 2>/dev/null";
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> const pipe(popen(command.c_str(), "r"), pclose);
    int frame = 0, key = 0;
    for (std::array<char, 16> line{}; std::fgets(line.data(), line.size(), pipe.get()); ++frame) {
        if (line[0] == 'K') key = frame;
        ASSERT_LT(frame - key, 60) << frame;
    }
    if (frame == 0) GTEST_SKIP() << "no ffprobe program";
    EXPECT_EQ(frame, 200);
}

TEST_F(SegmentWriterTest, lateFramesMoveTheBoundaryAndLeaveNoSegmentOut) {
    SegmentWriter writer(options(0.5));
    writer.prepare();
    write(writer, {0, 0.4, 0.7, 1.1, 1.15, 3.0}); // frames were lost in between
    writer.finish();
    EXPECT_EQ(drawn(writer.segments()), "0[0-0.7] 1[0.7-3] 2[3-3.017]");
}

TEST_F(SegmentWriterTest, aShortTakeIsOneSegment) {
    SegmentWriter writer(options(10));
    writer.prepare();
    write(writer, frames(0, 2));
    EXPECT_FALSE(readManifest(folder.path())->isComplete);
    writer.finish();
    EXPECT_EQ(drawn(writer.segments()), "0[0-0.03333]");
    EXPECT_FALSE(std::filesystem::exists(folder.path() / segmentFileName(1)));
    EXPECT_NEAR(writer.duration(), 2.0 / 60, 1e-9);
}

TEST_F(SegmentWriterTest, aRefusedFrameIsCountedAndTheTakeGoesOn) {
    SegmentWriter writer(options(10));
    writer.prepare();
    EXPECT_EQ(write(writer, {0, 0.1, 0.1, 0.05, 0.2}), (std::vector<bool>{true, true, false, false, true}));
    writer.finish();
    EXPECT_EQ(writer.framesWritten(), 3);
    EXPECT_EQ(writer.writerRejectedFrames(), 2);
    EXPECT_EQ(framesOf(0), 3);
}

TEST_F(SegmentWriterTest, aFolderThatIsGoneFailsBeforeTheTake) {
    auto missing = options(10);
    missing.manifest = std::make_shared<TakeManifest>(folder.path() / "missing", UUID::random());
    SegmentWriter writer(missing);
    try {
        writer.prepare();
        FAIL();
    } catch (CaptureError const& error) {
        EXPECT_EQ(error.kind, CaptureError::Kind::writeFailed);
        EXPECT_TRUE(std::string(error.what()).starts_with("Could not write the recording: ")) << error.what();
    }
}

}
