#include "../SoundListener.h"
#include "../TestDisplay.h"
#include "../TestSoundServer.h"

#include <TavaroCapture/Pulse/Private/ApplicationSound.h>
#include <TavaroCapture/Pulse/Private/PulseSound.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <unistd.h>

namespace tavaro {

namespace {

constexpr double told = 0.5;

class PulseSoundTest : public SoundServerTest {
protected:
    pulse::PulseSound::Options microphone() const { return {server->address(), "mic", StreamRole::microphone}; }
    pulse::PulseSound::Options output() const { return {server->address(), {}, StreamRole::systemSound}; }
};

}

TEST_F(PulseSoundTest, whatAMicrophoneHearsIsStampedWithTheMomentAtWhichItWasSaid) {
    SpokenClicks const clicks(server->microphonePipe());
    SoundListener listener(std::make_unique<pulse::PulseSound>(microphone()));
    EXPECT_TRUE(listener.hears(12));
    listener.stop();
    expectInStep(listener.heard(), clicks.moments());
    EXPECT_EQ(listener.overlaps(), 0);
    EXPECT_EQ(listener.lostAt, 0);
}

TEST_F(PulseSoundTest, whatAnOutputPlaysIsStampedWithTheMomentAtWhichItIsHeard) {
    SoundListener listener(std::make_unique<pulse::PulseSound>(output()));
    PlayedClicks const clicks(server->address());
    EXPECT_TRUE(listener.hears(12));
    listener.stop();
    auto heard = listener.heard();
    // The player itself learns its latency in its first second only.
    heard.erase(heard.begin(), heard.begin() + std::min<std::ptrdiff_t>(4, std::ssize(heard)));
    expectInStep(heard, clicks.moments());
    EXPECT_EQ(listener.overlaps(), 0);
}

TEST_F(PulseSoundTest, anUnpluggedMicrophoneIsSilentUntilItIsBackAndNeverAnotherOne) {
    std::optional<SpokenClicks> clicks(std::in_place, server->microphonePipe());
    PlayedClicks const music(server->address()); // what the default source hears once the microphone is gone
    SoundListener listener(std::make_unique<pulse::PulseSound>(microphone()));
    EXPECT_TRUE(listener.hears(4));
    double const unplugged = mediaClockNow();
    server->unplugMicrophone();
    EXPECT_TRUE(eventually([&] { return listener.lostAt > 0; }));
    EXPECT_LT(listener.lostAt - unplugged, told);
    usleep(600'000); // time enough to hear the music
    auto const before = listener.heard();
    EXPECT_LT(before.back(), listener.lostAt);
    EXPECT_EQ(listener.returnedAt, 0);

    double const plugged = mediaClockNow();
    server->plugMicrophone();
    EXPECT_TRUE(eventually([&] { return listener.returnedAt > 0; }));
    EXPECT_LT(listener.returnedAt - plugged, told + 0.3) << "the device itself takes a moment to begin";
    EXPECT_TRUE(listener.hears(before.size() + 6));
    listener.stop();
    expectInStep(listener.heard(), clicks->moments());
    EXPECT_EQ(listener.overlaps(), 0);
}

TEST_F(PulseSoundTest, whatIsPlayedElsewhereIsFollowedAndStaysInStep) {
    SoundListener listener(std::make_unique<pulse::PulseSound>(output()));
    {
        PlayedClicks const clicks(server->address());
        EXPECT_TRUE(listener.hears(4));
    }
    server->order("load-module module-null-sink sink_name=phones rate=48000");
    EXPECT_EQ(listener.lostAt, 0) << "an output that nobody chose changes nothing";
    server->order("set-default-sink phones");
    EXPECT_TRUE(eventually([&] { return listener.returnedAt > 0; }));
    EXPECT_LE(listener.lostAt, listener.returnedAt);
    auto const before = listener.heard().size();
    PlayedClicks const clicks(server->address());
    EXPECT_TRUE(listener.hears(before + 10));
    listener.stop();
    auto const heard = listener.heard();
    ASSERT_GE(heard.size(), 10u);
    expectInStep({heard.end() - 5, heard.end()}, clicks.moments());
    EXPECT_EQ(listener.overlaps(), 0);
}

TEST_F(PulseSoundTest, ofOneApplicationNothingElseIsHeardAndAllOfIt) {
    PlayedClicks const others(server->address(), "Music");
    auto source = std::make_unique<pulse::ApplicationSound>(server->address(), "demo");
    auto const& sound = *source;
    SoundListener listener(std::move(source));
    EXPECT_EQ(sound.awaited(), "demo");
    for (std::size_t heard = 0; heard < 16; heard += 8) { // one playback after the other
        PlayedClicks const clicks(server->address(), "Demo");
        EXPECT_TRUE(listener.hears(heard + 8));
        EXPECT_EQ(sound.awaited(), "");
        auto last = listener.heard();
        last.erase(last.begin(), last.end() - 4);
        expectInStep(last, clicks.moments());
    }
    listener.stop();
    EXPECT_EQ(listener.overlaps(), 0);
    EXPECT_EQ(listener.lostAt, 0);
}

TEST_F(PulseSoundTest, aMicrophoneWithAClockOfItsOwnStaysInStep) {
    SpokenClicks const clicks(server->microphonePipe(), 500);
    SoundListener listener(std::make_unique<pulse::PulseSound>(microphone()));
    EXPECT_TRUE(listener.hears(24));
    listener.stop();
    expectInStep(listener.heard(), clicks.moments());
}

TEST_F(PulseSoundTest, aServerThatDiesAndComesBackCostsOnlyTheTimeBetween) {
    SpokenClicks const clicks(server->microphonePipe());
    SoundListener listener(std::make_unique<pulse::PulseSound>(microphone()));
    EXPECT_TRUE(listener.hears(4));
    double const killed = mediaClockNow();
    server->kill();
    EXPECT_TRUE(eventually([&] { return listener.lostAt > 0; }));
    EXPECT_LT(listener.lostAt - killed, told);
    auto const before = listener.heard().size();
    server->start();
    EXPECT_TRUE(eventually([&] { return listener.returnedAt > 0; }));
    EXPECT_TRUE(listener.hears(before + 6));
    listener.stop();
    expectInStep(listener.heard(), clicks.moments());
    EXPECT_EQ(listener.overlaps(), 0);
}

TEST_F(PulseSoundTest, aServerThatHangsCostsHardlyMoreThanTheTimeInWhichItHangs) {
    SpokenClicks const clicks(server->microphonePipe());
    server->order("load-module module-sine sink=out"); // which is content with two seconds of latency
    for (auto const& options : {microphone(), output()}) {
        SoundListener listener(std::make_unique<pulse::PulseSound>(options));
        EXPECT_TRUE(listener.hears(1)) << nameOf(options.role);
        double const begun = mediaClockNow();
        EXPECT_TRUE(eventually([&] { return mediaClockNow() > begun + 0.5; }));
        double const frozen = mediaClockNow();
        server->freeze();
        EXPECT_TRUE(eventually([&] { return listener.lostAt > 0; }));
        EXPECT_LT(listener.lostAt - frozen, told);
        double const thawed = mediaClockNow();
        server->thaw();
        EXPECT_TRUE(eventually([&] { return listener.returnedAt > 0; }));
        EXPECT_LT(listener.returnedAt - thawed, told) << nameOf(options.role);
        EXPECT_EQ(listener.overlaps(), 0);
    }
}

TEST_F(PulseSoundTest, aDeviceIsOpenOnlyWhileItIsAskedFor) {
    auto const isOpen = [&] { return !server->order("list short source-outputs").empty(); };
    SpokenClicks const clicks(server->microphonePipe());
    pulse::PulseSound source(microphone());
    EXPECT_FALSE(isOpen());
    source.start({.block = [](SoundBlock const&) {}, .lost = [](double) {}});
    EXPECT_TRUE(isOpen());
    source.stop();
    EXPECT_TRUE(eventually([&] { return !isOpen(); }));
}

TEST_F(PulseSoundTest, whatIsNotThereIsRefusedByName) {
    auto const refusal = [](pulse::PulseSound::Options const& options) -> std::string {
        try {
            pulse::PulseSound const source(options);
            return "none";
        } catch (CaptureError const& error) {
            EXPECT_EQ(error.kind, CaptureError::Kind::noSound);
            return error.what();
        }
    };
    EXPECT_EQ(refusal(microphone()), "none");
    EXPECT_EQ(refusal({server->address(), {}, StreamRole::microphone}), "none") << "the default one";
    EXPECT_EQ(refusal({server->address(), "tuba", StreamRole::microphone}),
              "There is no microphone “tuba”. `tavaro sources` lists those there are.");
    server->unplugMicrophone();
    EXPECT_EQ(refusal({server->address(), {}, StreamRole::microphone}), "There is no microphone.")
        << "what an output plays is none";
    server->kill();
    EXPECT_TRUE(refusal(microphone()).starts_with("The microphone cannot be recorded: no sound server answers ("));
}

}
