// The agents' server as its client meets it: how soon it answers after it is started, a ping, and whole calls that go
// through it to the application and back, on an hour's take; and what the application takes in memory meanwhile.

#include "../Core/HourTake.h"
#include "../Render/HourMovie.h"
#include "ServerProcess.h"
#include "ServingApplication.h"

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Records/TaskPair.h>
#include <TavaroPlatform/Queues/ParallelPair.h>

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace tavaro {

namespace {

namespace fs = std::filesystem;

constexpr double moment = 1800; // seconds; in the middle of the hour

double millisecondsOf(std::function<void()> const& work) {
    auto const began = std::chrono::steady_clock::now();
    work();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - began).count();
}

/// Ascending.
std::vector<double> times(int rounds, std::function<void(int round)> const& work) {
    std::vector<double> times;
    for (int i = 0; i < rounds; ++i) times.push_back(millisecondsOf([&] { work(i); }));
    std::ranges::sort(times);
    return times;
}

double quantile(std::vector<double> const& sorted, double share) {
    return sorted[static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1))];
}

void print(std::string_view name, double value, std::string_view unit = "ms") {
    fmt::print("{} {:.3f} {}\n", name, value, unit);
    std::fflush(stdout);
}

void printMedian(std::string_view name, std::vector<double> const& sorted) { print(name, quantile(sorted, 0.5)); }

void measureStart() {
    constexpr int starts = 51;
    std::unique_ptr<ServerProcess> server;
    std::vector<double> starting;
    for (int i = 0; i < starts; ++i) {
        starting.push_back(millisecondsOf([&] {
            server = std::make_unique<ServerProcess>();
            server->introduce("bench");
        }));
        server.reset();
    }
    std::ranges::sort(starting);
    printMedian("mcp.start", starting);
}

void measurePing() {
    constexpr int pings = 10'000;
    ServerProcess server;
    auto const taken = times(pings, [&](int) { server.expect("{\"id\":2,\"method\":\"ping\"}\n", "\"result\":{}"); });
    print("mcp.ping.p50", quantile(taken, 0.5));
    print("mcp.ping.p99", quantile(taken, 0.99));
}

/// Its document is as long as they get: a full hour, with every list that grows with it.
ProjectPackage hourProject(fs::path const& folder) {
    ProjectPackage package(folder / "Hour.recproj");
    package.createDirectories();
    writeHourMovie(package.assetURL("screen.mp4"));
    auto project = hourTake();
    project.sourceSize = {1920, 1080};
    project.assetDurations = {{"screen.mp4", 3600}};
    package.save(project);
    return package;
}

/// What only bringing that many bytes to the disk takes, under a new name as a document is saved.
double diskTime(fs::path const& document) {
    constexpr int rounds = 7;
    auto const bytes = readWholeFile(document).value();
    auto const peer = document.parent_path() / "peer.json";
    auto const taken = times(rounds, [&](int) { writeFileAtomically(peer, bytes); });
    fs::remove(peer);
    return quantile(taken, 0.5);
}

class Calls {
public:
    Calls(ServingApplication const& application, ProjectPackage const& package)
        : application_(application)
        , package_(package)
        , id_(package.load().id.text()) {
        server_.introduce("bench");
    }

    void measure() {
        printMedian("mcp.status", times(501, [&](int) { server_.call("status", {}); }));
        printMemory("rest");
        print("mcp.open_project", millisecondsOf([&] { call("open_project"); }));
        printMemory("open");
        measureView();
        measureEdit();
        printMemory("edited");
        measureFrames();
        printMemory("drawn");
    }

private:
    std::string_view call(std::string_view tool, JSONValue::Object arguments = {}) {
        arguments.emplace("project_id", id_);
        return server_.call(tool, arguments);
    }

    void measureView() {
        std::size_t bytes = 0;
        printMedian("mcp.get_project", times(31, [&](int) { bytes = call("get_project").size(); }));
        print("mcp.get_project.answer", static_cast<double>(bytes) / 1e6, "MB");
    }

    /// One field that a frame shows. The first save since the project was opened writes all of it anew.
    void measureEdit() {
        auto const edit = [&](int round) {
            JSONValue::Object const screen{{"cornerRadius", 10 + round}};
            call("edit_project", {{"patch", JSONValue::Object{{"screen", screen}}}});
        };
        print("mcp.edit_project.first", millisecondsOf([&] { edit(-1); }));
        printMedian("mcp.edit_project", times(21, edit));
        print("mcp.edit_project.disk", diskTime(package_.projectFileURL()));
        if (package_.load().screen.cornerRadius != 30) throw std::runtime_error("The last edit is not on the disk.");
    }

    void measureFrames() {
        auto const draw = [&](double at) { call("render_frame", {{"time", at}, {"max_width", 1280}}); };
        print("mcp.render_frame.first", millisecondsOf([&] { draw(moment); }));
        printMedian("mcp.render_frame", times(15, [&](int) { draw(moment); }));
        printMedian("mcp.render_frame.next", times(15, [&](int round) { draw(moment + (round + 1) / 60.0); }));
        printMedian("mcp.render_frame.elsewhere", times(15, [&](int round) { draw(100 + round * 97.3); }));
    }

    void printMemory(std::string_view when) {
        auto const use = application_.memory();
        print(fmt::format("mcp.memory.{}", when), use.resident, "MiB");
        print(fmt::format("mcp.memory.{}.anonymous", when), use.anonymous, "MiB");
    }

    ServingApplication const& application_;
    ProjectPackage package_;
    std::string const id_;
    ServerProcess server_;
};

void measureCalls() {
    auto pattern = (fs::temp_directory_path() / "tavaro-bench-mcp-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("No folder for the measurement could be made.");
    struct Home {
        fs::path path;
        ~Home() {
            std::error_code ignored;
            fs::remove_all(path, ignored);
        }
    } const home{pattern};
    auto const package = hourProject(ServingApplication::library(home.path));
    ServingApplication const application(home.path);
    Calls(application, package).measure();
}

}

}

int main() {
    tavaro::setTaskPairRunner(tavaro::runInParallel);
    try {
        tavaro::measureStart();
        tavaro::measurePing();
        tavaro::measureCalls();
    } catch (std::exception const& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
