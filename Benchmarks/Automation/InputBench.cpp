// How the pointer, the wheel and the keyboard do on a virtual display, in programs of real toolkits, and how fast these
// tell what is in their windows.
#include "ElementsBench.h"

#include "../../Tests/Automation/SinkProgram.h"

#include <TavaroAutomation/Errors/AutomationError.h>
#include <TavaroAutomation/Input/Private/Pointer.h>
#include <TavaroAutomation/Input/Private/Typist.h>
#include <TavaroPlatform/Queues/SerialQueue.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <functional>
#include <thread>
#include <utility>
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

/// Programs that want the processors all the time.
class BusyLoops {
public:
    explicit BusyLoops(int count) {
        for (int i = 0; i < count; ++i)
            loops_.emplace_back([this] {
                while (!isEnding_) {
                }
            });
    }
    ~BusyLoops() {
        isEnding_ = true;
        for (auto& loop : loops_) loop.join();
    }

private:
    std::atomic<bool> isEnding_ = false;
    std::vector<std::thread> loops_;
};

/// When the pointer moved, as another program hears of it that is never late itself.
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
        listener_.async([this] {
            while (!isEnding_) {
                while (connection_.poll()) times_.push_back(Clock::now());
                std::this_thread::sleep_for(100us);
            }
        });
    }
    std::vector<Clock::time_point> end() {
        isEnding_ = true;
        listener_.sync([] {});
        return times_;
    }

private:
    x11::Connection connection_;
    std::atomic<bool> isEnding_ = false;
    std::vector<Clock::time_point> times_;
    SerialQueue listener_{"com.tavaro.listener", SerialQueue::Urgency::prompt};
};

/// Each second of 120 steps a second against a 60th of a second, from 150 to 500 ms.
void addDeviations(std::vector<double>& deviations, std::vector<Clock::time_point> const& times) {
    for (std::size_t k = 2; k < times.size(); ++k) {
        double const at = milliseconds(times[k] - times.front());
        if (at < 150 || at > 500) continue;
        deviations.push_back(std::abs(milliseconds(times[k] - times[k - 2]) - 1000.0 / 60));
    }
}

/// What the system gives a thread that does nothing but wait for each of the same times.
std::vector<Clock::time_point> bareSteps(SerialQueue::Urgency urgency) {
    std::vector<Clock::time_point> times;
    SerialQueue("com.tavaro.bare", urgency).sync([&] {
        auto const start = Clock::now();
        for (int step = 1; step <= 84; ++step) {
            std::this_thread::sleep_until(start + step * 1s / 120.0);
            times.push_back(Clock::now());
        }
    });
    return times;
}

void printDeviations(std::string const& name, std::vector<double> const& deviations) {
    print(name + ".deviation_p50", percentile(deviations, 0.5), "ms");
    print(name + ".deviation_p95", percentile(deviations, 0.95), "ms");
}

/// In the middle of the way, since at its ends the pointer is slower than a pixel a step; beside loops that only wait.
void measureGlides(std::string const& display, std::string const& load) {
    std::vector<double> glides, prompt, normal;
    Pointer pointer(display);
    for (int i = 0; i < 20; ++i) {
        pointer.glide({20, 20}, 0);
        MotionTimes motion(display);
        pointer.glide({1800, 1000}, 0.7);
        addDeviations(glides, motion.end());
        addDeviations(prompt, bareSteps(SerialQueue::Urgency::prompt));
        addDeviations(normal, bareSteps(SerialQueue::Urgency::normal));
    }
    printDeviations("glide" + load, glides);
    printDeviations("bare.prompt" + load, prompt);
    printDeviations("bare.normal" + load, normal);
}

/// From another's moving the pointer by a pixel at a time to the end of the glide.
void measureStops(std::string const& display, std::string const& load) {
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
    print("glide.stopped" + load, static_cast<double>(delays.size()) / 20, "share");
    print("glide.stop_max" + load, percentile(delays, 1), "ms");
}

std::size_t different(std::string const& typed, std::string const& expected) {
    std::size_t const common = std::min(typed.size(), expected.size());
    std::size_t result = std::max(typed.size(), expected.size()) - common;
    for (std::size_t i = 0; i < common; ++i) result += typed[i] != expected[i] ? 1 : 0;
    return result;
}

/// A program of that toolkit, on a display of its own.
struct SinkStage {
    TestDisplay display{640, 520};
    TestClient client{display.name()};
    SinkProgram sink;
    std::string name;
    bool isReady;

    explicit SinkStage(SinkToolkit toolkit)
        : sink(display, toolkit)
        , name(nameOf(toolkit))
        , isReady(sink.awaitReady(client)) {
        std::erase(name, ' ');
        if (!isReady) std::printf("# %s did not come\n", name.c_str());
    }
};

void measureWheel(SinkToolkit toolkit) {
    SinkStage stage(toolkit);
    if (!stage.isReady) return;
    Pointer pointer(stage.display.name());
    pointer.glide({300, 330}, 0.1);
    std::vector<double> errors;
    for (double const distance : {100.0, 300.0, 700.0, 1500.0, -400.0, -900.0, 250.0}) {
        double const before = stage.sink.scrolled("down");
        pointer.scroll({.down = distance});
        errors.push_back(std::abs(stage.sink.scrolled("down") - before - distance));
    }
    print("wheel.error_max." + stage.name, percentile(errors, 1), "px");
}

void measureTyping(SinkToolkit toolkit, std::string const& load) {
    SinkStage stage(toolkit);
    if (!stage.isReady) return;
    auto const text = textToType(typedCharacters);
    auto const start = Clock::now();
    Typist(stage.display.name(), {5ms, 0ms}).type(text);
    double const seconds = milliseconds(Clock::now() - start) / 1000;
    eventually([&] { return stage.sink.text().size() >= text.size(); });
    print("typing.wrong." + stage.name + load, static_cast<double>(different(stage.sink.text(), text)), "bytes");
    print("typing.rate." + stage.name + load, typedCharacters / seconds, "characters/s");
}

void measureEachToolkit(std::function<void(SinkToolkit)> const& measure) {
    for (auto const toolkit : allCases<SinkToolkit>()) {
        if (SinkProgram::isInstalled(toolkit))
            measure(toolkit);
        else
            std::printf("# %s is not installed\n", std::string(nameOf(toolkit)).c_str());
    }
}

void measurePointer() {
    TestDisplay const display(1920, 1080);
    measureGlides(display.name(), "");
    measureStops(display.name(), "");
    BusyLoops const load(4);
    measureGlides(display.name(), ".busy");
    measureStops(display.name(), ".busy");
}

void measureKeyboard() {
    measureEachToolkit([](SinkToolkit toolkit) { measureTyping(toolkit, ""); });
}

void measureBusyKeyboard() {
    BusyLoops const load(2);
    measureEachToolkit([](SinkToolkit toolkit) { measureTyping(toolkit, ".busy"); });
}

}

}

/// All, or those that are named.
int main(int argc, char** argv) {
    using namespace tavaro;
    std::vector<std::string> const wanted(argv + 1, argv + argc);
    std::pair<std::string, std::function<void()>> const parts[] = {{"pointer", measurePointer},
                                                                   {"wheel", [] { measureEachToolkit(measureWheel); }},
                                                                   {"keyboard", measureKeyboard},
                                                                   {"busy-keyboard", measureBusyKeyboard},
                                                                   {"elements", benchElements}};
    for (auto const& [name, measure] : parts) {
        if (wanted.empty() || std::ranges::find(wanted, name) != wanted.end()) measure();
    }
}
