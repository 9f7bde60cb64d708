#include <Tavaro/Studio/Loop/QtLog.h>

#include <QString>
#include <QtGlobal>

#include <spdlog/spdlog.h>

namespace tavaro {

namespace {

spdlog::level::level_enum levelOf(QtMsgType type) {
    switch (type) {
    case QtDebugMsg: return spdlog::level::debug;
    case QtInfoMsg: return spdlog::level::info;
    case QtWarningMsg: return spdlog::level::warn;
    default: return spdlog::level::err;
    }
}

void note(QtMsgType type, QMessageLogContext const& context, QString const& message) {
    auto const text = message.toStdString();
    if (context.file && context.line > 0)
        spdlog::log(levelOf(type), "Qt: {} ({}:{})", text, context.file, context.line);
    else
        spdlog::log(levelOf(type), "Qt: {}", text);
    if (type == QtFatalMsg) spdlog::default_logger()->flush();
}

}

void logQtMessages() { qInstallMessageHandler(note); }

}
