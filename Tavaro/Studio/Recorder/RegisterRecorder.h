#pragma once

namespace tavaro {

class RecorderPanel;

/// Lets QML see it, which outlives it, as `Recorder` of "Tavaro.Recorder".
void registerRecorder(RecorderPanel& recorder);

}
