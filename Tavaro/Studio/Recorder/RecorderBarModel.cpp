#include <Tavaro/Studio/Recorder/RecorderBarModel.h>

#include <Tavaro/Studio/Recorder/BarPlace.h>

#include <TavaroCore/Errors/Error.h>

#include <QGuiApplication>
#include <QLoggingCategory>
#include <QScreen>

#include <cmath>

namespace tavaro {

namespace {

/// Windows are placed in points, of which a screen may have several pixels each; a screen begins at the same place in
/// both.
PixelRect inPoints(PixelRect const& pixels, QScreen const& screen) {
    auto const origin = screen.geometry().topLeft();
    double const scale = screen.devicePixelRatio();
    auto const down = [&](int at, int from) { return from + static_cast<int>(std::floor((at - from) / scale)); };
    auto const up = [&](int at, int from) { return from + static_cast<int>(std::ceil((at - from) / scale)); };
    int const x = down(pixels.x, origin.x()), y = down(pixels.y, origin.y());
    return {x, y, up(pixels.x + pixels.width, origin.x()) - x, up(pixels.y + pixels.height, origin.y()) - y};
}

std::optional<PixelPoint> placeIn(std::string const& text) {
    int x = 0, y = 0;
    char end = 0;
    if (std::sscanf(text.c_str(), "%d,%d%c", &x, &y, &end) != 2) return std::nullopt;
    return PixelPoint{x, y};
}

}

RecorderBarModel::RecorderBarModel(RecorderModel& recorder, Preferences& preferences)
    : recorder_(recorder)
    , preferences_(preferences) {
    connect(&recorder, &RecorderModel::changed, this, &RecorderBarModel::follow);
}

bool RecorderBarModel::isShown() const {
    return phase_ != RecorderModel::Idle && !(isFilming_ && isInPicture_ && hasOtherWay_);
}

void RecorderBarModel::setSize(QSize size) {
    if (size == size_ || size.isEmpty()) return;
    size_ = size;
    Q_EMIT sizeChanged();
    settle();
}

void RecorderBarModel::setHasOtherWay(bool hasOtherWay) {
    if (hasOtherWay == hasOtherWay_) return;
    hasOtherWay_ = hasOtherWay;
    Q_EMIT changed();
}

void RecorderBarModel::follow() {
    bool const wasUp = phase_ != RecorderModel::Idle;
    bool const isFilming = recorder_.phase() == RecorderModel::Recording || recorder_.isClearing();
    if (phase_ == recorder_.phase() && isFilming == isFilming_) return;
    phase_ = recorder_.phase();
    isFilming_ = isFilming;
    if (!wasUp || phase_ == RecorderModel::Recording) settle();
    Q_EMIT changed();
}

void RecorderBarModel::settle() {
    BarRoom room{.bar = {0, 0, size_.width(), size_.height()}, .kept = placeIn(preferences_.get(barPlaceChosen))};
    auto const filmed = recorder_.filmedPlace();
    for (auto const* const screen : QGuiApplication::screens()) {
        auto const rect = screen->geometry();
        room.screens.push_back({rect.x(), rect.y(), rect.width(), rect.height()});
        if (!filmed) continue;
        auto const there = inPoints(*filmed, *screen).intersection(room.screens.back());
        if (!there.isEmpty()) room.filmed = room.filmed ? room.filmed->unionWith(there) : there;
    }
    auto place = barPlace(room);
    isInPicture_ = !place;
    room.filmed.reset();
    if (!place) place = barPlace(room);
    if (place) place_ = {place->x, place->y};
    Q_EMIT placeChanged();
    Q_EMIT changed();
}

void RecorderBarModel::keep(QPoint place) {
    place_ = place;
    try {
        preferences_.set(barPlaceChosen, std::to_string(place.x()) + "," + std::to_string(place.y()));
    } catch (Error const& error) {
        qWarning("Where the recorder's bar is could not be kept: %s", error.what());
    }
}

}
