#include <Tavaro/Studio/Editor/EditorSession.h>

#include <Tavaro/Model/Operations/OperationError.h>
#include <Tavaro/Model/Operations/Perform.h>
#include <Tavaro/Model/Project/PendingSave.h>
#include <Tavaro/Model/Project/ProjectInUse.h>
#include <Tavaro/Studio/Editor/CaptionEditor.h>
#include <Tavaro/Studio/Editor/ContextMenus.h>
#include <Tavaro/Studio/Editor/EditorCommands.h>
#include <Tavaro/Studio/Editor/ItemDrag.h>
#include <Tavaro/Studio/Editor/ItemEdits.h>
#include <Tavaro/Studio/Editor/StepList.h>
#include <Tavaro/Studio/Editor/TranscriptModel.h>
#include <Tavaro/Studio/Inspectors/InspectorModel.h>
#include <Tavaro/Studio/Lists/ItemList.h>

#include <TavaroCore/Editing/ClipEdits.h>
#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Style/BackgroundPreset.h>

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <iterator>

namespace tavaro {

namespace {

using namespace std::chrono_literals;

constexpr auto saveDelay = 500ms;    // an edit is on the disk within a second
constexpr auto inUseDelay = 100ms;   // another program is saving
constexpr auto failedDelay = 5000ms; // the disk may have room again
constexpr auto lookDelay = 1000ms;
constexpr qsizetype mostRecentColors = 14;
constexpr auto itemsFormat = "application/x-tavaro-items+json";

QClipboard* clipboard() { return qApp ? QGuiApplication::clipboard() : nullptr; }

/// The sentence for people.
QString sentenceOf(Error const& error) {
    auto const* refusal = dynamic_cast<OperationError const*>(&error);
    return toQString(refusal ? refusal->withoutTools : error.what());
}

void expectMedia(ProjectPackage const& package, DemoProject const& copied) {
    for (auto const& asset : mediaOf(copied)) {
        std::error_code ignored;
        if (std::filesystem::exists(package.assetURL(asset), ignored)) continue;
        throw OperationError(
            OperationError::Kind::notPossible,
            fmt::format("“{}” is not in this project, so what was copied cannot be pasted.", excerpt(asset)));
    }
}

}

EditorSession::EditorSession(MainQueue& queue, std::shared_ptr<OpenProject> project)
    : EditorView(std::move(project))
    , importing_(queue, "com.tavaro.import")
    , writing_(queue, "com.tavaro.save") {
    observation_ = opened()->observe([this](ProjectChange const& change) { observe(change); });
    for (auto const moved : {&EditorView::playheadChanged, &EditorView::selectionChanged, &EditorView::rangeChanged})
        QObject::connect(this, moved, this, &EditorSession::updateCommands);
    stepsModel(); // which notes when each step is made
    polish_ = std::make_unique<PolishRun>(queue, *this);
    polish_->setParent(this);
    QObject::connect(polish_.get(), &PolishRun::changed, this, &EditorSession::updateCommands);
    for (auto const& listed : editorCommands()) commands_.push_back(std::make_unique<EditorCommand>(listed, *this));
    for (auto const& command : commands_) command->setParent(this); // or scripts would think it theirs
    saving_.setSingleShot(true);
    QObject::connect(&saving_, &QTimer::timeout, this, [this] { save(); });
    QObject::connect(&looking_, &QTimer::timeout, this, [this] { attempt([&] { opened()->refresh(); }); });
    looking_.start(lookDelay);
    if (auto* const copies = clipboard())
        QObject::connect(copies, &QClipboard::dataChanged, this, &EditorSession::lookAtClipboard);
    lookAtClipboard();
    if (!isSaved()) saving_.start(saveDelay);
}

EditorSession::~EditorSession() {
    observation_.reset();
    keepView();
    try {
        opened()->save();
    } catch (Error const&) {
        // The project stays with whoever else has it open; there is nobody left here to tell.
    }
}

bool EditorSession::attempt(FunctionRef<void()> action) {
    try {
        action();
        return true;
    } catch (Error const& error) {
        Q_EMIT told(sentenceOf(error));
        return false;
    }
}

void EditorSession::observe(ProjectChange const& change) {
    if (change.fields.any()) {
        bool const hasMoved = change.items.empty() && holdToDocument();
        Q_EMIT documentChanged();
        if (hasMoved) Q_EMIT playheadChanged();
    }
    if (change.fields.any() || change.fromOutside) Q_EMIT stepsChanged();
    if (change.savedState) Q_EMIT savedChanged();
    if (change.fromOutside) Q_EMIT changedOutside();
    if (change.problem) Q_EMIT told(toQString(*change.problem));
    if (!isSaved() && !saving_.isActive()) saving_.start(saveDelay);
    updateCommands();
}

void EditorSession::updateCommands() {
    for (auto const& command : commands_) command->update();
}

QString EditorSession::name() const { return toQString(document().name); }

std::string EditorSession::selectionNoun() const {
    if (selection().size() != 1) return fmt::format("{} Items", selection().size());
    std::string noun;
    visitItem(document(), selection().front(), [&](auto const& item) { noun = inWords(nameOf(kindOf(item))); });
    return noun;
}

// Edits

bool EditorSession::edit(StepLabel const& step, FunctionRef<void(DemoProject&)> change, EditGroup group) {
    bool isChanged = false;
    attempt([&] {
        auto const whole = [&](DemoProject& project) {
            bool const hadVideo = !project.timeline.clips.empty();
            change(project);
            if (hadVideo && project.timeline.clips.empty())
                throw OperationError(OperationError::Kind::notPossible,
                                     "The edit would leave nothing of the video, and is not made.");
        };
        isChanged = opened()->edit(step, whole, group).isChanged;
    });
    return isChanged;
}

bool EditorSession::perform(Operation const& operation) {
    return edit(infoOf(operation).title,
                [&](DemoProject& project) { tavaro::perform(project, operation, opened()->package()); });
}

QStringList EditorSession::commandNames() const {
    QStringList result;
    for (auto const& command : commands_) result.push_back(command->name());
    return result;
}

QStringList EditorSession::menu(QString const& place) {
    QStringList names;
    for (auto const* name : contextMenu(enumNamed<MenuPlace>(place.toStdString()).value_or(MenuPlace::timeline)))
        names.push_back(QString::fromUtf8(name));
    return names;
}

EditorCommand* EditorSession::command(QString const& name) const {
    for (auto const& command : commands_) {
        if (command->name() == name) return command.get();
    }
    return nullptr;
}

void EditorSession::undo() {
    attempt([&] { opened()->undo(); });
}
void EditorSession::redo() {
    attempt([&] { opened()->redo(); });
}
QString EditorSession::undoName() const { return toQString(opened()->undoName().value_or("")); }
QString EditorSession::redoName() const { return toQString(opened()->redoName().value_or("")); }

bool EditorSession::split(double at) {
    return edit(operations::Split::info.title, [&](DemoProject& project) { splitClip(project, at); });
}

bool EditorSession::removeSelected() {
    auto const items = selection();
    return edit(fmt::format("Delete {}", selectionNoun()), [&](DemoProject& project) { removeItems(project, items); });
}

bool EditorSession::duplicateSelected() {
    auto const clips = selectedOf(ItemKind::clip);
    if (clips.size() == 1 && selection().size() == 1)
        return edit(operations::DuplicateClip::info.title,
                    [&](DemoProject& project) { duplicateClip(project, clips.front()); });
    double end = 0;
    auto const chosen = copiedItems(document(), selection());
    std::unordered_set<UUID, UUIDHash> const selected(selection().begin(), selection().end());
    forEachItem(document(), [&](auto const& item) {
        auto const place = placeOf(item);
        if (place && selected.contains(item.id)) end = std::max(end, place->end());
    });
    std::vector<UUID> added;
    auto const isChanged = edit(fmt::format("Duplicate {}", selectionNoun()),
                                [&](DemoProject& project) { added = pasteItems(project, chosen, end); });
    if (isChanged) select(added);
    return isChanged;
}

std::vector<UUID> EditorSession::selectedOfAny(std::span<ItemKind const> kinds) const {
    std::vector<UUID> items;
    for (auto const kind : kinds) std::ranges::copy(selectedOf(kind), std::back_inserter(items));
    return items;
}

bool EditorSession::moveSelected(double seconds) {
    return edit(fmt::format("Move {}", selectionNoun()),
                [&](DemoProject& project) { moveItems(project, selectedOfAny(movedKinds), seconds, playhead()); });
}

bool EditorSession::trimSelected(ClipEdge edge, double to) {
    return edit(fmt::format("Trim {}", selectionNoun()), [&](DemoProject& project) {
        for (auto const& item : selectedOfAny(trimmedKinds)) moveItemEdge(project, item, edge, to, to);
    });
}

/// The selected ones, or that at the playhead.
std::vector<UUID> EditorSession::clipsInHand() const {
    if (hasSelected(ItemKind::clip)) return selectedOf(ItemKind::clip);
    auto const* clip = document().timeline.clip(playhead());
    return clip ? std::vector{clip->id} : std::vector<UUID>();
}

double EditorSession::speed() const {
    if (range().duration > 0) return 1;
    double speed = 0;
    for (auto const& id : clipsInHand()) {
        auto const& clips = document().timeline.clips;
        if (speed == 0) speed = std::ranges::find(clips, id, &VideoClip::id)->speed;
    }
    return speed;
}

double EditorSession::speedSeconds() const {
    if (range().duration > 0) return range().duration;
    double seconds = 0;
    for (auto const& id : clipsInHand())
        seconds += std::ranges::find(document().timeline.clips, id, &VideoClip::id)->duration;
    return seconds;
}

bool EditorSession::setSpeed(double rate) {
    if (range().duration > 0) return perform(operations::ChangeSpeed{range().start, range().end(), rate});
    auto const clips = clipsInHand();
    return edit(operations::ChangeSpeed::info.title, [&](DemoProject& project) {
        for (auto const& clip : clips) tavaro::setSpeed(project, clip, rate);
    });
}

bool EditorSession::setClipsMuted(bool isMuted) {
    auto const clips = selectedOf(ItemKind::clip);
    return edit(isMuted ? "Mute" : "Unmute", [&](DemoProject& project) {
        for (auto const& clip : clips) setMuted(project, clip, isMuted);
    });
}

bool EditorSession::insertTime(double seconds) { return perform(operations::InsertTime{playhead(), seconds}); }

bool EditorSession::rename(QString const& name) {
    return edit("Rename", [&](DemoProject& project) {
        tavaro::perform(project, {{"name", name.toStdString()}}, opened()->package());
    });
}

void EditorSession::goBackToEarlierSave() {
    importing_.ask([package = opened()->package()] { return package.loadBackup(); },
                   [this](Outcome<DemoProject> const& earlier) {
                       attempt([&] {
                           auto const& before = earlier.value();
                           edit("Go Back to Earlier Save", [&](DemoProject& project) {
                               auto const modifiedAt = project.modifiedAt; // belongs to the file
                               project = before;
                               project.modifiedAt = modifiedAt;
                           });
                       });
                   });
}

bool EditorSession::add(QString const& kind, QString const& variety) {
    auto const at = playhead();
    auto const wanted = enumNamed<ItemKind>(kind.toStdString());
    std::optional<UUID> made;
    auto const make = [&](DemoProject& project) {
        switch (wanted.value_or(ItemKind::track)) {
        case ItemKind::zoom:
            made = addZoom(project, at, enumNamed<ZoomStyle>(variety.toStdString()).value_or(ZoomStyle::camera));
            break;
        case ItemKind::overlay:
            made = addOverlay(project, at, variety.isEmpty() ? "title" : variety.toStdString());
            break;
        case ItemKind::caption: made = addCaption(project, at); break;
        case ItemKind::scene: made = addScene(project, at); break;
        case ItemKind::cameraMove: made = addCameraMove(project, at); break;
        case ItemKind::redaction: made = addRedaction(project, at); break;
        default: break;
        }
    };
    auto const noun = variety.isEmpty() ? inWords(kind.toStdString()) : inWords(variety.toStdString());
    if (!edit(fmt::format("Add {}", noun), make) || !made) return false;
    select(std::vector{*made});
    return true;
}

QVariantList EditorSession::backgroundPresets() const {
    QVariantList presets;
    for (auto const& preset : BackgroundPreset::all()) {
        auto members = toVariant(preset).toMap();
        members.insert(QStringLiteral("familyTitle"), inSentence(title(preset.family)));
        presets.push_back(members);
    }
    return presets;
}

QString EditorSession::backgroundPreset() const {
    auto const& all = BackgroundPreset::all();
    auto const found = std::ranges::find(all, document().background, &BackgroundPreset::style);
    return found == all.end() ? QString() : toQString(found->id);
}

bool EditorSession::setBackground(QString const& preset) {
    return edit("Change Background", [&](DemoProject& project) {
        tavaro::perform(project, {{"background.preset", preset.toStdString()}}, opened()->package());
    });
}

bool EditorSession::moveClip(QString const& identity, double to) {
    auto const id = UUID::parse(identity.toStdString());
    return id && edit("Move Clip", [&](DemoProject& project) { tavaro::moveClip(project, *id, to); });
}

// Drags

void EditorSession::beginDrag(QString const& identity) {
    auto const id = UUID::parse(identity.toStdString());
    if (!id) return;
    drag_ = std::make_unique<ItemDrag>(*this, *id, isSelected(identity) ? selection() : std::vector{*id});
}
bool EditorSession::dragItems(double by, double snapPixels) { return drag_ && drag_->moveBy(by, snapPixels); }
bool EditorSession::dragEdge(bool leading, double to, double snapPixels) {
    return drag_ && drag_->moveEdge(leading ? ClipEdge::leading : ClipEdge::trailing, to, snapPixels);
}
void EditorSession::endDrag() { drag_.reset(); }
void EditorSession::cancelDrag() {
    if (drag_) drag_->takeBack();
    drag_.reset();
}

// Copies

QByteArray EditorSession::copied() const {
    return QByteArray::fromStdString(encodeProject(copiedItems(document(), selection())));
}

bool EditorSession::paste(QByteArray const& copied) {
    std::vector<UUID> added;
    auto const isChanged = edit("Paste", [&](DemoProject& project) {
        auto const items = decodeProject(copied.toStdString());
        expectMedia(opened()->package(), items);
        added = pasteItems(project, items, playhead());
    });
    if (isChanged) select(added);
    return isChanged;
}

void EditorSession::copy() const {
    if (!clipboard() || selection().empty()) return;
    auto data = std::make_unique<QMimeData>();
    data->setData(QString::fromUtf8(itemsFormat), copied());
    clipboard()->setMimeData(data.release());
}

bool EditorSession::cut() {
    copy();
    auto const items = selection();
    return edit(fmt::format("Cut {}", selectionNoun()), [&](DemoProject& project) { removeItems(project, items); });
}

/// Asking the clipboard may mean asking the program that filled it, so that happens only when it changes.
void EditorSession::lookAtClipboard() {
    auto const* data = clipboard() ? clipboard()->mimeData() : nullptr;
    canPaste_ = data && data->hasFormat(QString::fromUtf8(itemsFormat));
    updateCommands();
}

bool EditorSession::pasteHere() {
    auto const* data = clipboard() ? clipboard()->mimeData() : nullptr;
    return data && paste(data->data(QString::fromUtf8(itemsFormat)));
}

void EditorSession::importFile(QString const& path) {
    auto const copy = [package = opened()->package(), from = path.toStdString()] { return package.importAsset(from); };
    importing_.ask(copy, [this, path](Outcome<std::string> const& asset) {
        attempt([&] { Q_EMIT imported(path, toQString(asset.value())); });
    });
}

// Models

void EditorSession::inspect() {
    if (selection().empty())
        fields_->inspectSection(inspector());
    else
        fields_->inspectItems(selection());
}

QAbstractItemModel* EditorSession::fieldsModel() {
    if (fields_) return fields_.get();
    fields_ = std::make_unique<InspectorModel>(opened());
    fields_->setParent(this);
    QObject::connect(this, &EditorSession::selectionChanged, fields_.get(), [this] { inspect(); });
    QObject::connect(this, &EditorSession::inspectorChanged, fields_.get(), [this] { inspect(); });
    inspect();
    return fields_.get();
}

QAbstractItemModel* EditorSession::fieldsOf(QString const& what) {
    auto& fields = fieldsOf_[what];
    if (!fields) {
        fields = std::make_unique<InspectorModel>(opened());
        fields->setParent(this);
        if (auto const item = UUID::parse(what.toStdString()))
            fields->inspectItems(std::vector{*item});
        else
            fields->inspectSection(what);
    }
    return fields.get();
}

void EditorSession::noteColor(QColor const& color) {
    recentColors_.removeAll(color);
    recentColors_.prepend(color);
    while (recentColors_.size() > mostRecentColors) recentColors_.removeLast();
    Q_EMIT recentColorsChanged();
}

QAbstractItemModel* EditorSession::transcriptModel() {
    if (transcript_) return transcript_.get();
    transcript_ = std::make_unique<TranscriptModel>(*this);
    transcript_->setParent(this);
    return transcript_.get();
}

QAbstractItemModel* EditorSession::stepsModel() {
    if (steps_) return steps_.get();
    steps_ = std::make_unique<StepList>(*this);
    steps_->setParent(this);
    return steps_.get();
}

QObject* EditorSession::captionEditor() {
    if (captions_) return captions_.get();
    captions_ = std::make_unique<CaptionEditor>(*this, importing_);
    captions_->setParent(this);
    return captions_.get();
}

QAbstractItemModel* EditorSession::list(QString const& kind) {
    auto const wanted = enumNamed<ItemKind>(kind.toStdString());
    if (!wanted) return nullptr;
    auto& list = lists_[*wanted];
    if (!list) {
        list = makeItemList(*wanted, opened());
        list->setParent(this);
    }
    return list.get();
}

void EditorSession::save() {
    keepView();
    auto const save = opened()->beginSave();
    if (!save) return;
    auto const write = [save] {
        save->run();
        return true;
    };
    writing_.ask(write, [this, save](Outcome<bool> const&) { finishSave(save); });
}

void EditorSession::finishSave(std::shared_ptr<PendingSave> const& save) {
    try {
        opened()->finishSave(save);
    } catch (ProjectInUse const&) {
        saving_.start(inUseDelay);
    } catch (Error const& error) {
        saving_.start(failedDelay);
        Q_EMIT told(sentenceOf(error));
    }
}

}
