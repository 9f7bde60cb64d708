#pragma once

#include <Tavaro/Model/Making/Polish.h>

#include <QObject>
#include <QStringList>
#include <QVariantList>

#include <cstdint>
#include <memory>

namespace tavaro {

class EditorSession;
class MainQueue;

/// Auto Polish of an editor's project: its switches, the job beside the window, and its report. What is edited
/// meanwhile is polished too: the job then starts again. What it makes is one step.
class PolishRun final : public QObject {
    Q_OBJECT
    Q_PROPERTY(bool isRunning READ isRunning NOTIFY changed)
    Q_PROPERTY(QVariantList switches READ switches NOTIFY changed)
    Q_PROPERTY(QStringList report READ report NOTIFY changed)

public:
    PolishRun(MainQueue& queue, EditorSession& session);
    ~PolishRun() override;

    bool isRunning() const { return job_ != nullptr; }
    /// {name, label, isOn}
    QVariantList switches() const;
    Q_INVOKABLE void setSwitch(QString const& name, bool isOn);
    /// Of the last run that ended well, a line for each thing that happened.
    QStringList report() const { return report_; }
    Q_INVOKABLE void start();
    Q_INVOKABLE void cancel();

Q_SIGNALS:
    void changed();

private:
    using PolishJob = Job<PolishedProject>;

    void begin();
    void finish(std::uint64_t revision);

    MainQueue& queue_;
    EditorSession& session_;
    PolishOptions options_;
    std::unique_ptr<PolishJob> job_;
    QStringList report_;
};

}
