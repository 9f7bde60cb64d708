#include <TavaroCapture/Wayland/Private/FrontWatch.h>

#include "../TestDisplay.h"

#include <TavaroPlatform/Clocks/MediaClock.h>

#include <deque>
#include <gmock/gmock.h>
#include <mutex>
#include <poll.h>

namespace tavaro::wayland {

namespace {

using testing::ElementsAre;

/// What a desktop would tell; the test's and the watch's.
struct Desktop {
    Bell news;
    std::mutex lock;
    std::deque<FrontWindow> next; // guarded by lock, as the next two; not told yet
    FrontWindow window;
    bool isGone = false;

    /// One after the other.
    void show(std::vector<std::string> const& names) {
        std::lock_guard const guard(lock);
        for (auto const& name : names)
            next.push_back(name.empty() ? FrontWindow() : FrontWindow{.application = ApplicationIdentity{name, name}});
        news.ring();
    }
    bool tell() {
        std::lock_guard const guard(lock);
        if (!next.empty()) {
            window = next.front();
            next.pop_front();
        }
        if (next.empty() && !isGone) news.hush();
        return !isGone;
    }
    void end() {
        std::lock_guard const guard(lock);
        isGone = true;
        news.ring();
    }
};

class Teller final : public FrontTeller {
public:
    explicit Teller(Desktop& desktop) : desktop_(desktop) {}
    int descriptor() const override { return desktop_.news.descriptor(); }
    short awaited() const override { return POLLIN; }
    int patience() const override { return -1; }
    bool listen() override { return desktop_.tell(); }
    FrontWindow window() const override {
        std::lock_guard const guard(desktop_.lock);
        return desktop_.window;
    }

private:
    Desktop& desktop_;
};

class FrontWatchTest : public testing::Test {
protected:
    ~FrontWatchTest() override { watch.stop(); }

    void beginWith(std::string const& name) {
        desktop.show({name});
        desktop.tell();
        watch.start([this](FrontWindow const& window) {
            std::lock_guard const guard(lock);
            reports.push_back(window.application ? window.application->name : "");
        });
    }
    std::vector<std::string> reported() {
        std::lock_guard const guard(lock);
        return reports;
    }
    bool isReported(std::string const& name) {
        return eventually([&] { return !reported().empty() && reported().back() == name; });
    }

    Desktop desktop;
    FrontWatch watch{std::make_unique<Teller>(desktop)};
    std::mutex lock;
    std::vector<std::string> reports; // guarded by lock
};

TEST_F(FrontWatchTest, whatIsInFrontIsToldAtOnceAndThenEachChange) {
    beginWith("one");
    EXPECT_THAT(reported(), ElementsAre("one"));
    desktop.show({"two"});
    EXPECT_TRUE(isReported("two"));
    double const gone = mediaClockNow();
    desktop.show({""});
    EXPECT_TRUE(isReported(""));
    EXPECT_GE(mediaClockNow() - gone, FrontWatch::changeSeconds);
    desktop.show({"two"});
    EXPECT_TRUE(isReported("two"));
    EXPECT_THAT(reported(), ElementsAre("one", "two", "", "two"));
    watch.stop();
    desktop.show({"three"});
    EXPECT_THAT(reported(), ElementsAre("one", "two", "", "two"));
}

TEST_F(FrontWatchTest, betweenTwoWindowsThereIsNoMomentWithoutOne) {
    beginWith("one");
    for (auto const* const next : {"two", "one", "two"}) {
        desktop.show({"", next});
        EXPECT_TRUE(isReported(next));
    }
    EXPECT_THAT(reported(), ElementsAre("one", "two", "one", "two"));
}

TEST_F(FrontWatchTest, nothingIsInFrontOnceNobodyTells) {
    beginWith("one");
    desktop.end();
    EXPECT_TRUE(isReported(""));
}

}

}
