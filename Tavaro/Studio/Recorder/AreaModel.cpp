#include <Tavaro/Studio/Recorder/AreaModel.h>

#include <TavaroCore/Records/Fields.h>

#include <algorithm>

namespace tavaro {

namespace {

constexpr auto shapeNames = namesOf(AreaShape{});

}

QStringList AreaModel::shapes() const {
    QStringList names;
    for (auto const name : shapeNames)
        names << (name == "free" ? tr("Free") : QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())));
    return names;
}

QStringList AreaModel::displays() const {
    QStringList ids;
    for (auto const& display : displays_) ids << QString::fromStdString(display.id);
    return ids;
}

void AreaModel::set(PixelRect const& area) {
    if (area == area_) return;
    area_ = area;
    Q_EMIT changed();
}

void AreaModel::settle(PixelRect const& area) {
    set(area);
    Q_EMIT settled();
}

void AreaModel::setX(int x) { settle(edit().dragged(area_, AreaGrip::inside, {x - area_.x, 0})); }

void AreaModel::setY(int y) { settle(edit().dragged(area_, AreaGrip::inside, {0, y - area_.y})); }

void AreaModel::setWidth(int width) { settle(edit().withWidth(area_, width)); }

void AreaModel::setHeight(int height) { settle(edit().withHeight(area_, height)); }

void AreaModel::setShape(int shape) {
    if (shape == this->shape() || shape < 0 || shape >= static_cast<int>(shapeNames.size())) return;
    shape_ = static_cast<AreaShape>(shape);
    area_ = edit().fitted(area_);
    Q_EMIT changed();
    Q_EMIT settled();
}

void AreaModel::setDisplay(QString const& id) {
    if (id == display()) return;
    find(id.toStdString());
    area_ = edit().fitted(area_);
    Q_EMIT changed();
    Q_EMIT settled();
}

void AreaModel::drag(int grip, QPoint by) {
    if (grip < 0 || grip > static_cast<int>(AreaGrip::bottomRight)) return;
    set(edit().dragged(atDragStart_, static_cast<AreaGrip>(grip), {by.x(), by.y()}));
}

void AreaModel::draw(QPoint from, QPoint to) { set(edit().drawn({from.x(), from.y()}, {to.x(), to.y()})); }

void AreaModel::find(std::string const& display) {
    auto const is = [&](DisplayInfo const& one) { return one.id == display; };
    auto found = std::ranges::find_if(displays_, is);
    if (found == displays_.end()) found = std::ranges::find_if(displays_, &DisplayInfo::isMain);
    if (found == displays_.end()) found = displays_.begin();
    if (found == displays_.end()) return;
    display_ = found->id;
    if (!found->frame.isEmpty()) frame_ = found->frame;
}

void AreaModel::setDisplays(std::vector<DisplayInfo> const& displays) {
    if (displays == displays_) return;
    bool const isFirst = displays_.empty();
    displays_ = displays;
    find(display_);
    area_ = isFirst && area_ == AreaModel().area_ ? edit().suggested() : edit().fitted(area_);
    Q_EMIT displaysChanged();
    Q_EMIT changed();
}

void AreaModel::setSource(AreaSource const& source) {
    shape_ = source.shape;
    display_ = source.display;
    area_ = source.rect;
    if (!displays_.empty()) find(display_), area_ = edit().fitted(area_);
    Q_EMIT changed();
}

AreaSource AreaModel::source() const { return {.rect = area_, .display = display_, .shape = shape_}; }

}
