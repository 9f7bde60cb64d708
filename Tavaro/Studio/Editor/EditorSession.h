#pragma once

#include <Tavaro/Model/Jobs/SideQueue.h>
#include <Tavaro/Model/Operations/Operation.h>
#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Studio/Editor/EditorCommand.h>
#include <Tavaro/Studio/Editor/PicturePlace.h>
#include <Tavaro/Studio/Editor/PolishRun.h>
#include <Tavaro/Studio/Lists/DocumentItems.h>

#include <TavaroCore/Records/FunctionRef.h>

#include <QAbstractItemModel>
#include <QColor>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QVariantList>

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <unordered_set>
#include <vector>

namespace tavaro {

class CaptionEditor;
class InspectorModel;
class ItemDrag;
class MainQueue;
class RowsModel;
class StepList;
class TranscriptModel;

/// One open project in a window: its commands as steps of the one history, and what belongs to the window alone, which
/// is the playhead, the selection and the looks of the timeline. Others may edit the same project meanwhile: the
/// playhead stays on its picture, and the selection loses only what is gone. Belongs to the project's thread, inside of
/// Qt's loop.
///
/// Edits are saved half a second after they were made, by a timer and on a thread beside, so that none waits for the
/// disk; what another program saved is looked for once a second. Nothing here throws: what goes wrong is told by
/// `told`, as a sentence.
class EditorSession final : public QObject {
    Q_OBJECT
    Q_PROPERTY(QString name READ name NOTIFY documentChanged)
    Q_PROPERTY(double duration READ duration NOTIFY documentChanged)
    Q_PROPERTY(double playhead READ playhead WRITE setPlayhead NOTIFY playheadChanged)
    Q_PROPERTY(QStringList selection READ selectedIdentities NOTIFY selectionChanged)
    Q_PROPERTY(double rangeStart READ rangeStart NOTIFY rangeChanged)
    Q_PROPERTY(double rangeDuration READ rangeDuration NOTIFY rangeChanged)
    Q_PROPERTY(bool snaps READ snaps WRITE setSnaps NOTIFY viewChanged)
    Q_PROPERTY(double timelineStart READ timelineStart WRITE setTimelineStart NOTIFY viewChanged)
    Q_PROPERTY(double timelineScale READ timelineScale WRITE setTimelineScale NOTIFY viewChanged)
    Q_PROPERTY(QString inspector READ inspector WRITE setInspector NOTIFY inspectorChanged)
    Q_PROPERTY(QStringList collapsedLanes READ collapsedLanes WRITE setCollapsedLanes NOTIFY viewChanged)
    Q_PROPERTY(QString undoName READ undoName NOTIFY stepsChanged)
    Q_PROPERTY(QString redoName READ redoName NOTIFY stepsChanged)
    Q_PROPERTY(QString backgroundPreset READ backgroundPreset NOTIFY documentChanged)
    Q_PROPERTY(bool isSaved READ isSaved NOTIFY savedChanged)
    Q_PROPERTY(QStringList commandNames READ commandNames CONSTANT)
    Q_PROPERTY(tavaro::PolishRun* polish READ polish CONSTANT)
    Q_PROPERTY(QAbstractItemModel* fields READ fieldsModel CONSTANT)
    Q_PROPERTY(QAbstractItemModel* transcript READ transcriptModel CONSTANT)
    Q_PROPERTY(QVariantList recentColors READ recentColors NOTIFY recentColorsChanged)
    Q_PROPERTY(QAbstractItemModel* steps READ stepsModel CONSTANT)
    Q_PROPERTY(QObject* captions READ captionEditor CONSTANT)

public:
    EditorSession(MainQueue& queue, std::shared_ptr<OpenProject> project);
    /// Saves what is not saved yet, as far as that is possible.
    ~EditorSession() override;

    OpenProject& project() const { return *project_; }
    std::shared_ptr<OpenProject> const& opened() const { return project_; }
    DemoProject const& document() const { return project_->document(); }

    QString name() const;
    double duration() const { return document().duration(); }
    double playhead() const { return place_.time; }
    /// Held to 0…`duration`.
    void setPlayhead(double time);
    /// By whole frames of the film, back where negative.
    Q_INVOKABLE void step(int frames);
    /// To the next edge of a clip or an item, or back to the one before.
    Q_INVOKABLE void jump(bool forward);

