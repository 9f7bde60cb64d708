#include <Tavaro/Studio/Program/ShowWindow.h>
#include <Tavaro/Studio/Program/Studio.h>

#include <Tavaro/Control/ControlCaller.h>
#include <Tavaro/Control/ControlServer.h>
#include <Tavaro/Model/Application/ApplicationInstance.h>
#include <Tavaro/Model/Application/ApplicationLog.h>
#include <Tavaro/Studio/Loop/QtLog.h>
#include <Tavaro/Studio/Loop/QueueInLoop.h>
#include <Tavaro/Studio/Loop/SignalsInLoop.h>
#include <Tavaro/Studio/Style/Theme.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Records/TaskPair.h>
#include <TavaroPlatform/Folders/Folders.h>
#include <TavaroPlatform/Processes/DesktopSession.h>
#include <TavaroPlatform/Queues/MainQueue.h>
#include <TavaroPlatform/Queues/ParallelPair.h>
#include <TavaroPlatform/Version/Version.h>
#include <TavaroVoice/ElevenLabs/ElevenLabsKey.h>

#include <CLI/CLI.hpp>

#include <QGuiApplication>
#include <QIcon>
#include <QQmlApplicationEngine>

#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

#include <chrono>
#include <csignal>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <thread>
#include <utility>

namespace tavaro {

namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

/// Nothing where the program is to run, else its exit code.
std::optional<int> parse(int argc, char** argv, Start& start) {
    CLI::App app{"Tavaro records your screen and turns the take into a finished video.", "tavaro-studio"};
    app.set_version_flag("--version", versionOf("tavaro-studio"), "Prints the version and ends");
    app.add_option("FILE", start.files, "projects to open, and movies and archives to make projects of");
    auto* const record = app.add_flag_callback(
        "--record", [&] { start.place = "record"; }, "show the recorder");
    app.add_flag_callback(
           "--library", [&] { start.place = "library"; }, "show the library")
        ->excludes(record);
    app.add_flag("--minimized", start.isMinimized, "begin with the window minimized, as for agents");
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? 0 : wrongUsage;
    }
    for (auto& file : start.files) file = std::filesystem::absolute(file).string();
    return std::nullopt;
}

void prepare() {
    elevenLabsKey::takeFromEnvironment();
    std::signal(SIGXFSZ, SIG_IGN); // a limit on the size of files is told as a full disk is, after cleaning up
    // Qt 6.4 shows nobody its widgets where this names the bus; without it, it asks the session.
    ::unsetenv("AT_SPI_BUS_ADDRESS");
    setTaskPairRunner(runInParallel);
    logInto(folders::state());
    logQtMessages();
    QGuiApplication::setApplicationName(QStringLiteral("Tavaro"));
    QGuiApplication::setApplicationVersion(QString::fromUtf8(programVersion()));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.tavaro.Tavaro"));
    QGuiApplication::setQuitOnLastWindowClosed(false);
}

using Place = std::optional<ApplicationInstance>;

/// Whether the program that runs has taken over what this one was started for. One without windows is asked to make
/// room; one that is only about to begin, or to end, is neither yet. One whose end takes long, since it saves a take,
/// is not waited for: the window takes its place once it is free.
bool isHandedOver(Start const& start, Place& place) {
    using namespace std::chrono_literals;
    auto const deadline = std::chrono::steady_clock::now() + 4s;
    while (true) {
        place = ApplicationInstance::claim();
        if (place) return false;
        if (SecondStart::handOver(start)) return true;
        if (askToHandOver(controlSocketPath())) return false;
        if (std::chrono::steady_clock::now() > deadline) {
            if (SecondStart::isListening()) throw Error("Tavaro is already running, but does not answer.");
            return false;
        }
        std::this_thread::sleep_for(50ms);
    }
}

int run(Start const& start, Place place) {
    QGuiApplication::setWindowIcon(QIcon::fromTheme(QGuiApplication::desktopFileName(),
                                                    QIcon(QStringLiteral(":/qt/qml/Tavaro/Studio/Tavaro.svg"))));
    MainQueue queue;
    QueueInLoop const loop(queue);
    Studio studio(queue, std::move(place), start.isMinimized);
    DesktopLook desktop;
    Theme theme(studio.application().preferences(), desktop);
    QQmlApplicationEngine engine;
    SignalsInLoop const signals([&] { studio.end(); });
    if (!showWindow(engine, studio, theme)) return failed;
    studio.open(start);
    spdlog::info("Tavaro has begun.");
    auto const code = QGuiApplication::exec();
    spdlog::info("Tavaro has ended.");
    return code;
}

/// Qt itself would end with a dump of its memory.
void expectDesktop() {
    if (hasDisplay() || qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) return;
    throw Error("There is no desktop here to show a window on: neither DISPLAY nor WAYLAND_DISPLAY is set. The command "
                "“tavaro” needs none.");
}

int begin(int argc, char** argv) {
    spdlog::default_logger()->sinks() = {std::make_shared<spdlog::sinks::stderr_color_sink_mt>()};
    Start start;
    if (auto const code = parse(argc, argv, start)) return *code;
    Place place;
    if (isHandedOver(start, place)) return 0;
    expectDesktop();
    prepare();
    QGuiApplication const qt(argc, argv);
    return run(start, std::move(place));
}

}

}

int main(int argc, char** argv) {
    try {
        return tavaro::begin(argc, argv);
    } catch (std::exception const& error) {
        spdlog::error("{}", error.what());
        return tavaro::failed;
    }
}
