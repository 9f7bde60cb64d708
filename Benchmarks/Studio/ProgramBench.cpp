#include <Benchmarks/Studio/ProgramBench.h>

#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroMedia/Frames/PNG.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include "../../Tests/Capture/TestDisplay.h"
#include "../../Tests/Core/Package/TemporaryFolder.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <xcb/damage.h>
#include <xcb/xcb.h>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

constexpr int projects = 500;
constexpr int starts = 7; // the first makes the index, and is left out
constexpr double patience = 60;
constexpr double restSeconds = 3;
constexpr int textColors = 10; // at least, in a row of pixels with a text on it
constexpr int stillColors = 40;

double median(std::vector<double> values) {
    std::ranges::sort(values);
    return values[values.size() / 2];
}

void print(std::string const& name, double value, char const* unit) {
    std::printf("program.%s %.2f %s\n", name.c_str(), value, unit);
    std::fflush(stdout);
}

void makeLibrary(fs::path const& folder) {
    DemoProject project;
    project.timeline.clips = {{.asset = "screen.mp4", .duration = 60}};
    for (int i = 0; i < 200; ++i) project.zoomEvents.push_back({.start = i * 0.3, .duration = 0.2});
    project.metadata.edit().cursorSamples.resize(3600);
    Image still(640, 360); // of many colors, so that it is known when it is seen
    for (int y = 0; y < still.height(); ++y) {
        for (int x = 0; x < still.width(); ++x) {
            auto* const pixel = still.row(y) + 4 * x;
            pixel[0] = static_cast<std::uint8_t>(x * 255 / still.width());
            pixel[1] = static_cast<std::uint8_t>(y * 255 / still.height());
            pixel[2] = static_cast<std::uint8_t>(128 + (x / 8 + y / 8) % 64);
            pixel[3] = 255;
        }
    }
    auto const bytes = encodePNG(still.view());
    for (int i = 0; i < projects; ++i) {
        ProjectPackage const package(folder / ("Film " + std::to_string(i) + ".recproj"));
        package.createDirectories();
        project.name = package.url().stem();
        package.save(project);
        std::ofstream(package.thumbnailURL(), std::ios::binary) << bytes;
    }
}

using Environment = std::vector<std::pair<std::string, std::string>>;

/// The program, until this goes away, and what it does, by the system's counters.
class RunningProgram {
public:
    explicit RunningProgram(Environment const& environment) : process_(fork()) {
        if (process_ == 0) become(environment);
        folder_ = "/proc/" + std::to_string(process_);
    }
    ~RunningProgram() {
        ::kill(process_, SIGKILL);
        waitpid(process_, nullptr, 0);
    }
    RunningProgram(RunningProgram const&) = delete;
    RunningProgram& operator=(RunningProgram const&) = delete;

    /// Of all its threads that are alive; seconds.
    double coreSeconds() const {
        double nanoseconds = 0;
        for (auto const& task : fs::directory_iterator(folder_ / "task")) {
            double own = 0;
            std::ifstream(task.path() / "schedstat") >> own;
            nanoseconds += own;
        }
        return nanoseconds * 1e-9;
    }
    double privateMebibytes() const {
        std::ifstream file(folder_ / "smaps_rollup");
        double kibibytes = 0;
        for (std::string line; std::getline(file, line);) {
            if (!line.starts_with("Private_")) continue;
            std::istringstream words(line);
            std::string name;
            double value = 0;
            words >> name >> value;
            kibibytes += value;
        }
        return kibibytes / 1024;
    }

private:
    [[noreturn]] static void become(Environment const& environment) {
        prctl(PR_SET_PDEATHSIG, SIGKILL);
        for (auto const& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
        int const nowhere = open("/dev/null", O_WRONLY);
        dup2(nowhere, 1);
        dup2(nowhere, 2);
        execl(TAVARO_STUDIO, TAVARO_STUDIO, nullptr);
        _exit(127);
    }

    pid_t process_;
    fs::path folder_;
};

/// The display on which it is started, and the window that it shows there.
class Screen {
public:
    explicit Screen(std::string const& name) : client_(name), connection_(client_.connection()) {
        xcb_damage_query_version(connection_.get(), 1, 1);
        damageEvent_ = connection_.extension(xcb_damage_id)->first_event;
    }

    TestClient& client() { return client_; }
    void point(int x, int y) { client_.movePointer(left_ + x, top_ + y); }

    void awaitWindow() {
        window_ = 0;
        until([&] { return findWindow(); });
    }
    void focus() {
        xcb_set_input_focus(connection_.get(), XCB_INPUT_FOCUS_PARENT, window_, XCB_CURRENT_TIME);
        connection_.synchronize();
    }

    std::vector<std::uint32_t> row(int y) {
        auto const picture = connection_.ask<xcb_get_image, xcb_get_image_reply>(
            XCB_IMAGE_FORMAT_Z_PIXMAP, window_, 0, y, std::uint16_t{1280}, std::uint16_t{1}, ~0u);
        if (!picture) return {};
        auto const* pixels = reinterpret_cast<std::uint32_t const*>(xcb_get_image_data(picture.get()));
        return {pixels, pixels + xcb_get_image_data_length(picture.get()) / 4};
    }
    int colors(int y) {
        auto const pixels = row(y);
        return static_cast<int>(std::set(pixels.begin(), pixels.end()).size());
    }

