#include <Tavaro/Studio/Voice/VoiceDesk.h>

#include <QQmlEngine>

#include <utility>

namespace tavaro {

VoiceDesk::VoiceDesk(MainQueue& queue, EditorSession& session, VoiceMeans means)
    : means_(std::move(means))
    , transcription_(queue, session, means_)
    , offer_(queue, session, means_)
    , sample_(queue, offer_, means_)
    , voiceover_(queue, session, offer_, means_)
    , script_(session, offer_, voiceover_) {
    for (auto* part :
         {static_cast<QObject*>(&transcription_), static_cast<QObject*>(&offer_), static_cast<QObject*>(&sample_),
          static_cast<QObject*>(&voiceover_), static_cast<QObject*>(&script_)})
        QQmlEngine::setObjectOwnership(part, QQmlEngine::CppOwnership);
}

void registerVoiceTypes() {
    auto const reason = QStringLiteral("They come with an editor.");
    qmlRegisterUncreatableType<VoiceDesk>("Tavaro.Voice", 1, 0, "VoiceDesk", reason);
    qmlRegisterUncreatableType<TranscriptionRun>("Tavaro.Voice", 1, 0, "TranscriptionRun", reason);
    qmlRegisterUncreatableType<VoiceOffer>("Tavaro.Voice", 1, 0, "VoiceOffer", reason);
    qmlRegisterUncreatableType<VoiceSample>("Tavaro.Voice", 1, 0, "VoiceSample", reason);
    qmlRegisterUncreatableType<VoiceoverRun>("Tavaro.Voice", 1, 0, "VoiceoverRun", reason);
    qmlRegisterUncreatableType<ScriptLines>("Tavaro.Voice", 1, 0, "ScriptLines", reason);
}

}
