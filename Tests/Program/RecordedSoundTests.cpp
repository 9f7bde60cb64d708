#include "../Capture/TestDisplay.h"
#include "../Capture/TestSoundServer.h"
#include "ProcessFixture.h"

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Audio/AudioReader.h>
#include <TavaroMedia/Frames/FrameConverter.h>
#include <TavaroMedia/Movie/MovieReader.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <gmock/gmock.h>
#include <unistd.h>

using namespace tavaro;
using ::testing::HasSubstr;
namespace fs = std::filesystem;

namespace {

constexpr int width = 640;
constexpr int height = 360;

/// Takes of a virtual display that flashes while clicks are said and played.
class RecordedSound : public ProcessFixture {
protected:
    void SetUp() override {
        if (!TestDisplay::isInstalled() || !TestSoundServer::isInstalled()) GTEST_SKIP() << "no Xvfb or no pulseaudio";
        display_.emplace(width, height);
        client_.emplace(display_->name());
        window_ = client_->makeWindow({.frame = {0, 0, width, height}});
        server.emplace();
        setenv("DISPLAY", display_->name().c_str(), 1);
        setenv("PULSE_SERVER", server->address().c_str(), 1);
    }
    ~RecordedSound() override {
        unsetenv("DISPLAY");
        unsetenv("PULSE_SERVER");
    }