    // The selection: identities, in the order in which they were selected.

    enum class Select { only, also, toggled };
    Q_ENUM(Select)
    std::vector<UUID> const& selection() const { return selection_; }
    QStringList selectedIdentities() const;
    Q_INVOKABLE void select(QString const& identity, Select how = Select::only);
    Q_INVOKABLE void selectAll();
    Q_INVOKABLE void clearSelection() { select(std::vector<UUID>()); }
    Q_INVOKABLE bool isSelected(QString const& identity) const;
    void select(std::vector<UUID> const& items, Select how = Select::only);
    /// What of these kinds is at least partly inside of a span; `marquee` selects it.
    std::vector<UUID> itemsWithin(TimeRange const& range, std::vector<ItemKind> const& kinds) const;
    Q_INVOKABLE void marquee(double start, double duration, QStringList const& kinds, Select how = Select::only);
    /// Whether one of that kind is selected.
    bool hasSelected(ItemKind kind) const { return selectedKinds_[static_cast<std::size_t>(kind)] > 0; }

    /// A span of the film that commands work on; none when its duration is 0.
    TimeRange const& range() const { return range_; }
    double rangeStart() const { return range_.start; }
    double rangeDuration() const { return range_.duration; }
    Q_INVOKABLE void setRange(double start, double duration);
    Q_INVOKABLE void clearRange() { setRange(0, 0); }

    // What the window looks like; kept with the project.

    bool snaps() const { return view_.snaps; }
    double timelineStart() const { return view_.timelineStart; }
    double timelineScale() const { return view_.timelineScale; }
    QString inspector() const;
    QStringList collapsedLanes() const;
    void setSnaps(bool snaps);
    void setTimelineStart(double seconds);
    void setTimelineScale(double pointsASecond);
    void setInspector(QString const& name);
    void setCollapsedLanes(QStringList const& names);

    // Edits. Each is one step, and false where it is refused or changes nothing.

    /// Runs what may throw; what it throws is told. False where it threw.
    bool attempt(FunctionRef<void()> action);
    bool edit(StepLabel const& step, FunctionRef<void(DemoProject&)> change, EditGroup group = {});
    bool perform(Operation const& operation);
    /// Commands by their names; null for a name that there is not.
    Q_INVOKABLE tavaro::EditorCommand* command(QString const& name) const;
    std::vector<std::unique_ptr<EditorCommand>> const& commands() const { return commands_; }
    QStringList commandNames() const;
    /// The commands of a context menu, by the name of a `MenuPlace`; one that begins with "-" begins a group.
    Q_INVOKABLE static QStringList menu(QString const& place);
    Q_INVOKABLE void undo();
    Q_INVOKABLE void redo();
    QString undoName() const;
    QString redoName() const;

    Q_INVOKABLE bool split(double at);
    Q_INVOKABLE bool removeSelected();
    Q_INVOKABLE bool duplicateSelected();
    /// Of the range, times as fast as it is; else of the selected clips, or the clip at the playhead.
    Q_INVOKABLE bool setSpeed(double rate);
    /// The speed of what `setSpeed` changes: of a range 1, of clips that of the first; 0 where there is none.
    Q_INVOKABLE double speed() const;
    /// The output seconds of it.
    Q_INVOKABLE double speedSeconds() const;
    Q_INVOKABLE bool setClipsMuted(bool isMuted);
    Q_INVOKABLE bool insertTime(double seconds);
    Q_INVOKABLE bool rename(QString const& name);
    /// The document as it was before the last save that changed it becomes the present one, as a step; read beside the
    /// window.
    Q_INVOKABLE void goBackToEarlierSave();
    /// New items at the playhead, selected: the names of `ItemKind`, and of an overlay's kind.
    Q_INVOKABLE bool add(QString const& kind, QString const& variety = {});
    /// The built-in backgrounds: {id, name, family, style, familyTitle}.
    Q_INVOKABLE QVariantList backgroundPresets() const;
    /// The id of the built-in one that the film has; empty where it has one of its own.
    QString backgroundPreset() const;
    /// By the id of a built-in one.
    Q_INVOKABLE bool setBackground(QString const& preset);
    Q_INVOKABLE bool moveClip(QString const& identity, double to);

