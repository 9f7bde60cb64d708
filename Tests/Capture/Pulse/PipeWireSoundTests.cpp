#include "../SoundListener.h"
#include "../TestClicksNode.h"
#include "../TestSession.h"

#include <TavaroCapture/Pulse/Private/PulseSound.h>
#include <TavaroCapture/Pulse/Private/SoundDevices.h>

#include <algorithm>
#include <optional>

namespace tavaro {

namespace {

using namespace std::chrono_literals;

/// Where the server of a session is PipeWire.
class PipeWireSoundTest : public testing::Test {
protected:
    void SetUp() override {
        if (!TestSession::isInstalled() || !TestSoundServer::isInstalled())
            GTEST_SKIP() << "pipewire, wireplumber or pipewire-pulse is not installed";
        session.emplace(TestSession::Sound::on);
        order("load-module module-null-sink sink_name=out");
        plug();
    }
    void plug() {
        clicks.emplace();
        EXPECT_TRUE(eventually([&] {
            auto const devices = pulse::soundDevices(address());
            return devices.systemSound &&
                   std::ranges::any_of(devices.microphones, [](auto const& found) { return found.name == "Desk"; });
        }));
    }
    std::string address() const { return "unix:" + (session->folder() / "pulse" / "native").string(); }
    void order(std::string const& words) const {
        EXPECT_EQ(std::system(("pactl -s " + address() + " " + words + " >/dev/null 2>&1").c_str()), 0) << words;
    }
    std::unique_ptr<SoundSource> microphone() const {
        return std::make_unique<pulse::PulseSound>(
            pulse::PulseSound::Options{address(), TestClicksNode::microphone, StreamRole::microphone});
    }
    std::unique_ptr<SoundSource> output() const {
        return std::make_unique<pulse::PulseSound>(pulse::PulseSound::Options{address(), {}, StreamRole::systemSound});
    }
    static bool has(std::string const& nodeName) {
        pipewire::Connection connection;
        connection.settle(1s);
        return std::ranges::any_of(connection.nodes(), [&](auto const& node) { return node.name == nodeName; });
    }

    /// That of the stand counts where the machine keeps it from its turns.
    double mostError() const { return clicks->isInTime() ? 0.005 : 0.035; }
    std::optional<TestSession> session;
    std::optional<TestClicksNode> clicks;
};

TEST_F(PipeWireSoundTest, whatAMicrophoneHearsHasItsMomentFromTheServerItself) {
    SoundListener listener(microphone());
    EXPECT_TRUE(listener.hears(12));
    EXPECT_TRUE(has("Microphone"));
    listener.stop();
    EXPECT_FALSE(has("Microphone"));
    expectInStep(listener.heard(), clicks->moments(), mostError());
    EXPECT_EQ(listener.overlaps(), 0);
    EXPECT_EQ(listener.lostAt, 0);
}

TEST_F(PipeWireSoundTest, whatAnOutputPlaysIsHeardWhileItSounds) {
    SoundListener listener(output());
    PlayedClicks const music(address());
    EXPECT_TRUE(listener.hears(12));
    EXPECT_TRUE(has("System audio"));
    listener.stop();
    auto heard = listener.heard();
    ASSERT_GE(heard.size(), 12u);
    // A player that a busy machine keeps from its turn plays what follows later, by whole quanta; most it plays in
    // time.
    std::vector<double> apart;
    for (std::size_t i = 5; i < heard.size(); ++i) apart.push_back(heard[i] - heard[i - 1]);
    std::ranges::sort(apart);
    EXPECT_GT(apart.front(), Clicks::apart - 0.002);
    EXPECT_NEAR(apart[apart.size() / 4], Clicks::apart, 0.002);
    EXPECT_EQ(listener.overlaps(), 0);
    EXPECT_EQ(listener.lostAt, 0);
}

TEST_F(PipeWireSoundTest, anUnpluggedMicrophoneIsSilentUntilItIsBackAndNeverAnotherOne) {
    PlayedClicks const music(address());
    SoundListener listener(microphone());
    EXPECT_TRUE(listener.hears(6));
    auto const said = clicks->moments();
    double const mostErrorBefore = mostError();
    double const unplugged = mediaClockNow();
    clicks.reset();
    EXPECT_TRUE(eventually([&] { return listener.lostAt > 0; }));
    EXPECT_LT(listener.lostAt - unplugged, 0.5);
    double const waited = mediaClockNow();
    EXPECT_TRUE(eventually([&] { return mediaClockNow() > waited + 0.6; })); // time enough to hear the music
    auto const before = listener.heard();
    expectInStep({before.begin(), before.end() - 1}, said, mostErrorBefore);
    EXPECT_LT(before.back(), listener.lostAt);
    EXPECT_EQ(listener.returnedAt, 0);

    plug();
    EXPECT_TRUE(listener.hears(before.size() + 6));
    listener.stop();
    auto const heard = listener.heard();
    EXPECT_GT(listener.returnedAt, 0);
    expectInStep({heard.end() - 4, heard.end()}, clicks->moments(), mostError());
    EXPECT_EQ(listener.overlaps(), 0);
}

TEST_F(PipeWireSoundTest, aServerThatDiesIsToldWithinHalfASecond) {
    SoundListener listener(microphone());
    EXPECT_TRUE(listener.hears(3));
    double const killed = mediaClockNow();
    session->killServer();
    EXPECT_TRUE(eventually([&] { return listener.lostAt > 0; }));
    EXPECT_LT(listener.lostAt - killed, 0.5);
}

}

}
