#include "../../Capture/TestDisplay.h"

#include <TavaroAutomation/Input/Private/Pointer.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <atomic>
#include <thread>

namespace tavaro {

namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

/// How a program takes the wheel.
struct Habits {
    char const* name;
    int notch = 50;                      // pixels
    int faster = 0;                      // pixels that each quick notch adds to the one before it
    int swallowed = 0;                   // notches that do nothing
    std::chrono::milliseconds frame{15}; // between pictures
    bool paintsInHalves = false;
    int length = 100000; // pixels that can be scrolled
    int filled = 200000; // of its pixels, from the top; what follows is plain
};

/// A window of such a program, 400 × 300, whose rows are all different.
class ScrollingWindow {
public:
    ScrollingWindow(TestDisplay const& display, Habits const& habits) : habits_(habits), client_(display.name()) {
        window_ = client_.makeWindow({.frame = {0, 0, width, height}, .windowClass = "Scrolls"});
        std::uint32_t const mask = XCB_EVENT_MASK_BUTTON_PRESS;
        xcb_change_window_attributes(client_.connection().get(), window_, XCB_CW_EVENT_MASK, &mask);
        context_ = xcb_generate_id(client_.connection().get());
        xcb_create_gc(client_.connection().get(), context_, window_, 0, nullptr);
        paint(0, height);
        thread_.async([this] { run(); });
    }
    ~ScrollingWindow() {
        isEnding_ = true;
        thread_.sync([] {});
        client_.destroy(window_);
    }

    int offset() const { return offset_; }

private:
    static constexpr int width = 400, height = 300;

    void run() {
        while (!isEnding_) {
            std::this_thread::sleep_for(habits_.frame);
            int const before = offset_;
            while (auto const event = client_.connection().poll()) {
                if ((event->response_type & 0x7f) == XCB_BUTTON_PRESS)
                    turn(reinterpret_cast<xcb_button_press_event_t const&>(*event));
            }
            if (offset_ == before) continue;
            paint(0, height / 2);
            if (habits_.paintsInHalves) std::this_thread::sleep_for(5ms);
            paint(height / 2, height);
        }
    }
    void turn(xcb_button_press_event_t const& press) {
        if (habits_.swallowed-- > 0) return;
        quick_ = press.time - last_ < 250 ? quick_ + 1 : 0;
        last_ = press.time;
        int const by = habits_.notch + std::min(quick_, 8) * habits_.faster;
        offset_ = std::clamp(offset_ + (press.detail == 5 ? by : -by), 0, habits_.length);
    }
    void paint(int from, int to) {
        std::vector<std::uint32_t> pixels;
        for (int y = from; y < to; ++y) {
            for (int x = 0; x < width; ++x)
                pixels.push_back(y + offset_ < habits_.filled
                                     ? (x / 3 * 31U + 7) * (y + offset_ + 11U) * 2654435761U >> 8
                                     : 0xffffff);
        }
        auto& connection = client_.connection();
        xcb_put_image(connection.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, window_, context_, width,
                      static_cast<std::uint16_t>(to - from), 0, static_cast<std::int16_t>(from), 0, 24,
                      static_cast<std::uint32_t>(pixels.size() * 4),
                      reinterpret_cast<std::uint8_t const*>(pixels.data()));
        connection.synchronize();
    }

    Habits habits_;
    TestClient client_;
    std::uint32_t window_ = 0, context_ = 0;
    std::atomic<int> offset_ = 0;
    std::atomic<bool> isEnding_ = false;
    int quick_ = 0;
    std::uint32_t last_ = 0; // milliseconds of the server
    SerialQueue thread_{"com.tavaro.scrolling"};
};

}

using WheelTest = DisplayTest;

TEST_F(WheelTest, goesAsFarAsNotchesComeWhateverTheProgramMakesOfThem) {
    for (auto const& habits : {Habits{.name = "plain"}, Habits{.name = "browser", .notch = 120},
                               Habits{.name = "accelerating", .notch = 68, .faster = 17},
                               Habits{.name = "slow to paint", .notch = 90, .frame = 220ms},
                               Habits{.name = "caught half painted", .paintsInHalves = true},
                               Habits{.name = "first notch for the arrival", .swallowed = 1}}) {
        ScrollingWindow const window(*display, habits);
        Pointer pointer(display->name());
        pointer.glide({200, 150}, 0);
        for (double const asked : {250.0, 1000.0, -400.0}) {
            std::this_thread::sleep_for(300ms); // the program does not take it for more of the one before
            int const before = window.offset();
            auto const scrolled = pointer.scroll({.down = asked});
            // On a busy machine the program still has notches to take.
            EXPECT_TRUE(eventually([&] { return window.offset() - before == scrolled.went.down; }))
                << habits.name << " " << asked << ": went " << window.offset() - before << ", says "
                << scrolled.went.down;
            EXPECT_NEAR(scrolled.went.down, asked, habits.notch * 0.5 + 1) << habits.name;
            EXPECT_FALSE(scrolled.isAtEnd) << habits.name << " " << asked;
        }
    }
}

TEST_F(WheelTest, whatIsPlainUnderThePointerIsNotTheEnd) {
    ScrollingWindow const window(*display, {.name = "plain from 120 on", .length = 2600, .filled = 120});
    Pointer pointer(display->name());
    pointer.glide({200, 250}, 0);
    auto const place = [&] { return UIPoint{0, 5000.0 - window.offset()}; };
    for (double const asked : {1500.0, -300.0}) {
        int const before = window.offset();
        auto const scrolled = pointer.scroll({.down = asked}, {}, place);
        EXPECT_NEAR(scrolled.went.down, asked, 26) << "within half a notch";
        EXPECT_TRUE(eventually([&] { return window.offset() - before == scrolled.went.down; }));
        EXPECT_TRUE(scrolled.isSeen && !scrolled.isAtEnd) << asked;
    }
    int const before = window.offset();
    auto const reckoned = pointer.scroll({.down = 600});
    EXPECT_FALSE(reckoned.isSeen || reckoned.isAtEnd) << "with nobody to ask";
    EXPECT_NEAR(window.offset() - before, 600, 60);
    auto const end = pointer.scroll({.down = 9000}, {}, place);
    EXPECT_TRUE(end.isSeen && end.isAtEnd);
    EXPECT_EQ(window.offset(), 2600);
}

TEST_F(WheelTest, saysThatTheEndIsReachedAndHowFarItWas) {
    ScrollingWindow const window(*display, {.name = "short", .length = 330});
    Pointer pointer(display->name());
    pointer.glide({200, 150}, 0);
    for (double const expected : {330.0, 0.0}) {
        auto const scrolled = pointer.scroll({.down = 2000});
        EXPECT_EQ(scrolled.went.down, expected);
        EXPECT_TRUE(scrolled.isAtEnd);
    }
}

}
