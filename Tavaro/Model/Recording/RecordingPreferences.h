#pragma once

#include <TavaroPlatform/Preferences/Preferences.h>

#include <string>

/// What a recording takes in where nothing else is asked for.
namespace tavaro {

inline Preference<bool> const microphoneRecorded{"com.tavaro.recorder.microphone", false};
/// As `tavaro sources` lists it; empty: the default one.
inline Preference<std::string> const microphoneChosen{"com.tavaro.recorder.microphoneID"};
inline Preference<bool> const systemAudioRecorded{"com.tavaro.recorder.systemAudio", false};

}
