// How the pointer, the wheel and the keyboard do on a virtual display, in programs of real toolkits, and how fast these
// tell what is in their windows.
#include "ElementsBench.h"

#include "../../Tests/Automation/SinkProgram.h"

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroAutomation/Input/Private/Pointer.h>
#include <TavaroAutomation/Input/Private/Typist.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <thread>
#include <vector>
#include <xcb/xinput.h>

namespace tavaro {

namespace {

using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

constexpr std::size_t typedCharacters = 10000;

void print(std::string const& name, double value, char const* unit) {
    std::printf("%s %.4g %s\n", name.c_str(), value, unit);
    std::fflush(stdout);
}

double percentile(std::vector<double> values, double share) {
    if (values.empty()) return NAN;
    std::ranges::sort(values);
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

double milliseconds(Clock::duration length) { return std::chrono::duration<double, std::milli>(length).count(); }

/// When the pointer moved, as another program hears of it.
class MotionTimes {
public:
    explicit MotionTimes(std::string const& display) : connection_(display) {
        connection_.ask<xcb_input_xi_query_version, xcb_input_xi_query_version_reply>(std::uint16_t{2},
                                                                                      std::uint16_t{2});
        struct {
            xcb_input_event_mask_t head;
            std::uint32_t mask;
        } raw{{XCB_INPUT_DEVICE_ALL_MASTER, 1}, XCB_INPUT_XI_EVENT_MASK_RAW_MOTION};
        xcb_input_xi_select_events(connection_.get(), connection_.root(), 1, &raw.head);
        connection_.synchronize();
        listener_ = std::thread([this] {
            while (!isEnding_) {
                while (connection_.poll()) times_.push_back(Clock::now());
                std::this_thread::sleep_for(100us);
            }
        });
    }
    std::vector<Clock::time_point> end() {
        isEnding_ = true;
        listener_.join();
        return times_;
    }

private:
    x11::Connection connection_;
    std::atomic<bool> isEnding_ = false;
    std::vector<Clock::time_point> times_;
    std::thread listener_;
};

/// Each second of the 120 steps a second against a 60th of a second; in the middle of the way, since at its ends the
/// pointer is slower than a pixel a step.
void measureGlides(std::string const& display) {
    std::vector<double> deviations;
    Pointer pointer(display);
    for (int i = 0; i < 20; ++i) {
        pointer.glide({20, 20}, 0);
        MotionTimes motion(display);
        pointer.glide({1800, 1000}, 0.7);
        auto const times = motion.end();
        for (std::size_t k = 2; k < times.size(); ++k) {
            double const at = milliseconds(times[k] - times.front());
            if (at < 150 || at > 500) continue;
            deviations.push_back(std::abs(milliseconds(times[k] - times[k - 2]) - 1000.0 / 60));
        }
    }
    print("glide.deviation_p50", percentile(deviations, 0.5), "ms");
    print("glide.deviation_p95", percentile(deviations, 0.95), "ms");
}

/// From another's moving the pointer by a pixel at a time to the end of the glide.
void measureStops(std::string const& display) {
    std::vector<double> delays;
    TestClient user(display);
    for (int i = 0; i < 20; ++i) {
        Pointer pointer(display);
        pointer.glide({20, 20}, 0);
        std::atomic<Clock::time_point> moved{Clock::now()};
        std::thread mouse([&] {
            std::this_thread::sleep_for(150ms);
            moved = Clock::now();
            for (int move = 0; move < 5; ++move) { // as often as a mouse tells of a hand's moving it
                auto const at =
                    user.connection().ask<xcb_query_pointer, xcb_query_pointer_reply>(user.connection().root());
                user.movePointer(at->root_x - 1, at->root_y);
                std::this_thread::sleep_for(8ms);
            }
        });
        try {
            pointer.glide({1800, 1000}, 2);
        } catch (AutomationError const&) {
            delays.push_back(milliseconds(Clock::now() - moved.load()));
        }
        mouse.join();
    }
    print("glide.stopped", static_cast<double>(delays.size()) / 20, "share");
    print("glide.stop_max", percentile(delays, 1), "ms");
}

std::size_t different(std::string const& typed, std::string const& expected) {
    std::size_t const common = std::min(typed.size(), expected.size());
    std::size_t result = std::max(typed.size(), expected.size()) - common;
    for (std::size_t i = 0; i < common; ++i) result += typed[i] != expected[i] ? 1 : 0;
    return result;
}

void measureToolkit(SinkToolkit toolkit) {
    std::string name(nameOf(toolkit));
    std::erase(name, ' ');
    if (!SinkProgram::isInstalled(toolkit)) return (void)std::printf("# %s is not installed\n", name.c_str());
    TestDisplay const display(640, 520);
    TestClient client(display.name());
    SinkProgram sink(display, toolkit);
    if (!sink.awaitReady(client)) return (void)std::printf("# %s did not come\n", name.c_str());

    Pointer pointer(display.name());
    pointer.glide({300, 330}, 0.1);
    std::vector<double> errors;
    for (double const distance : {100.0, 300.0, 700.0, 1500.0, -400.0, -900.0, 250.0}) {
        double const before = sink.scrolled("down");
        pointer.scroll({.down = distance});
        errors.push_back(std::abs(sink.scrolled("down") - before - distance));
    }
    print("wheel.error_max." + name, percentile(errors, 1), "px");

    auto const text = textToType(typedCharacters);
    auto const start = Clock::now();
    Typist(display.name(), {5ms, 0ms}).type(text);
    double const seconds = milliseconds(Clock::now() - start) / 1000;
    eventually([&] { return sink.text().size() >= text.size(); });
    print("typing.wrong." + name, static_cast<double>(different(sink.text(), text)), "bytes");
    print("typing.rate." + name, typedCharacters / seconds, "characters/s");
}

}

}

int main() {
    using namespace tavaro;
    {
        TestDisplay const display(1920, 1080);
        measureGlides(display.name());
        measureStops(display.name());
    }
    for (auto const toolkit : allCases<SinkToolkit>()) measureToolkit(toolkit);
    benchElements();
}
