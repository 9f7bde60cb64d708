#include <Tavaro/Studio/Timeline/TimelineAccessibility.h>

#include <Tavaro/Studio/Timeline/ItemText.h>
#include <Tavaro/Studio/Timeline/TimelineItem.h>

#include <TavaroCore/Project/DemoProject.h>

#include <QAccessible>
#include <QAccessibleInterface>
#include <QAccessibleObject>
#include <QPointer>
#include <QQuickWindow>

#include <algorithm>
#include <map>
#include <vector>

namespace tavaro {

namespace {

class TimelineTree;

/// One item of the timeline. What it is, is looked up each time: the document may have changed.
class ItemInTree : public QAccessibleInterface, public QAccessibleActionInterface {
public:
    ItemInTree(TimelineItem& timeline, UUID const& id) : timeline_(&timeline), id_(id) {}

    bool isValid() const override { return timeline_ && timeline_->project() && place(); }
    QObject* object() const override { return nullptr; }
    QWindow* window() const override { return timeline_ ? timeline_->window() : nullptr; }
    QAccessibleInterface* parent() const override { return QAccessible::queryAccessibleInterface(timeline_.data()); }
    QAccessibleInterface* childAt(int, int) const override { return nullptr; }
    QAccessibleInterface* child(int) const override { return nullptr; }
    int childCount() const override { return 0; }
    int indexOfChild(QAccessibleInterface const*) const override { return -1; }
    QAccessible::Role role() const override { return QAccessible::ListItem; }

    QString text(QAccessible::Text kind) const override {
        if (kind != QAccessible::Name || !isValid()) return {};
        auto const at = *place();
        return QString::fromStdString(
            itemDescription(*timeline_->project(), timeline_->layout().lanes()[at.lane], at.item));
    }
    void setText(QAccessible::Text, QString const&) override {}

    QRect rect() const override {
        if (!isValid() || !timeline_->window()) return {};
        auto const box = timeline_->layout().box(timeline_->view(), *place());
        // What is longer than the view ends with it; what is partly scrolled out of it is as high as it is.
        QRectF const shown = QRectF(box.x, box.y, box.width, box.height)
                                 .intersected({QPointF(TimelineView::headerWidth, box.y),
                                               QPointF(timeline_->width(), box.y + box.height)});
        return timeline_->mapRectToScene(shown).translated(timeline_->window()->mapToGlobal(QPoint())).toRect();
    }

    QAccessible::State state() const override {
        QAccessible::State state;
        state.selectable = true;
        state.selected = isValid() && timeline_->selection().contains(id_);
        state.invalid = !isValid();
        return state;
    }

    void* interface_cast(QAccessible::InterfaceType type) override {
        return type == QAccessible::ActionInterface ? static_cast<QAccessibleActionInterface*>(this) : nullptr;
    }
    QStringList actionNames() const override { return {pressAction(), increaseAction(), decreaseAction()}; }
    QStringList keyBindingsForAction(QString const&) const override { return {}; }
    void doAction(QString const& name) override {
        if (!isValid()) return;
        if (name == pressAction()) timeline_->ask(timelineIntents::Select{{id_}});
        double const frame = 1 / std::max(timeline_->frameRate(), 1.0);
        if (name == increaseAction()) nudge(frame);
        if (name == decreaseAction()) nudge(-frame);
    }

private:
    std::optional<LanePlace> place() const { return timeline_->layout().find(id_); }

    void nudge(double seconds) {
        auto const item = place()->item;
        timeline_->ask(timelineIntents::EditBegan{"Move " + std::string(nounOf(item.kind))});
        timeline_->ask(timelineIntents::MoveItems{{id_}, seconds, item.start});
        timeline_->ask(timelineIntents::EditEnded{});
    }

    QPointer<TimelineItem> timeline_;
    UUID id_;
};

/// The timeline itself: a list of what is in view.
class TimelineTree : public QAccessibleObject {
public:
    explicit TimelineTree(TimelineItem& timeline) : QAccessibleObject(&timeline) {}
    ~TimelineTree() override {
        for (auto const& [id, made] : made_) QAccessible::deleteAccessibleInterface(made);
    }

    QWindow* window() const override { return timeline().window(); }
    QAccessibleInterface* parent() const override {
        if (auto* above = QAccessible::queryAccessibleInterface(timeline().parentItem()); above && above->isValid())
            return above;
        return QAccessible::queryAccessibleInterface(timeline().window());
    }
    QAccessible::Role role() const override { return QAccessible::List; }
    QAccessible::State state() const override {
        QAccessible::State state;
        state.focusable = true;
        state.focused = timeline().hasActiveFocus();
        state.multiSelectable = true;
        return state;
    }
    QString text(QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? TimelineItem::tr("Timeline") : QString();
    }
    QRect rect() const override {
        if (!timeline().window()) return {};
        return timeline()
            .mapRectToScene(timeline().boundingRect())
            .translated(timeline().window()->mapToGlobal(QPoint()))
            .toRect();
    }

    int childCount() const override { return static_cast<int>(inView().size()); }
    QAccessibleInterface* child(int index) const override {
        auto const ids = inView();
        if (index < 0 || static_cast<std::size_t>(index) >= ids.size()) return nullptr;
        return itemOf(ids[index]);
    }
    int indexOfChild(QAccessibleInterface const* child) const override {
        auto const ids = inView();
        auto const found = std::ranges::find_if(ids, [&](UUID const& id) {
            auto const made = made_.find(id);
            return made != made_.end() && QAccessible::accessibleInterface(made->second) == child;
        });
        return found == ids.end() ? -1 : static_cast<int>(found - ids.begin());
    }
    QAccessibleInterface* childAt(int x, int y) const override {
        if (!timeline().project() || !timeline().window()) return nullptr;
        auto const at = timeline().mapFromScene(timeline().window()->mapFromGlobal(QPointF(x, y)));
        auto const hit = hitTest({timeline().layout(), timeline().view(), *timeline().project()}, at.x(), at.y());
        return isOnItem(hit.part) ? itemOf(hit.place.item.id) : nullptr;
    }

private:
    TimelineItem& timeline() const { return *static_cast<TimelineItem*>(object()); }

    /// Lane by lane, each ascending; more than can be looked at one by one are left out.
    std::vector<UUID> inView() const {
        constexpr std::size_t most = 400;
        std::vector<UUID> ids;
        if (!timeline().project()) return ids;
        auto const& view = timeline().view();
        auto const [first, last] = timeline().layout().lanesInView(view);
        for (auto number = first; number < last; ++number) {
            auto const& lane = timeline().layout().lanes()[number];
            for (std::size_t row = 0; row < lane.index.rowCount(); ++row) {
                for (auto const& item : lane.index.row(row, view.visible())) {
                    if (ids.size() < most && std::ranges::find(ids, item.id) == ids.end()) ids.push_back(item.id);
                }
            }
        }
        return ids;
    }

    QAccessibleInterface* itemOf(UUID const& id) const {
        auto const found = made_.find(id);
        if (found != made_.end()) return QAccessible::accessibleInterface(found->second);
        auto* made = new ItemInTree(timeline(), id);
        made_[id] = QAccessible::registerAccessibleInterface(made);
        return made;
    }

    mutable std::map<UUID, QAccessible::Id> made_;
};

QAccessibleInterface* makeTree(QString const&, QObject* object) {
    auto* timeline = qobject_cast<TimelineItem*>(object);
    return timeline ? new TimelineTree(*timeline) : nullptr;
}

}

void installTimelineAccessibility() { QAccessible::installFactory(makeTree); }

}
