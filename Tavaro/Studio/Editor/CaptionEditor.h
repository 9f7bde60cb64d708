#pragma once

#include <Tavaro/Model/Jobs/SideQueue.h>
#include <Tavaro/Model/Project/OpenProject.h>

#include <QObject>
#include <QString>
#include <QStringList>
#include <QUrl>

namespace tavaro {

class EditorSession;

/// The captions of a project as a list is worked with: each edit is one step. Captions are named by their identities,
/// times are output seconds. Files are read and written beside the window.
class CaptionEditor final : public QObject {
    Q_OBJECT
    Q_PROPERTY(int current READ current NOTIFY currentChanged)

public:
    CaptionEditor(EditorSession& session, SideQueue& files);

    /// The row of the caption that the film shows at the playhead; −1 for none.
    int current() const { return current_; }
    /// The row of the one under the playhead, or of the last before it; −1 before the first.
    Q_INVOKABLE int rowBefore(double time) const;

    Q_INVOKABLE bool setText(QString const& caption, QString const& text);
    /// Where it begins; it keeps its length.
    Q_INVOKABLE bool setStart(QString const& caption, double start);
    Q_INVOKABLE bool setEnd(QString const& caption, double end);
    /// At a place in its text, in characters.
    Q_INVOKABLE bool split(QString const& caption, int position);
    Q_INVOKABLE bool joinWithNext(QString const& caption);
    Q_INVOKABLE bool remove(QString const& caption);
    /// Moves captions, all of them where none is named.
    Q_INVOKABLE bool shift(double by, QStringList const& captions = {});

    /// "1:02.50"
    Q_INVOKABLE static QString timeText(double seconds);
    /// Of what a person types: "62.5", "1:02.5", "1:02,50", "0:01:02". Negative for what is no time.
    Q_INVOKABLE static double timeOf(QString const& text);

    /// In place of those that there are, from a SubRip or WebVTT file.
    Q_INVOKABLE void importFrom(QUrl const& file);
    /// As SubRip or, by the file's ending, WebVTT, with the film's times; what had the name is replaced. `written`
    /// follows.
    Q_INVOKABLE void exportTo(QUrl const& file);

Q_SIGNALS:
    void currentChanged();
    /// By its name.
    void written(QString const& file);

private:
    void follow();

    EditorSession& session_;
    SideQueue& files_;
    int current_ = -1;
    OpenProject::Observation observation_;
};

}
