#pragma once

#include <Tavaro/Studio/Voice/ScriptLines.h>
#include <Tavaro/Studio/Voice/TranscriptionRun.h>
#include <Tavaro/Studio/Voice/VoiceMeans.h>
#include <Tavaro/Studio/Voice/VoiceOffer.h>
#include <Tavaro/Studio/Voice/VoiceSample.h>
#include <Tavaro/Studio/Voice/VoiceoverRun.h>

#include <QObject>

namespace tavaro {

/// What is said in an editor's project, and by whom: the transcription of a take, and the narration of the film. Asks
/// nothing of engines and services until a page does. Belongs to the session's thread, and goes before the session.
class VoiceDesk final : public QObject {
    Q_OBJECT
    Q_PROPERTY(tavaro::TranscriptionRun* transcription READ transcription CONSTANT)
    Q_PROPERTY(tavaro::VoiceOffer* offer READ offer CONSTANT)
    Q_PROPERTY(tavaro::VoiceSample* sample READ sample CONSTANT)
    Q_PROPERTY(tavaro::VoiceoverRun* voiceover READ voiceover CONSTANT)
    Q_PROPERTY(tavaro::ScriptLines* script READ script CONSTANT)

public:
    VoiceDesk(MainQueue& queue, EditorSession& session, VoiceMeans means);

    TranscriptionRun* transcription() { return &transcription_; }
    VoiceOffer* offer() { return &offer_; }
    VoiceSample* sample() { return &sample_; }
    VoiceoverRun* voiceover() { return &voiceover_; }
    ScriptLines* script() { return &script_; }

private:
    VoiceMeans const means_;
    TranscriptionRun transcription_;
    VoiceOffer offer_;
    VoiceSample sample_;
    VoiceoverRun voiceover_;
    ScriptLines script_;
};

/// Makes them known to QML, in "Tavaro.Voice". Once, before the first page is loaded.
void registerVoiceTypes();

}
