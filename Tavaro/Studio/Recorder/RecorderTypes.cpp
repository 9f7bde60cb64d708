#include <Tavaro/Studio/Recorder/RecorderTypes.h>

#include <Tavaro/Studio/Recorder/FirstTake.h>
#include <Tavaro/Studio/Recorder/PictureItem.h>
#include <Tavaro/Studio/Recorder/RecorderBarModel.h>
#include <Tavaro/Studio/Recorder/RecorderDesk.h>
#include <Tavaro/Studio/Recorder/RecorderKeys.h>
#include <Tavaro/Studio/Recorder/RecorderModel.h>
#include <Tavaro/Studio/Recorder/TerminalTakes.h>
#include <Tavaro/Studio/Recorder/TrayItem.h>

#include <QtQml>

namespace tavaro {

namespace {

template<class Type> void announce(char const* name) {
    qmlRegisterUncreatableType<Type>("Tavaro.Recorder", 1, 0, name, QStringLiteral("The program makes it."));
}

}

void registerRecorderTypes() {
    qmlRegisterType<PictureItem>("Tavaro.Recorder", 1, 0, "PictureItem");
    announce<RecorderDesk>("RecorderDesk");
    announce<TrayItem>("TrayItem");
    announce<TerminalTakes>("TerminalTakes");
    announce<RecorderModel>("RecorderModel");
    announce<RecorderSources>("RecorderSources");
    announce<RecorderDevices>("RecorderDevices");
    announce<RecorderBarModel>("RecorderBarModel");
    announce<RecorderKeys>("RecorderKeys");
    announce<SourceModel>("SourceModel");
    announce<AreaModel>("AreaModel");
    announce<SoundMeter>("SoundMeter");
    announce<LiveCamera>("LiveCamera");
    announce<FirstTake>("FirstTake");
}

}
