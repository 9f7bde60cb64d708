#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Voice/VoiceoverJob.h>
#include <Tavaro/Studio/Playback/SoundOutput.h>

#include <TavaroVoice/Transcription/TranscriptionEngines.h>
#endif

#include <filesystem>
#include <functional>
#include <memory>

namespace tavaro {

/// By what an editor hears and speaks. Called on the main thread.
struct VoiceMeans {
    std::function<VoiceService()> service;
    std::function<EnginePlaces()> engines;
    std::function<std::unique_ptr<SoundOutput>()> output; // called by the thread that plays
    std::filesystem::path samples;                        // where voices to hear first are kept

    static VoiceMeans ofThisMachine();
};

}
