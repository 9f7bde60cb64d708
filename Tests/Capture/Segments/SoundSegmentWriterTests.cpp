#include "../TemporaryFolder.h"

#include <TavaroCapture/Segments/Private/JoinStreams.h>
#include <TavaroCapture/Segments/Private/SoundSegmentWriter.h>
#include <TavaroMedia/Audio/AudioReader.h>

#include <cmath>
#include <gtest/gtest.h>

namespace tavaro {

namespace {

class SoundSegmentWriterTest : public testing::Test {
protected:
    SoundSegmentWriter::Options options() { return {manifest, StreamRole::microphone, 0.5}; }
    static std::vector<StereoSample> constant(double seconds, float value) {
        return std::vector<StereoSample>(static_cast<std::size_t>(std::llround(seconds * audioRate)), {value, -value});
    }
    /// The whole stream, every hundredth of a second.
    std::vector<float> heard(StreamRecord const& stream) {
        auto const joined = joinStreams(folder.path(), {stream});
        EXPECT_EQ(joined.streams.size(), 1u);
        AudioReader reader(joined.streams.at(0).file);
        std::vector<StereoSample> samples(audioRate * 10);
        samples.resize(reader.read(0, samples));
        std::vector<float> result;
        for (std::size_t i = audioRate / 200; i < samples.size(); i += audioRate / 100)
            result.push_back(std::round(samples[i].left * 100) / 100);
        return result;
    }

    TemporaryFolder folder;
    std::shared_ptr<TakeManifest> manifest = std::make_shared<TakeManifest>(folder.path(), UUID::random());
};

}

TEST_F(SoundSegmentWriterTest, whatIsMissingIsSilenceAndWhatWaversIsNot) {
    SoundSegmentWriter writer(options());
    writer.append(constant(0.3, 0.25f), -0.1);
    writer.append(constant(0.3, 0.5f), 0.205); // 5 ms late: a wavering clock
    writer.append(constant(0.3, 0.75f), 1.0);  // half a second is missing
    writer.append(constant(0.3, 0.125f), 1.2); // the first 0.1 s of it were there before
    writer.finish();
    auto const record = manifest->record();
    ASSERT_EQ(record.streams.size(), 1u);
    auto const& stream = record.streams[0];
    EXPECT_EQ(stream.offset, -0.1);
    EXPECT_EQ(*readManifest(folder.path()), record);
    ASSERT_EQ(stream.segments.size(), 4u);
    for (std::size_t i = 0; i < 4; ++i) EXPECT_EQ(stream.segments[i].start, 0.5 * static_cast<double>(i));
    EXPECT_NEAR(stream.segments[3].duration, 0.1, 1e-9);

    auto const levels = heard(stream);
    ASSERT_EQ(levels.size(), 160u);
    for (std::size_t i = 0; i < levels.size(); ++i) {
        float const wanted = i < 30 ? 0.25f : i < 60 ? 0.5f : i < 110 ? 0 : i < 140 ? 0.75f : 0.13f;
        EXPECT_EQ(levels[i], wanted) << i;
    }
}

}
