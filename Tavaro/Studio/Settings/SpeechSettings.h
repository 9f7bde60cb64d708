#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Jobs/SideQueue.h>

#include <TavaroPlatform/Keychain/Secret.h>
#include <TavaroPlatform/Preferences/Preferences.h>
#include <TavaroVoice/Speaking/Speaker.h>
#include <TavaroVoice/Transcription/TranscriptionEngines.h>
#endif

#include <QObject>
#include <QString>
#include <QUrl>
#include <QVariantList>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace tavaro {

class MainQueue;

/// The settings of what speaks and listens: the key of the voice service, which is stored, checked and forgotten but
/// never shown, and the engines, with how to get more of them. What takes time is done beside the window. Main thread.
class SpeechSettings final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString keyState READ keyState NOTIFY changed)        // "unknown", "none", "stored", "environment"
    Q_PROPERTY(bool isBusy READ isBusy NOTIFY changed)               // with the key
    Q_PROPERTY(QString said READ said NOTIFY changed)                // what came of it, a sentence
    Q_PROPERTY(bool isProblem READ isProblem NOTIFY changed)         // whether that is one
    Q_PROPERTY(bool isLooking READ isLooking NOTIFY changed)         // at the engines
    Q_PROPERTY(QVariantList listeners READ listeners NOTIFY changed) // {name, isReady, about}
    Q_PROPERTY(QVariantList speakers READ speakers NOTIFY changed)
    Q_PROPERTY(QString modelFolder READ modelFolder CONSTANT)
    Q_PROPERTY(
        QString model READ model NOTIFY changed) // a file of the user's own choice; empty: the best of the folder

public:
    /// Whom it asks; called beside the main thread. All may throw an `Error`.
    struct Means {
        enum class Key { none, stored, environment };
        std::function<Key()> key;
        std::function<void(Secret const&)> store;
        std::function<bool()> forget;
        std::function<void()> check;                // returns where the service takes the key
        std::function<std::vector<Voice>()> voices; // of this machine
        std::function<std::vector<TranscriptionEngine>(EnginePlaces const&)> engines = transcriptionEngines;

        static Means ofThisUser();
    };

    SpeechSettings(MainQueue& queue, Preferences& preferences, Means means = Means::ofThisUser());

    /// Asks for everything anew; `changed` follows. May ask the user to unlock the keychain.
    Q_INVOKABLE void look();
    QString keyState() const { return keyState_; }
    bool isBusy() const { return isBusy_; }
    QString said() const { return said_; }
    bool isProblem() const { return isProblem_; }
    Q_INVOKABLE void store(QString const& key);
    Q_INVOKABLE void check();
    Q_INVOKABLE void forget();

    bool isLooking() const { return isLooking_; }
    QVariantList listeners() const { return listeners_; }
    QVariantList speakers() const { return speakers_; }
    QString modelFolder() const;
    QString model() const;
    Q_INVOKABLE void openModelFolder();
    /// An empty one leaves the choice to Tavaro.
    Q_INVOKABLE void setModel(QUrl const& file);

Q_SIGNALS:
    void changed();
    void failed(QString const& sentence);

private:
    struct Found {
        std::vector<TranscriptionEngine> engines;
        std::vector<Voice> voices;
    };

    void ask(std::function<Means::Key()> work, QString const& done);
    void lookForEngines();

    Preferences& preferences_;
    Means const means_;
    QString keyState_ = QStringLiteral("unknown"), said_;
    bool isBusy_ = false, isProblem_ = false, isLooking_ = false;
    QVariantList listeners_, speakers_;
    SideQueue keys_, engines_;
};

/// Lets QML see it, which outlives it, as `Speech` of "Tavaro.Settings".
void registerSpeechSettings(SpeechSettings& settings);

}
