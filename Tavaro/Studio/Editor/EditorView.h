#pragma once

#include <Tavaro/Model/Project/OpenProject.h>
#include <Tavaro/Studio/Editor/PicturePlace.h>
#include <Tavaro/Studio/Lists/DocumentItems.h>

#include <QObject>
#include <QStringList>

#include <algorithm>
#include <array>
#include <memory>
#include <span>
#include <vector>

namespace tavaro {

/// What a window looks at of an open project, and nobody else: the playhead, the selection, a marked span, the looks of
/// the timeline. Where others edit the project, the playhead stays on its picture, and the selection loses only what is
/// gone. Belongs to the project's thread.
class EditorView : public QObject {
    Q_OBJECT
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

public:
    explicit EditorView(std::shared_ptr<OpenProject> project);

    OpenProject& project() const { return *project_; }
    std::shared_ptr<OpenProject> const& opened() const { return project_; }
    DemoProject const& document() const { return project_->document(); }

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
    bool hasSelectedOf(std::span<ItemKind const> kinds) const {
        return std::ranges::any_of(kinds, [this](ItemKind kind) { return hasSelected(kind); });
    }

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

Q_SIGNALS:
    void documentChanged();
    void playheadChanged();
    void selectionChanged();
    void rangeChanged();
    void viewChanged();
    void inspectorChanged();

protected:
    /// After an edit: keeps the playhead on its picture, and of selection and range what there still is. Whether the
    /// playhead has another time now, which `playheadChanged` has not said yet.
    bool holdToDocument();
    /// With the project, for the next window.
    void keepView();
    std::vector<UUID> selectedOf(ItemKind kind) const;

private:
    void dropWhatIsGone();

    std::shared_ptr<OpenProject> project_;
    EditorState view_; // as it is kept, but for playhead and selection
    PicturePlace place_;
    std::vector<UUID> selection_;
    std::array<int, namesOf(ItemKind{}).size()> selectedKinds_{};
    TimeRange range_;
};

}
