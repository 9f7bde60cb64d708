#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Jobs/SideQueue.h>

#include <TavaroPlatform/Preferences/Preferences.h>
#endif

#include <QObject>
#include <QString>
#include <QTimer>

#include <filesystem>
#include <stop_token>
#include <string>

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
        std::string program; // this one's file
        std::string ownerQuery = "dpkg-query";
        std::string policyQuery = "apt-cache";
        std::filesystem::path lists = "/var/lib/apt/lists"; // changes whenever the manager fetches what there is
    };

    UpdateCheck(MainQueue& queue, Preferences& preferences, Settings settings);
    ~UpdateCheck() override;

    bool isLooking() const { return isLooking_; }
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
    /// What the package manager says, on the side: of whose package this program's file is, and what there is of it.
    struct Answers {
        std::string package; // empty: of none
        std::string policy;
    };
    static Answers asked(Settings const& settings, std::stop_token const& stop);

    void tell(Answers const& answers);
    void finish(bool isAvailable, QString const& text, QString const& hint);
    QString age() const;

    Preferences& preferences_;
    Settings const settings_;
    QTimer timer_;
    bool isLooking_ = false;
    bool isAvailable_ = false;
    QString text_, hint_;
    Preferences::Observation observation_;
    std::stop_source ending_;
    SideQueue side_; // goes first
};

}
