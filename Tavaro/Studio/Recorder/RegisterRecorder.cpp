#include <Tavaro/Studio/Recorder/RegisterRecorder.h>

#include <Tavaro/Studio/Recorder/RecorderPanel.h>

#include <QtQml>

namespace tavaro {

void registerRecorder(RecorderPanel& recorder) {
    qmlRegisterSingletonInstance("Tavaro.Recorder", 1, 0, "Recorder", &recorder);
}

}
