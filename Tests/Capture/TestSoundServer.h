#pragma once

#include <atomic>
#include <filesystem>
#include <gtest/gtest.h>
#include <mutex>
#include <optional>
#include <string>
#include <sys/types.h>
#include <thread>
#include <vector>

namespace tavaro {

/// A real sound server of the test's own, without a sound card: an output "out" that nobody hears, and a microphone
/// "mic" that hears what is said into its pipe. `isInstalled` is false where there is none; nothing else may be asked
/// then.
class TestSoundServer {
public:
    TestSoundServer();
    ~TestSoundServer();
    TestSoundServer(TestSoundServer const&) = delete;
    TestSoundServer& operator=(TestSoundServer const&) = delete;

    static bool isInstalled();
    /// As in `$PULSE_SERVER`.
    std::string address() const { return "unix:" + socket(); }
    std::string microphonePipe() const { return (folder_ / "mic.fifo").string(); }

    void start();
    void kill();
    /// It answers nobody until `thaw`.
    void freeze() const;
    void thaw() const;
    void plugMicrophone();
    void unplugMicrophone();
    /// `pactl`'s words.
    std::string order(std::string const& words) const;

private:
    std::string socket() const { return (folder_ / "native").string(); }

    std::filesystem::path folder_;
    pid_t process_ = -1;
};

/// Clicks at moments of the media clock that are known, a quarter of a second apart, between silence.
class Clicks {
public:
    static constexpr double apart = 0.25;
    virtual ~Clicks() = default;
    /// Those so far.
    std::vector<double> moments() const {
        std::lock_guard const guard(lock_);
        return moments_;
    }

protected:
    void note(double moment) {
        std::lock_guard const guard(lock_);
        moments_.push_back(moment);
    }

private:
    std::mutex mutable lock_;
    std::vector<double> moments_; // guarded by lock_
};

/// Says clicks into a microphone's pipe, so many seconds apart, by a clock that is `ppm` fast.
class SpokenClicks : public Clicks {
public:
    explicit SpokenClicks(std::string pipe, double ppm = 0, double every = apart);
    ~SpokenClicks() override;

private:
    void speak(std::string const& pipe, double rate, std::int64_t gap);
    std::atomic<bool> isEnding_ = false;
    std::thread thread_;
};

/// Plays clicks on a server's output; they sound when the server says so.
class PlayedClicks : public Clicks {
public:
    explicit PlayedClicks(std::string server, std::string application = "Player");
    ~PlayedClicks() override;

private:
    void play(std::string const& server, std::string const& application);
    std::atomic<bool> isEnding_ = false;
    std::thread thread_;
};

/// A test with a sound server of its own; skipped where none is installed.
class SoundServerTest : public testing::Test {
protected:
    void SetUp() override {
        if (!TestSoundServer::isInstalled()) GTEST_SKIP() << "pulseaudio is not installed";
        server.emplace();
    }

    std::optional<TestSoundServer> server;
};

}
