#pragma once

#include <Tavaro/Studio/Lists/KeyedRows.h>
#ifndef Q_MOC_RUN // whose parser of Qt 6.4 gives up in there
#include <Tavaro/Studio/Lists/DocumentItems.h>

#include <TavaroCore/Records/FunctionRef.h>
#include <TavaroCore/Values/TimeRange.h>
#include <TavaroCore/Voice/VoiceoverPlan.h>
#endif

#include <QString>
#include <QVariantList>

#include <vector>

namespace tavaro {

class EditorSession;
class VoiceOffer;
class VoiceoverRun;

using RowsByLine = KeyedRows<UUID, UUIDHash>;

/// The narration of an editor's project, a row a line, in the order in which they begin. Roles: `identity`, `text`,
/// `start` (output seconds), `stage` ("spoken", "changed": it has sound of another text or voice, "unspoken", "waiting"
/// while a run has yet to speak it, "empty") and `failure`, why it could not be spoken. Each edit is one step.
class ScriptLines final : public RowsByLine {
    Q_OBJECT
    Q_PROPERTY(int current READ current NOTIFY currentChanged) // the row that is spoken at the playhead; −1: none
    Q_PROPERTY(bool holdsFrame READ holdsFrame WRITE setHoldsFrame NOTIFY planChanged)
    Q_PROPERTY(bool ducks READ ducks WRITE setDucks NOTIFY planChanged)
    Q_PROPERTY(double duckAmount READ duckAmount WRITE setDuckAmount NOTIFY planChanged)
    Q_PROPERTY(bool hasSound READ hasSound NOTIFY planChanged)
    Q_PROPERTY(QString script READ script NOTIFY planChanged) // as text that `paste` reads

public:
    ScriptLines(EditorSession& session, VoiceOffer const& offer, VoiceoverRun const& run);

    QHash<int, QByteArray> roleNames() const override;
    QVariant data(QModelIndex const& index, int role) const override;

    /// What a draft can be for: {name, title, detail}.
    Q_INVOKABLE static QVariantList styles();
    /// In place of what there is; lines whose text stays keep their sound.
    Q_INVOKABLE bool draft(QString const& style, QString const& product);
    Q_INVOKABLE bool paste(QString const& script);
    Q_INVOKABLE static QString clipboardText();

    Q_INVOKABLE bool setText(QString const& line, QString const& text);
    /// Where it begins, and stays whatever happens to the lines before.
    Q_INVOKABLE bool setStart(QString const& line, double start);
    Q_INVOKABLE bool remove(QString const& line);
    /// An empty line at the playhead; its identity.
    Q_INVOKABLE QString add();

    int current() const { return current_; }
    bool holdsFrame() const;
    void setHoldsFrame(bool holds);
    bool ducks() const;
    void setDucks(bool ducks);
    double duckAmount() const;
    void setDuckAmount(double amount);
    bool hasSound() const;
    QString script() const;

Q_SIGNALS:
    void currentChanged();
    void planChanged();

private:
    void update();
    void follow();
    VoiceoverSegment const* line(UUID const& id) const;
    QString stageOf(VoiceoverSegment const& line) const;
    bool edit(char const* step, FunctionRef<void(DemoProject&)> change);

    EditorSession& session_;
    VoiceOffer const& offer_;
    VoiceoverRun const& run_;
    VoiceSettings voice_;          // that speaks
    std::vector<TimeRange> spans_; // of the rows
    int current_ = -1;
};

}
