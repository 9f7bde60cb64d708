#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <TavaroPlatform/Preferences/Preferences.h>
#endif

#include <QObject>
#include <QProcess>
#include <QString>
#include <QStringList>
#include <QTimer>

#include <filesystem>
#include <functional>

namespace tavaro {

// It asks this machine only, so it is on unless somebody switches it off.
inline Preference<bool> const updatesLookedFor{"com.tavaro.updates.weekly", true};
inline Preference<std::int64_t> const updatesLastLook{"com.tavaro.updates.lastLook"}; // seconds since 1970

/// Whether there is a newer Tavaro: asks the package manager by which this one was installed, which reads what it
/// fetched before. Nothing is fetched, and nothing is installed. Waits for nobody. Main thread.
class UpdateCheck : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isLooking READ isLooking NOTIFY changed)
    Q_PROPERTY(bool isAvailable READ isAvailable NOTIFY changed) // a newer one is
    Q_PROPERTY(QString text READ text NOTIFY changed)            // what came of it
    Q_PROPERTY(QString hint READ hint NOTIFY changed)            // what to do, or how far to trust it; empty: nothing
    Q_PROPERTY(bool isWeekly READ isWeekly WRITE setWeekly NOTIFY changed)

public:
    struct Settings {
        QString program; // this one's file
        QString ownerQuery = QStringLiteral("dpkg-query");
        QString policyQuery = QStringLiteral("apt-cache");
        std::filesystem::path lists = "/var/lib/apt/lists"; // changes whenever the manager fetches what there is
    };

    UpdateCheck(Preferences& preferences, Settings settings);
    ~UpdateCheck() override;

    bool isLooking() const { return process_.state() != QProcess::NotRunning; }
    bool isAvailable() const { return isAvailable_; }
    QString const& text() const { return text_; }
    QString const& hint() const { return hint_; }
    bool isWeekly() const;
    void setWeekly(bool isWeekly);

    /// `changed` follows.
    Q_INVOKABLE void look();
    /// The same where it is on, and the last look is a week ago.
    void lookWeekly();

Q_SIGNALS:
    void changed();
    void failed(QString const& sentence);

private:
    using Said = std::function<void(QString const&)>;

    void ask(QString const& program, QStringList const& arguments, Said said);
    void finish(bool isAvailable, QString const& text, QString const& hint);
    void tellPolicy(QString const& package, QString const& said);
    QString age() const;

    Preferences& preferences_;
    Settings const settings_;
    QProcess process_;
    QTimer timer_;
    Said said_;
    bool isAvailable_ = false;
    QString text_, hint_;
    Preferences::Observation observation_;
};

}