    /// Black, but for a tenth of a second in which it is white. The moment of the media clock at which that began.
    double flash() {
        client_->fill(window_, {0, 0, width, height}, 0xffffff);
        double const at = mediaClockNow();
        usleep(100'000);
        client_->fill(window_, {0, 0, width, height}, 0);
        return at;
    }
    bool isTaking() const {
        auto const recordings = folder / "data/Tavaro/Recordings";
        std::error_code none;
        for (auto const& entry : fs::recursive_directory_iterator(recordings, none))
            if (entry.path().extension() == ".caf" && entry.file_size() > 20'000) return true;
        return false;
    }

    std::optional<TestSoundServer> server;

private:
    std::optional<TestDisplay> display_;
    std::optional<TestClient> client_;
    std::uint32_t window_ = 0;
};

/// Seconds of a film at which it turns white.
std::vector<double> flashesIn(fs::path const& film) {
    MovieReader reader(film);
    FrameConverter converter;
    Image image;
    std::vector<double> result;
    bool isWhite = false;
    for (double at = 0; at < reader.info().duration; at += 1.0 / 240) {
        converter.convert(reader.frame(at), image);
        bool const now = image.row(image.height() / 3)[4 * (image.width() / 3)] > 128; // no pointer there
        if (now && !isWhite) result.push_back(at);
        isWhite = now;
    }
    return result;
}

/// Seconds at which something clicks, after at least 10 ms of quiet.
std::vector<double> clicksIn(fs::path const& film) {
    AudioReader reader(film);
    std::vector<StereoSample> samples(audioRate);
    std::vector<double> result;
    double last = -1;
    for (std::int64_t from = 0;; from += audioRate) {
        auto const count = reader.read(from, samples);
        for (std::size_t i = 0; i < count; ++i) {
            double const at = static_cast<double>(from + static_cast<std::int64_t>(i)) / audioRate;
            if (std::abs(samples[i].left) < 0.25f) continue;
            if (at > last + 0.01) result.push_back(at);
            last = at;
        }
        if (count < samples.size()) return result;
    }
}

double nearest(std::vector<double> const& moments, double to) {
    double best = 1e9;
    for (double const moment : moments)
        if (std::abs(moment - to) < std::abs(best)) best = moment - to;
    return best;
}

}

TEST_F(RecordedSound, inTheFilmEveryClickIsWhereItWasInThePicture) {
    SpokenClicks const said(server->microphonePipe());
    PlayedClicks const played(server->address());
    auto running = start(TAVARO_PROGRAM, {"record", "--microphone", "--system-audio", "--seconds", "4", "--no-polish",
                                          "-o", path("take.recproj")});
    ASSERT_TRUE(becomesTrue([&] { return isTaking(); }));
    std::vector<double> flashes;
    for (int i = 0; i < 4; ++i) {
        flashes.push_back(flash());
        usleep(500'000);
    }
    auto const recorded = running.wait();
    ASSERT_EQ(recorded.exitCode, 0) << recorded.error;
    auto const health = ProjectPackage(path("take.recproj")).load().metadata->health;
    EXPECT_EQ(health.microphoneLost, false);
    EXPECT_EQ(health.interruptions, 0);
    ASSERT_EQ(tavaro({"export", path("take.recproj"), "-o", path("film.mp4")}).exitCode, 0);

    auto const shown = flashesIn(path("film.mp4"));
    auto const heard = clicksIn(path("film.mp4"));
    ASSERT_EQ(shown.size(), flashes.size());
    double sum = 0, worst = 0;
    int count = 0;
    for (std::size_t i = 0; i < shown.size(); ++i) {
        for (auto const& moments : {said.moments(), played.moments()}) {
            for (double const moment : moments) {
                double const apart = moment - flashes[i];
                if (std::abs(apart) > Clicks::apart || shown[i] + apart < 0.05) continue;
                // A frame shows the middle of its time: a flash is as often half a frame too early as too late.
                double const error = nearest(heard, shown[i] + apart);
                EXPECT_NEAR(error, 0, 0.03) << "flash " << i;
                sum += error;
                ++count;
                if (std::abs(error) > std::abs(worst)) worst = error;
            }
        }
    }
    EXPECT_GE(count, 12);
    EXPECT_NEAR(sum / count, 0, 0.012) << "on the whole";
    if (std::getenv("TAVARO_TELL"))
        std::printf("%d clicks: mean %+.1f ms, worst %+.1f ms\n", count, 1e3 * sum / count, 1e3 * worst);
}

TEST_F(RecordedSound, whatIsThereIsListedAndWhatIsNotIsRefusedBeforeAnythingIsRecorded) {
    EXPECT_THAT(tavaro({"sources"}).out, HasSubstr("mic              microphone               Desk (default)\n"));
    EXPECT_THAT(
        tavaro({"sources", "--json"}).out,
        HasSubstr(
            R"("microphones":[{"id":"mic","isDefault":true,"name":"Desk"}],"systemAudio":{"applications":[],"name":"Monitor of )"));
    auto const refused = tavaro({"record", "--microphone", "tuba", "-o", path("take.recproj")});
    EXPECT_EQ(refused.exitCode, 1);
    EXPECT_EQ(refused.error, "There is no microphone “tuba”. `tavaro sources` lists those there are.\n");
    EXPECT_THAT(tavaro({"sources"}).error, Not(HasSubstr("There is no microphone")));
    server->unplugMicrophone();
    EXPECT_THAT(tavaro({"sources"}).error, HasSubstr("There is no microphone.\n"));
    server->plugMicrophone();
    std::string const display = std::getenv("DISPLAY");
    setenv("DISPLAY", "", 1);
    auto const blind = tavaro({"sources"});
    EXPECT_EQ(blind.exitCode, 1);
    EXPECT_THAT(blind.out, HasSubstr("Desk (default)\n")) << "what else there is";
    EXPECT_THAT(blind.error, HasSubstr("There is no display to record"));
    setenv("DISPLAY", display.c_str(), 1);
    server->kill();
    EXPECT_THAT(tavaro({"record", "--system-audio", "-o", path("take.recproj")}).error,
                HasSubstr("The system's sound cannot be recorded: no sound server answers ("));
    EXPECT_FALSE(fs::exists(path("take.recproj")));
    auto const none = tavaro({"sources"});
    EXPECT_EQ(none.exitCode, 0);
    EXPECT_THAT(none.error, HasSubstr("No sound can be recorded: no sound server answers.\n"));
    EXPECT_THAT(none.error, Not(HasSubstr("There is no microphone"))) << "who knows";
    EXPECT_THAT(tavaro({"sources", "--json"}).out, HasSubstr(R"("limits":["No sound can be recorded)"));
}

TEST_F(RecordedSound, anUnpluggedMicrophoneIsToldOfWhileTheTakeGoesOnAndAtItsEnd) {
    SpokenClicks const said(server->microphonePipe());
    auto running =
        start(TAVARO_PROGRAM, {"record", "--microphone", "mic", "--seconds", "3", "-o", path("take.recproj")});
    ASSERT_TRUE(becomesTrue([&] { return isTaking(); }));
    server->unplugMicrophone();
    usleep(500'000);
    server->plugMicrophone();
    auto const recorded = running.wait();
    EXPECT_EQ(recorded.exitCode, 0);
    EXPECT_THAT(recorded.error, HasSubstr("No sound comes from the microphone; the take is silent until it does.\n"));
    EXPECT_THAT(recorded.error, HasSubstr("Sound comes from the microphone again.\n"));
    EXPECT_THAT(recorded.error, HasSubstr("The microphone was away from "));
    EXPECT_THAT(recorded.out, HasSubstr(": The capture was interrupted 1 time and recovered.\n"));
}
