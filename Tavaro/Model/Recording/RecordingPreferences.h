#pragma once

#include <TavaroCapture/Sources/CaptureSource.h>
#include <TavaroCapture/Sources/KeyLogging.h>
#include <TavaroPlatform/Preferences/Preferences.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// What a recording takes in where nothing else is asked for.
namespace tavaro {

inline Preference<bool> const microphoneRecorded{"com.tavaro.recorder.microphone", false};
/// As `tavaro sources` lists it; empty: the default one.
inline Preference<std::string> const microphoneChosen{"com.tavaro.recorder.microphoneID"};
inline Preference<bool> const systemAudioRecorded{"com.tavaro.recorder.systemAudio", false};
inline Preference<bool> const cameraRecorded{"com.tavaro.recorder.camera", false};
/// As `tavaro sources` lists it; empty: the default one.
inline Preference<std::string> const cameraChosen{"com.tavaro.recorder.cameraID"};
/// What is on the screen, as `sourceText` writes it; empty: the main display.
inline Preference<std::string> const sourceChosen{"com.tavaro.recorder.source"};
/// One application, by its name, that is heard instead of all that the machine plays.
inline Preference<std::string> const systemAudioChosen{"com.tavaro.recorder.systemAudioApplication"};
/// Which keys the log keeps, by the name of a `KeyLogging`. What is none of those keeps none.
inline Preference<std::string> const keysChosen{"com.tavaro.recorder.keys", "all", "none"};
/// Whole seconds before a take that a person begins.
inline Preference<std::int64_t> const countdownChosen{"com.tavaro.recorder.countdown", 3};
/// Shortcuts that work whichever window has the keyboard, as people write them; empty: none.
inline Preference<std::string> const toggleShortcut{"com.tavaro.recorder.toggleKey", "ctrl+alt+r"};
inline Preference<std::string> const pauseShortcut{"com.tavaro.recorder.pauseKey", "ctrl+alt+p"};
/// By how much cameras tell the moments of their pictures too late: "ID=SECONDS" each.
inline Preference<std::vector<std::string>> const cameraLags{"com.tavaro.recorder.cameraLags"};

inline constexpr double longestCameraLag = 0.5; // seconds, either way

KeyLogging chosenKeys(Preferences& preferences);
/// A camera with what is known of the lags of all; an empty id is the default one.
CameraDeviceSource cameraSource(std::string id, Preferences& preferences);
/// Keeps the lag of a camera. Throws `FileError`.
void keepCameraLag(Preferences& preferences, std::string const& id, double seconds);

}