    /// How often the window's pixels were drawn in that time.
    int draws(double seconds) {
        auto const damage = xcb_generate_id(connection_.get());
        xcb_damage_create(connection_.get(), damage, window_, XCB_DAMAGE_REPORT_LEVEL_RAW_RECTANGLES);
        connection_.synchronize();
        while (connection_.poll()) { // the whole window is told of at first
        }
        int count = 0;
        double const start = mediaClockNow();
        while (mediaClockNow() - start < seconds) {
            while (auto const event = connection_.poll())
                count += (event->response_type & 0x7F) == damageEvent_ + XCB_DAMAGE_NOTIFY;
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        xcb_damage_destroy(connection_.get(), damage);
        return count;
    }

    /// Seconds that it takes until then.
    static double until(std::function<bool()> const& isSo) {
        double const start = mediaClockNow();
        while (!isSo()) {
            if (mediaClockNow() - start > patience) throw std::runtime_error("The window does not come that far.");
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return mediaClockNow() - start;
    }

private:
    bool findWindow() {
        auto const tree = connection_.ask<xcb_query_tree, xcb_query_tree_reply>(connection_.root());
        if (!tree) return false;
        auto const* children = xcb_query_tree_children(tree.get());
        for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
            auto const size = connection_.ask<xcb_get_geometry, xcb_get_geometry_reply>(children[i]);
            auto const state = connection_.ask<xcb_get_window_attributes, xcb_get_window_attributes_reply>(children[i]);
            bool const isIt = size && size->width >= 1280 && state && state->map_state == XCB_MAP_STATE_VIEWABLE;
            if (!isIt) continue;
            window_ = children[i];
            left_ = size->x, top_ = size->y;
        }
        return window_ != 0;
    }

    TestClient client_;
    x11::Connection& connection_;
    xcb_window_t window_ = 0;
    int left_ = 0, top_ = 0;
    int damageEvent_ = 0;
};

struct Start {
    double frame = 0;   // seconds until the window's texts are drawn
    double answer = 0;  // until it shows that the pointer is over it
    double stills = 0;  // until the projects' pictures are there
    double working = 0; // seconds of all cores until then
};

/// The places in the library's window of 1280 × 800 points.
constexpr int titleRow = 38, sideRow = 117, stillRow = 200;

Start measureStart(Screen& screen, Environment const& environment) {
    Start start;
    double const began = mediaClockNow();
    RunningProgram const program(environment);
    screen.awaitWindow();
    Screen::until([&] { return screen.colors(titleRow) >= textColors; });
    start.frame = mediaClockNow() - began;
    auto const before = screen.row(sideRow);
    screen.point(150, sideRow);
    Screen::until([&] { return screen.row(sideRow) != before; });
    start.answer = mediaClockNow() - began;
    Screen::until([&] { return screen.colors(stillRow) >= stillColors; });
    start.stills = mediaClockNow() - began;
    start.working = program.coreSeconds();
    screen.point(1500, 900);
    return start;
}

void measureStarts(Screen& screen, Environment const& environment) {
    std::vector<double> frames, answers, stills, working;
    for (int i = 0; i < starts; ++i) {
        auto const start = measureStart(screen, environment);
        if (i == 0) continue;
        frames.push_back(1000 * start.frame);
        answers.push_back(1000 * start.answer);
        stills.push_back(1000 * start.stills);
        working.push_back(1000 * start.working);
    }
    print("first_frame", median(frames), "ms");
    print("first_answer", median(answers), "ms");
    print("stills", median(stills), "ms");
    print("work_until_stills", median(working), "ms");
}

void measureRestOf(Screen& screen, RunningProgram const& program, std::string const& page) {
    std::this_thread::sleep_for(std::chrono::seconds(2)); // what comes with the page has come
    double const before = program.coreSeconds();
    print(page + ".draws_at_rest", screen.draws(restSeconds) / restSeconds, "/s");
    print(page + ".work_at_rest", 1000 * (program.coreSeconds() - before) / restSeconds, "ms/s");
    print(page + ".private_memory", program.privateMebibytes(), "MiB");
}

void measureRest(Screen& screen, Environment const& environment) {
    RunningProgram const program(environment);
    screen.awaitWindow();
    Screen::until([&] { return screen.colors(stillRow) >= stillColors; });
    measureRestOf(screen, program, "library");
    screen.focus();
    screen.client().key("Control_L", true);
    screen.client().tap("comma");
    screen.client().key("Control_L", false);
    measureRestOf(screen, program, "settings");
}

}

void benchProgram() {
    if (!TestDisplay::isInstalled()) return;
    TemporaryFolder const folder;
    makeLibrary(folder / "home" / "Movies" / "Tavaro");
    fs::create_directories(folder / "run");
    fs::permissions(folder / "run", fs::perms::owner_all);
    TestDisplay const display(1600, 1000);
    Environment const environment{{"XDG_CONFIG_HOME", folder / "config"},
                                  {"XDG_CACHE_HOME", folder / "cache"},
                                  {"XDG_STATE_HOME", folder / "state"},
                                  {"XDG_DATA_HOME", folder / "data"},
                                  {"XDG_RUNTIME_DIR", folder / "run"},
                                  {"HOME", folder / "home"},
                                  {"DISPLAY", display.name()},
                                  {"QT_QPA_PLATFORM", "xcb"},
                                  {"QT_QUICK_BACKEND", "software"}};
    Screen screen(display.name());
    measureStarts(screen, environment);
    measureRest(screen, environment);
}

}
