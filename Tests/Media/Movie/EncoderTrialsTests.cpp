#include <future>
#include <stdexcept>

#include <gmock/gmock.h>

#include <TavaroMedia/Errors/MediaError.h>
#include <TavaroMedia/Frames/Private/EncoderPlanes.h>
#include <TavaroMedia/Movie/Private/EncoderTrials.h>
#include <TavaroMedia/Movie/Private/HardwareEncoder.h>
#include <Tests/Capture/TemporaryFolder.h>
#include <Tests/Media/Files/FullDisk.h>
#include <Tests/Media/Movie/NumberedMovie.h>

namespace tavaro {
namespace {

using testing::ElementsAre;

std::vector<std::string> const candidates{"broken", "angry", "good", "better"};

struct Tried {
    std::vector<std::string> names;
    EncoderTrials::Trial trial = [this](std::string const& name) {
        names.push_back(name);
        if (name == "angry") throw std::runtime_error("the driver is out of date");
        return name != "broken";
    };
};

TEST(EncoderTrials, theFirstThatWorksIsTakenAndFailuresArePassedOver) {
    EncoderTrials trials;
    Tried tried;
    EXPECT_EQ(trials.firstThatWorks(candidates, "1080p", tried.trial), "good");
    EXPECT_THAT(tried.names, ElementsAre("broken", "angry", "good"));
    EXPECT_EQ(trials.firstThatWorks({}, "1080p", tried.trial), std::nullopt);
}

TEST(EncoderTrials, whatATryShowedIsRememberedForItsPurposeAlone) {
    EncoderTrials trials;
    Tried tried;
    trials.firstThatWorks(candidates, "1080p", tried.trial);
    tried.names.clear();
    EXPECT_EQ(trials.firstThatWorks(candidates, "1080p", tried.trial), "good");
    EXPECT_THAT(tried.names, ElementsAre());
    EXPECT_EQ(trials.firstThatWorks(candidates, "8K", [](auto const& name) { return name == "better"; }), "better");
}

TEST(EncoderTrials, aDriverThatHangsIsGivenUpAndNotAskedAgain) {
    EncoderTrials trials(std::chrono::milliseconds(20));
    auto const release = std::make_shared<std::promise<void>>();
    auto const released = release->get_future().share();
    auto const left = std::make_shared<std::promise<void>>();
    auto const asked = std::make_shared<int>(0);
    auto const trial = [=](std::string const& name) {
        if (name != "broken") return true;
        ++*asked;
        released.wait();
        left->set_value();
        return true;
    };
    for (int i = 0; i < 2; ++i) EXPECT_EQ(trials.firstThatWorks(candidates, "1080p", trial), "angry");
    EXPECT_EQ(*asked, 1);
    release->set_value();
    left->get_future().wait();
}

TEST(EncoderInput, chromaIsInterleavedAndNothingElseChanges) {
    EncoderPicturePool pool(322, 182, AV_PIX_FMT_YUV420P);
    auto picture = pool.take();
    fillPicture(picture, numberedImage(322, 182, 77).view());
    auto& drawn = *picture.planes().frame;
    drawn.pts = 4711;
    ffmpeg::CodecContext const encoder(avcodec_alloc_context3(nullptr));
    EncoderInput input(EncoderInput::Form::interleavedChroma);
    auto const& converted = *input.converted(&drawn, *encoder);
    EXPECT_EQ(converted.pts, 4711);
    EXPECT_EQ(converted.format, AV_PIX_FMT_NV12);
    for (int y = 0; y < 182; ++y) {
        for (int x = 0; x < 322; ++x)
            ASSERT_EQ(converted.data[0][y * converted.linesize[0] + x], drawn.data[0][y * drawn.linesize[0] + x]);
    }
    for (int y = 0; y < 91; ++y) {
        for (int x = 0; x < 161; ++x) {
            for (int plane : {0, 1})
                ASSERT_EQ(converted.data[1][y * converted.linesize[1] + 2 * x + plane],
                          drawn.data[1 + plane][y * drawn.linesize[1 + plane] + x]);
        }
    }
}

TEST(HardwareEncoder, aMachineWithoutHardwareWritesTheSoftwareMovieAndSaysSoWhenHardwareIsInsistedOn) {
    TemporaryFolder folder;
    for (auto const codec : {MovieCodec::h264, MovieCodec::hevc}) {
        auto settings = smallMovie();
        settings.codec = codec;
        settings.threads = 1;
        if (openWorkingHardware(settings)) GTEST_SKIP() << "this machine has video hardware";
        writeNumbered(folder.path() / "software.mp4", settings, steadyTimes(10, 30));
        settings.encoder = EncoderChoice::automatic;
        writeNumbered(folder.path() / "automatic.mp4", settings, steadyTimes(10, 30));
        EXPECT_TRUE(bytesOf(folder.path() / "software.mp4") == bytesOf(folder.path() / "automatic.mp4"));
        settings.encoder = EncoderChoice::hardware;
        try {
            MovieWriter const writer(folder.path() / "hardware.mp4", settings);
            ADD_FAILURE() << "written without hardware";
        } catch (MediaError const& error) {
            EXPECT_EQ(error.kind(), MediaError::Kind::unsupported);
            EXPECT_EQ(error.detail(), std::string("no video hardware here encodes ") +
                                          (codec == MovieCodec::h264 ? "H.264" : "HEVC") + " at 320 × 180");
        }
    }
    EXPECT_EQ(filesIn(folder.path()), 2);
}

TEST(HardwareEncoder, whateverHardwareThereIsMakesAMovieThatReadsBack) {
    TemporaryFolder folder;
    auto settings = smallMovie();
    settings.encoder = EncoderChoice::hardware;
    settings.bitrate = 4'000'000;
    if (!openWorkingHardware(settings)) GTEST_SKIP() << "no video hardware";
    auto const file = folder.path() / "movie.mp4";
    writeNumbered(file, settings, steadyTimes(45, 30));
    MovieReader reader(file);
    EXPECT_EQ(reader.info().frameCount, 45);
    for (int n = 0; n < 45; n += 4) EXPECT_EQ(numberAt(reader, (n + 0.5) / 30), n);
}

}
}
