#include <Tavaro/Studio/Program/Studio.h>

#include <Tavaro/Model/Application/ApplicationInstance.h>
#include <Tavaro/Model/Application/ApplicationLog.h>
#include <Tavaro/Studio/Desk/DeskTypes.h>
#include <Tavaro/Studio/Exports/ExportTypes.h>
#include <Tavaro/Studio/Library/RegisterLibrary.h>
#include <Tavaro/Studio/Loop/QtLog.h>
#include <Tavaro/Studio/Loop/QueueInLoop.h>
#include <Tavaro/Studio/Loop/SignalsInLoop.h>
#include <Tavaro/Studio/Recorder/RecorderTypes.h>
#include <Tavaro/Studio/Settings/RegisterSettings.h>
#include <Tavaro/Studio/Style/RegisterStyle.h>
#include <Tavaro/Studio/Style/Theme.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Records/TaskPair.h>
#include <TavaroPlatform/Folders/Folders.h>
#include <TavaroPlatform/Queues/MainQueue.h>
#include <TavaroPlatform/Queues/ParallelPair.h>

#include <CLI/CLI.hpp>

#include <QGuiApplication>
#include <QIcon>
#include <QQmlApplicationEngine>

#include <spdlog/sinks/stdout_color_sinks.h>
#include <spdlog/spdlog.h>

#include <csignal>
#include <exception>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace tavaro {

namespace {

constexpr int failed = 1;
constexpr int wrongUsage = 2;

struct Options {
    std::vector<std::string> files;
};

/// Nothing where the program is to run, else its exit code.
std::optional<int> parse(int argc, char** argv, Options& options) {
    CLI::App app{"Tavaro records your screen and turns the take into a finished video.", "tavaro-studio"};
    app.set_version_flag("--version", "tavaro-studio " TAVARO_VERSION, "Prints the version and ends");
    app.add_option("FILE", options.files, "projects to open, and movies and archives to make projects of");
    try {
        app.parse(argc, argv);
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? 0 : wrongUsage;
    }
    for (auto& file : options.files) file = std::filesystem::absolute(file).string();
    return std::nullopt;
}

void prepare() {
    std::signal(SIGXFSZ, SIG_IGN); // a limit on the size of files is told as a full disk is, after cleaning up
    // Qt 6.4 shows nobody its widgets where this names the bus; without it, it asks the session.
    ::unsetenv("AT_SPI_BUS_ADDRESS");
    spdlog::default_logger()->sinks() = {std::make_shared<spdlog::sinks::stderr_color_sink_mt>()};
    setTaskPairRunner(runInParallel);
    logInto(folders::state());
    logQtMessages();
    QGuiApplication::setApplicationName(QStringLiteral("Tavaro"));
    QGuiApplication::setApplicationVersion(QStringLiteral(TAVARO_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("com.tavaro.Tavaro"));
    QGuiApplication::setQuitOnLastWindowClosed(false);
}

int run(Options const& options) {
    MainQueue queue;
    QueueInLoop const loop(queue);
    Studio studio(queue);
    DesktopLook desktop;
    Theme theme(studio.application().preferences(), desktop);
    registerStyle(theme);
    QQmlApplicationEngine engine;
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    registerLibrary(engine, studio.library());
    registerRecorderTypes();
    registerDeskTypes();
    registerExportTypes();
    registerSettings(studio.agentSettings(), studio.consent());
    qmlRegisterSingletonInstance("Tavaro.Program", 1, 0, "Studio", &studio);
    SignalsInLoop const signals([&] { studio.end(); });
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Tavaro/Studio/Pages/StudioWindow.qml")));
    if (engine.rootObjects().isEmpty()) return failed;
    studio.open(options.files);
    spdlog::info("Tavaro has begun.");
    auto const code = QGuiApplication::exec();
    spdlog::info("Tavaro has ended.");
    return code;
}

int start(int argc, char** argv) {
    Options options;
    if (auto const code = parse(argc, argv, options)) return *code;
    auto const instance = ApplicationInstance::claim();
    if (!instance) {
        if (SecondStart::handOver(options.files)) return 0;
        throw Error("Tavaro is already running without windows, for agents (`tavaro serve`).");
    }
    prepare();
    QGuiApplication const qt(argc, argv);
    return run(options);
}

}

}

int main(int argc, char** argv) {
    try {
        return tavaro::start(argc, argv);
    } catch (std::exception const& error) {
        spdlog::error("{}", error.what());
        return tavaro::failed;
    }
}
