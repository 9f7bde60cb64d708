#pragma once

#include <Tavaro/Studio/Timeline/TimelineDrawing.h>
#include <Tavaro/Studio/Timeline/TimelineGestures.h>

#include <QQuickItem>
#include <QTimer>

#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <span>

namespace tavaro {

/// The timeline in a window: draws what is in view of a document, and tells what a hand, the wheel or the keyboard asks
/// for. It keeps no document of its own; whoever owns it shows it each revision, the selection and the playhead, and
/// carries its intents out. Main thread.
///
/// In QML it gets a role and a name by the attached `Accessible`; its items are then below it in the accessibility
/// tree.
class TimelineItem : public QQuickItem {
    Q_OBJECT
    Q_PROPERTY(double contentX READ contentX WRITE setContentX NOTIFY viewChanged)
    Q_PROPERTY(double contentWidth READ contentWidth NOTIFY viewChanged)
    Q_PROPERTY(double contentY READ contentY WRITE setContentY NOTIFY viewChanged)
    Q_PROPERTY(double contentHeight READ contentHeight NOTIFY viewChanged)
    Q_PROPERTY(double headerWidth READ headerWidth CONSTANT)
    Q_PROPERTY(double rulerHeight READ rulerHeight CONSTANT)
    Q_PROPERTY(bool snaps READ snaps WRITE setSnaps NOTIFY snapsChanged)
    Q_PROPERTY(bool fits READ fits NOTIFY viewChanged)

public:
    explicit TimelineItem(QQuickItem* parent = nullptr);
    ~TimelineItem() override;

    /// The document stays where it is until the next one is shown, or none. With `changed`, the revision after the last
    /// one shown; with `items`, which differs in the inside of these alone.
    void show(DemoProject const& project);
    void show(DemoProject const& project, ChangedFields const& changed, std::span<ItemPlace const> items = {});
    void showNothing();
    /// The span that is marked; none without a length.
    void setRange(TimeRange const& range);
    /// Where assets are; without, there are neither stills nor waveforms.
    void setMedia(FilmStills::Place place, PeakFolder folder = PeakFolder(PeakFolder::usual()));
    void setSelection(std::set<UUID> selection);
    void setPlayhead(double time);
    /// While the film plays, the view turns pages after the playhead.
    void setPlaying(bool isPlaying) { isPlaying_ = isPlaying; }
    void setPalette(TimelinePalette palette);
    void setFrameRate(double framesPerSecond);
    void setCollapsed(std::set<std::string> keys);
    void setView(double start, double secondsPerPoint);
    void onIntent(std::function<void(TimelineIntent const&)> handler) { handler_ = std::move(handler); }

    TimelineLayout const& layout() const { return layout_; }
    TimelineView const& view() const { return view_; }
    DemoProject const* project() const { return project_; }
    std::set<UUID> const& selection() const { return selection_; }
    double frameRate() const { return frameRate_; }
    /// What is drawn now. For tests and measurements.
    TimelineDrawing const& drawing();
    /// Hands an intent to who owns the timeline, as a gesture would.
    void ask(TimelineIntent const& intent);

    // Points, for scroll bars.
    double contentX() const;
    double contentWidth() const;
    double contentY() const { return view_.scrollY(); }
    double contentHeight() const { return layout_.height(); }
    void setContentX(double x);
    void setContentY(double y);
    double headerWidth() const { return TimelineView::headerWidth; }
    double rulerHeight() const { return TimelineView::rulerHeight; }
    bool snaps() const { return snaps_; }
    void setSnaps(bool snaps);
    bool fits() const { return view_.fits(); }

    Q_INVOKABLE void zoomIn();
    Q_INVOKABLE void zoomOut();
    Q_INVOKABLE void fit();
    Q_INVOKABLE void showSelection();
    /// Selects the next item of the selected one's lane, or the one before.
    Q_INVOKABLE void selectNeighbour(bool next);

Q_SIGNALS:
    void viewChanged();
    void snapsChanged();
    /// A context menu at a point; `place` is the name of what it is of: "clip", "item", "timeline".
    void menuWanted(double x, double y, QString const& place);

protected:
    QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;
    void updatePolish() override;
    void geometryChange(QRectF const& now, QRectF const& before) override;
    void itemChange(ItemChange change, ItemChangeData const& value) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void mouseUngrabEvent() override;
    void hoverMoveEvent(QHoverEvent* event) override;
    void hoverLeaveEvent(QHoverEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    bool event(QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void shown();
    void changedView();
    void dirty();
    GestureScene gestureScene() const;
    void perform(TimelineGestures::Intents const& intents);
    void scrollAtEdges();
    void updateHover(double x, double y);
    void openMenu(double x, double y);
    void openMenuByKey();
    void wantMenu(QPointF at, LaneItem const* item);
    std::function<void()> repaint();

    DemoProject const* project_ = nullptr;
    TimelineLayout layout_;
    TimelineView view_;
    TimelineGestures gestures_;
    std::set<UUID> selection_;
    TimeRange range_;
    TimelinePalette palette_ = TimelinePalette::dark();
    DrawnLooks looks_;
    TimelineDrawing drawing_;
    bool isDrawn_ = false; // as everything is now
    double playhead_ = 0;
    double frameRate_ = 60;
    bool snaps_ = true;
    bool isPlaying_ = false;
    std::optional<UUID> hovered_;
    TimelinePointer pointer_; // of the gesture under way
    QTimer edgeScroll_;
    std::function<void(TimelineIntent const&)> handler_;
    std::unique_ptr<SoundWaves> waves_;
    std::unique_ptr<FilmStills> stills_;
};

}
