#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <QTimer>

#include <map>

namespace tavaro {

/// Tells by the desktop's notifications what became of exports, where it shows any, with a way to their files. Asks
/// without waiting. Main thread.
class ExportNotice final : public QObject {
    Q_OBJECT

public:
    explicit ExportNotice(QDBusConnection const& bus = QDBusConnection::sessionBus());

    /// `file` is what its action shows; empty: it has none.
    void tell(QString const& title, QString const& text, QString const& file);
    /// Whether one that was told lately may still be answered, for which its program has to be there.
    bool isAwaited() const { return patience_.isActive(); }

Q_SIGNALS:
    void showRequested(QString const& file);

private Q_SLOTS:
    void act(uint number, QString const& action);
    void forget(uint number, uint reason);

private:
    void listen();

    QDBusConnection bus_;
    bool isListening_ = false;
    std::map<uint, QString> files_; // of what is shown, by its number
    QTimer patience_;
};

}
