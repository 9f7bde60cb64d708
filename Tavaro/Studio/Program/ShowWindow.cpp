#include <Tavaro/Studio/Program/ShowWindow.h>

#include <Tavaro/Studio/Desk/DeskTypes.h>
#include <Tavaro/Studio/Exports/ExportTypes.h>
#include <Tavaro/Studio/Library/RegisterLibrary.h>
#include <Tavaro/Studio/Program/Studio.h>
#include <Tavaro/Studio/Recorder/RecorderTypes.h>
#include <Tavaro/Studio/Settings/RegisterSettings.h>
#include <Tavaro/Studio/Settings/SpeechSettings.h>
#include <Tavaro/Studio/Style/RegisterStyle.h>
#include <Tavaro/Studio/Style/Theme.h>

#include <QQmlApplicationEngine>

namespace tavaro {

bool showWindow(QQmlApplicationEngine& engine, Studio& studio, Theme& theme) {
    registerStyle(theme);
    engine.addImportPath(QStringLiteral("qrc:/qt/qml"));
    registerLibrary(engine, studio.library());
    registerRecorderTypes();
    registerDeskTypes();
    registerExportTypes();
    registerSettings(studio.agentSettings(), studio.consent(), studio.updates());
    registerSpeechSettings(studio.speech());
    qmlRegisterSingletonInstance("Tavaro.Program", 1, 0, "Studio", &studio);
    engine.load(QUrl(QStringLiteral("qrc:/qt/qml/Tavaro/Studio/Pages/StudioWindow.qml")));
    return !engine.rootObjects().isEmpty();
}

}
