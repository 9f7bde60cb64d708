#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Jobs/SideQueue.h>
#endif
#include <Tavaro/Studio/Voice/VoiceMeans.h>

#include <QObject>
#include <QString>
#include <QVariantList>

#include <optional>
#include <string>
#include <vector>

namespace tavaro {

class EditorSession;
class MainQueue;

/// The voices that may speak an editor's narration, by the language they speak, and the one that does. A choice is a
/// step of the project. The service's own list is asked for only where somebody looks at its voices.
class VoiceOffer final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isLooking READ isLooking NOTIFY changed)
    Q_PROPERTY(QVariantList languages READ languages NOTIFY changed) // {id, name}; the service's is "service"
    Q_PROPERTY(QString language READ language WRITE setLanguage NOTIFY changed)
    Q_PROPERTY(QVariantList voices READ voices NOTIFY changed) // {id, name, about, isPaid} of the language
    Q_PROPERTY(QString voice READ voice WRITE choose NOTIFY changed)
    Q_PROPERTY(QString voiceName READ voiceName NOTIFY changed)
    Q_PROPERTY(bool isPaid READ isPaid NOTIFY changed)
    Q_PROPERTY(double speed READ speed WRITE setSpeed NOTIFY changed)

public:
    VoiceOffer(MainQueue& queue, EditorSession& session, VoiceMeans const& means);

    /// Asks which there are, beside the window; `changed` follows.
    Q_INVOKABLE void look();
    bool isLooking() const { return looks_ > 0; }
    QVariantList languages() const;
    QString language() const;
    void setLanguage(QString const& language);
    QVariantList voices() const;

    /// The id of the one that speaks; empty while that is not known.
    QString voice() const;
    QString voiceName() const;
    void choose(QString const& id);
    bool isPaid() const;
    double speed() const;
    void setSpeed(double speed);
    /// The plan's settings with the voice that speaks.
    VoiceSettings settings() const;
    std::vector<Voice> const& known() const { return voices_; }

Q_SIGNALS:
    void changed();

private:
    struct Found {
        std::vector<Voice> voices;
        std::string usual; // who speaks where nobody was chosen
    };

    VoiceSettings planned() const;
    Voice const* chosen() const;
    void askService();
    void edit(char const* step, VoiceSettings const& settings);

    EditorSession& session_;
    VoiceMeans const& means_;
    std::vector<Voice> voices_;
    std::string usual_;
    QString language_; // as chosen; empty: that of the voice
    int looks_ = 0;
    bool hasAskedService_ = false;
    SideQueue looking_;
};

}
