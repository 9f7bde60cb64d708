#pragma once

#include <Tavaro/Studio/Recorder/AreaEdit.h>

#include <TavaroCapture/Sources/SourceList.h>

#include <QObject>
#include <QPoint>
#include <QRect>
#include <QString>
#include <QStringList>

#include <vector>

namespace tavaro {

/// The part of a display that is to be recorded, as it is dragged and typed. All numbers are the display's pixels.
class AreaModel : public QObject {
    Q_OBJECT
    Q_PROPERTY(QRect rect READ rect NOTIFY changed)
    Q_PROPERTY(int x READ x WRITE setX NOTIFY changed)
    Q_PROPERTY(int y READ y WRITE setY NOTIFY changed)
    Q_PROPERTY(int width READ width WRITE setWidth NOTIFY changed)
    Q_PROPERTY(int height READ height WRITE setHeight NOTIFY changed)
    Q_PROPERTY(QStringList shapes READ shapes CONSTANT)
    Q_PROPERTY(int shape READ shape WRITE setShape NOTIFY changed) // of `shapes`
    Q_PROPERTY(QString display READ display WRITE setDisplay NOTIFY changed)
    Q_PROPERTY(QSize displaySize READ displaySize NOTIFY changed)
    Q_PROPERTY(QStringList displays READ displays NOTIFY displaysChanged)

public:
    explicit AreaModel(QObject* parent = nullptr) : QObject(parent) {}

    QRect rect() const { return {area_.x, area_.y, area_.width, area_.height}; }
    int x() const { return area_.x; }
    int y() const { return area_.y; }
    int width() const { return area_.width; }
    int height() const { return area_.height; }
    QStringList shapes() const;
    int shape() const { return static_cast<int>(shape_); }
    QString display() const { return QString::fromStdString(display_); }
    QSize displaySize() const { return {frame_.width, frame_.height}; }
    QStringList displays() const;

    void setX(int x);
    void setY(int y);
    void setWidth(int width);
    void setHeight(int height);
    void setShape(int shape);
    void setDisplay(QString const& id);

    /// The grips are those of `AreaGrip`, in order.
    Q_INVOKABLE void beginDrag() { atDragStart_ = area_; }
    /// By so much since the drag began.
    Q_INVOKABLE void drag(int grip, QPoint by);
    Q_INVOKABLE void draw(QPoint from, QPoint to);
    /// The drag is over: what was chosen counts.
    Q_INVOKABLE void endDrag() { Q_EMIT settled(); }

    /// What is there to be chosen from. An area whose display has gone is one of the main display.
    void setDisplays(std::vector<DisplayInfo> const& displays);
    void setSource(AreaSource const& source);
    AreaSource source() const;

Q_SIGNALS:
    void changed();
    void settled(); // it is as its user wants it for now
    void displaysChanged();

private:
    AreaEdit edit() const { return {frame_, shape_}; }
    void set(PixelRect const& area);
    void settle(PixelRect const& area);
    void find(std::string const& display);

    std::vector<DisplayInfo> displays_;
    std::string display_;
    PixelRect frame_{0, 0, 1920, 1080}; // of the display
    PixelRect area_{480, 270, 960, 540};
    PixelRect atDragStart_;
    AreaShape shape_ = AreaShape::free;
};

}
