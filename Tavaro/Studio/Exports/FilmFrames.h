#pragma once

#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Model/Exporting/FrameDrawer.h>
#include <Tavaro/Model/Jobs/SideQueue.h>
#endif
#include <Tavaro/Studio/Editor/EditorSession.h>

#include <QObject>
#include <QString>
#include <QUrl>

#include <filesystem>
#include <functional>

namespace tavaro {

/// The frame at an editor's playhead, as large as the film: into the clipboard, and into a file. It is drawn as
/// `tavaro frame` draws it, beside the main thread. Main thread.
class FilmFrames final : public QObject {
    Q_OBJECT

public:
    FilmFrames(MainQueue& queue, FrameDrawer& drawer);

    /// As a PNG.
    Q_INVOKABLE void copy(tavaro::EditorSession* session);
    /// A free name for it in the user's pictures.
    Q_INVOKABLE QUrl fileFor(tavaro::EditorSession* session) const;
    /// The user has agreed to replace what has the name.
    Q_INVOKABLE void save(tavaro::EditorSession* session, QUrl const& file);

Q_SIGNALS:
    /// What was done. `file` is empty where none was written.
    void done(QString const& text, QString const& file);
    void failed(QString const& sentence);

private:
    void draw(EditorSession const& session, std::function<void(DrawnFrame const&)> use);
    void attempt(std::function<void()> const& action);

    FrameDrawer& drawer_;
    FrameDrawer::Interest wanted_; // the last one that was asked for
    SideQueue side_;
};

}
