#pragma once

#include <Tavaro/Studio/Exports/ExportForm.h>
#include <Tavaro/Studio/Exports/ExportNotice.h>
#include <Tavaro/Studio/Exports/ExportQueue.h>
#include <Tavaro/Studio/Exports/FilmFrames.h>
#include <Tavaro/Studio/Exports/SleepGuard.h>

#include <QObject>
#include <QString>

namespace tavaro {

class Application;

/// All of exporting in a program with windows: the form, the queue, frames, and what the desktop hears of it. It goes
/// before the application.
class ExportsDesk final : public QObject {
    Q_OBJECT
    Q_PROPERTY(tavaro::ExportQueue* queue READ queue CONSTANT)
    Q_PROPERTY(tavaro::ExportForm* form READ form CONSTANT)
    Q_PROPERTY(tavaro::FilmFrames* frames READ frames CONSTANT)
    Q_PROPERTY(bool isWatched MEMBER isWatched_) // whether the user has the window in front

public:
    ExportsDesk(MainQueue& queue, Application& application);

    ExportQueue* queue() { return &queue_; }
    ExportForm* form() { return &form_; }
    FilmFrames* frames() { return &frames_; }

    /// Whether nothing is under way that the program has to be there for.
    bool isIdle() const { return queue_.isIdle() && !notice_.isAwaited(); }
    /// The program ends.
    void end() { queue_.end(); }

    /// Shows the file that was told of last.
    Q_INVOKABLE void accept();

Q_SIGNALS:
    /// For the window in front. `action` names a way on, which `accept` goes; empty: there is none.
    void said(QString const& text, QString const& action);
    void failed(QString const& sentence);

private:
    void tell(int row);
    void say(QString const& text, QString const& file);

    ExportQueue queue_;
    ExportForm form_;
    FilmFrames frames_;
    ExportNotice notice_;
    SleepGuard guard_;
    bool isWatched_ = false;
    QString file_; // what `accept` shows
};

}
