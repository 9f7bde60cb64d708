#include <TavaroMedia/Audio/AudioFileWriter.h>
#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Audio/JoinSounds.h>
#include <TavaroMedia/Errors/MediaError.h>

#include <gtest/gtest.h>

#include <fstream>
#include <vector>

using namespace tavaro;
namespace fs = std::filesystem;

namespace {

class JoinSounds : public testing::Test {
protected:
    JoinSounds() { fs::create_directories(folder); }
    ~JoinSounds() override { fs::remove_all(folder); }

    static std::vector<StereoSample> constant(double seconds, float value) {
        return std::vector<StereoSample>(static_cast<std::size_t>(seconds * audioRate), {value, -value});
    }
    fs::path sound(std::string const& name, double seconds, float value) const {
        AudioFileWriter writer(folder / name, AudioFileFormat::whole16);
        writer.append(constant(seconds, value));
        writer.finish();
        return folder / name;
    }

    fs::path const folder = fs::path(testing::TempDir()) / "join-sounds";
};

}

TEST_F(JoinSounds, eachPartIsWhereItBeginsAndTheRestIsSilence) {
    std::ofstream(folder / "damaged.caf") << "damaged";
    auto const joined = joinSounds({{folder / "missing.caf", 0},
                                    {sound("a.caf", 1, 0.25f), 0.5},
                                    {sound("b.caf", 1, 0.5f), 1}, // before the end of the one before it
                                    {folder / "damaged.caf", 2},
                                    {sound("c.caf", 0.5, -0.75f), 2.5}},
                                   folder / "joined.caf");
    EXPECT_EQ(joined.duration, 3);
    EXPECT_EQ(joined.unreadable.size(), 2u);
    EXPECT_EQ(readableSeconds(folder / "joined.caf"), 3);
    AudioReader reader(folder / "joined.caf");
    std::vector<StereoSample> samples(3 * audioRate);
    ASSERT_EQ(reader.read(0, samples), samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
        std::size_t const half = i / (audioRate / 2);
        float const wanted[] = {0, 0.25f, 0.5f, 0.5f, 0, -0.75f};
        ASSERT_EQ(samples[i], (StereoSample{wanted[half], -wanted[half]})) << i;
    }
    EXPECT_THROW(joinSounds({{folder / "damaged.caf", 0}}, folder / "none.caf"), MediaError);
    EXPECT_FALSE(fs::exists(folder / "none.caf"));
}

TEST_F(JoinSounds, aFileWhoseWriterDiedIsReadAlmostToItsEnd) {
    auto const file = folder / "live.caf";
    AudioFileWriter writer(file, AudioFileFormat::whole16, 2, AudioFileIntent::live);
    for (int i = 0; i < 20; ++i) writer.append(constant(0.02, 0.25f));
    fs::copy(file, folder / "copy.caf"); // what the disk has when the process dies now
    EXPECT_GT(readableSeconds(folder / "copy.caf"), 0.3);
    auto const joined = joinSounds({{folder / "copy.caf", 0}}, folder / "joined.caf");
    std::vector<StereoSample> samples(audioRate / 4);
    EXPECT_EQ(AudioReader(folder / "joined.caf").read(0, samples), samples.size());
    EXPECT_EQ(samples.back(), (StereoSample{0.25f, -0.25f}));
    EXPECT_TRUE(joined.unreadable.empty());
}

TEST_F(JoinSounds, aFileThatClaimsToGoOnForYearsCostsNoMoreThanItsBytes) {
    auto const file = sound("claims.caf", 1, 0.25f);
    constexpr std::streamoff packetLength = 40; // in the header: samples a packet
    std::fstream(file, std::ios::in | std::ios::out | std::ios::binary).seekp(packetLength).put(1);
    double const most = static_cast<double>(fs::file_size(file)) / audioRate;
    EXPECT_LT(readableSeconds(file), most);
    auto const joined = joinSounds({{file, 0}, {file, 1}}, folder / "joined.caf");
    EXPECT_LT(joined.duration, 1 + most);
}
