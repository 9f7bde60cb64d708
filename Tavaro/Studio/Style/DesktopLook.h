#pragma once

#include <QObject>
#include <QString>
#include <QVariant>

#include <optional>

class QDBusPendingCallWatcher;
class QDBusVariant;

namespace tavaro {

enum class LookWish { light, dark };

/// Whether the user of this desktop likes windows light or dark: asked of the settings portal, which also tells when
/// that changes; else what GTK's settings say, else how light the platform's own windows are. Belongs to the main
/// thread, and never waits for the portal.
class DesktopLook : public QObject {
    Q_OBJECT

public:
    explicit DesktopLook(QObject* parent = nullptr);

    LookWish wish() const;

    /// What "settings.ini" of GTK wishes; nothing where it says nothing.
    static std::optional<LookWish> wishOfGTK(QString const& settings);

Q_SIGNALS:
    void changed();

private Q_SLOTS:
    void note(QString const& group, QString const& key, QDBusVariant const& value);

private:
    void ask(char const* method);
    void answered(QDBusPendingCallWatcher* call);
    void take(QVariant value);

    std::optional<LookWish> told_; // by the portal
    std::optional<LookWish> const gtk_;
};

}