    // A drag: from `beginDrag` to `endDrag` everything is one step. `to` and `by` are measured from where it began.

    Q_INVOKABLE void beginDrag(QString const& identity);
    Q_INVOKABLE bool dragItems(double by, double snapPixels = 0);
    Q_INVOKABLE bool dragEdge(bool leading, double to, double snapPixels = 0);
    Q_INVOKABLE void endDrag();
    /// Takes back what the drag did.
    Q_INVOKABLE void cancelDrag();

    // Copies, as text that other editors paste.

    QByteArray copied() const;
    bool paste(QByteArray const& copied);
    Q_INVOKABLE void copy() const;
    Q_INVOKABLE bool cut();
    Q_INVOKABLE bool pasteHere();
    bool canPaste() const { return canPaste_; }

    /// Auto Polish, beside the window.
    PolishRun* polish() const { return polish_.get(); }

    /// Colours that were chosen of late, the last one first.
    QVariantList recentColors() const { return recentColors_; }
    Q_INVOKABLE void noteColor(QColor const& color);

    /// Copies a media file into the project, beside the window; `imported` says what it is called there.
    Q_INVOKABLE void importFile(QString const& path);

    // Models for views, each made when it is first asked for.

    /// The fields of what is selected; without a selection, of the section that is the open inspector. An
    /// `InspectorModel`.
    QAbstractItemModel* fieldsModel();
    /// The fields of a section of the document, or of the item of an identity, whatever is selected. An
    /// `InspectorModel`.
    Q_INVOKABLE QAbstractItemModel* fieldsOf(QString const& what);
    /// A `TranscriptModel`.
    QAbstractItemModel* transcriptModel();
    /// A `StepList`.
    QAbstractItemModel* stepsModel();
    /// A `CaptionEditor`.
    QObject* captionEditor();
    /// The items of a kind as rows.
    Q_INVOKABLE QAbstractItemModel* list(QString const& kind);

    bool isSaved() const { return !project_->hasUnsavedChanges(); }
    /// Saves now, beside the window; what cannot be saved is told.
    Q_INVOKABLE void save();

Q_SIGNALS:
    void documentChanged();
    void changedOutside();
    void playheadChanged();
    void selectionChanged();
    void rangeChanged();
    void viewChanged();
    void inspectorChanged();
    void stepsChanged();
    void savedChanged();
    void recentColorsChanged();
    void imported(QString const& path, QString const& asset);
    /// A command whose doing is the window's, by its name.
    void wanted(QString const& command);
    /// For the user to read.
    void told(QString const& sentence);

private:
    void observe(ProjectChange const& change);
    void holdToDocument();
    void dropWhatIsGone();
    void countKinds();
    void updateCommands();
    void lookAtClipboard();
    std::vector<UUID> selectedOf(ItemKind kind) const;
    std::vector<UUID> clipsInHand() const;
    std::string selectionNoun() const;
    void keepView();
    void finishSave(std::shared_ptr<PendingSave> const& save);
    void inspect();

    std::shared_ptr<OpenProject> project_;
    PicturePlace place_;
    EditorState view_; // as it is kept, but for playhead and selection
    std::vector<UUID> selection_;
    std::array<int, namesOf(ItemKind{}).size()> selectedKinds_{};
    TimeRange range_;
    std::unique_ptr<ItemDrag> drag_;
    std::unique_ptr<PolishRun> polish_;
    std::vector<std::unique_ptr<EditorCommand>> commands_;
    std::map<ItemKind, std::unique_ptr<RowsModel>> lists_;
    std::unique_ptr<InspectorModel> fields_;
    std::map<QString, std::unique_ptr<InspectorModel>> fieldsOf_;
    QVariantList recentColors_;
    std::unique_ptr<TranscriptModel> transcript_;
    std::unique_ptr<StepList> steps_;
    std::unique_ptr<CaptionEditor> captions_;
    bool canPaste_ = false;
    QTimer saving_, looking_;
    SideQueue importing_, writing_;
    OpenProject::Observation observation_;
};

}
