#pragma once

#include <Tavaro/Model/Jobs/SideQueue.h>
#include <Tavaro/Model/Operations/Operation.h>
#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Studio/Editor/EditorCommand.h>
#include <Tavaro/Studio/Editor/EditorView.h>
#include <Tavaro/Studio/Editor/PolishRun.h>
#include <Tavaro/Studio/Lists/DocumentItems.h>

#include <TavaroCore/Records/FunctionRef.h>

#include <QAbstractItemModel>
#include <QColor>
#include <QObject>
#include <QStringList>
#include <QTimer>
#include <QVariantList>

#include <array>
#include <map>
#include <memory>
#include <optional>
#include <span>
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

/// One open project in a window: what the window looks at, and its commands as steps of the one history. Others may
/// edit the same project meanwhile. Belongs to the project's thread, inside of Qt's loop.
///
/// Edits are saved half a second after they were made, by a timer and on a thread beside, so that none waits for the
/// disk; what another program saved is looked for once a second. Nothing here throws: what goes wrong is told by
/// `told`, as a sentence.
class EditorSession final : public EditorView {
    Q_OBJECT
    Q_PROPERTY(QString name READ name NOTIFY documentChanged)
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

    QString name() const;

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
    /// What keys move and trim: neither clips, which lie between others, nor what was recorded with them.
    static constexpr std::array movedKinds{ItemKind::zoom,     ItemKind::overlay,    ItemKind::caption,
                                           ItemKind::scene,    ItemKind::cameraMove, ItemKind::voiceover,
                                           ItemKind::redaction};
    static constexpr std::array trimmedKinds{ItemKind::zoom, ItemKind::overlay, ItemKind::caption, ItemKind::redaction};
    bool moveSelected(double seconds);
    bool trimSelected(ClipEdge edge, double to);
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

    bool isSaved() const { return !project().hasUnsavedChanges(); }
    /// Saves now, beside the window; what cannot be saved is told.
    Q_INVOKABLE void save();

Q_SIGNALS:
    void changedOutside();
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
    void updateCommands();
    void lookAtClipboard();
    std::vector<UUID> clipsInHand() const;
    std::vector<UUID> selectedOfAny(std::span<ItemKind const> kinds) const;
    std::string selectionNoun() const;
    void finishSave(std::shared_ptr<PendingSave> const& save);
    void inspect();

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
