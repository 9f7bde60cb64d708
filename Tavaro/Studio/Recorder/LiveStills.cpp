#include <Tavaro/Studio/Recorder/LiveStills.h>

#include <TavaroCapture/X11/StillPicture.h>

#include <algorithm>
#include <utility>

namespace tavaro {

namespace {

constexpr int round = 2000;   // milliseconds, in which each picture is taken once
constexpr int leastRest = 40; // milliseconds between two

}

QImage smallStill(CaptureSource const& source, QSize size) {
    auto const still = takeStillPicture(source);
    auto const view = still.image.view();
    QImage const whole(view.pixels, view.width, view.height, view.stride, QImage::Format_RGBX8888);
    auto const fitting = whole.size().scaled(size, Qt::KeepAspectRatio).boundedTo(whole.size());
    return whole.scaled(fitting.expandedTo({1, 1}), Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
        .convertToFormat(QImage::Format_RGB32);
}

LiveStills::LiveStills(MainQueue& queue, Take take) : take_(std::move(take)), side_(queue, "com.tavaro.studio.stills") {
    timer_.setSingleShot(true);
    connect(&timer_, &QTimer::timeout, this, &LiveStills::takeNext);
}

void LiveStills::setWanted(std::vector<Wanted> wanted) {
    wanted_ = std::move(wanted);
    std::erase_if(tried_,
                  [&](QString const& id) { return std::ranges::find(wanted_, id, &Wanted::id) == wanted_.end(); });
    if (isWatched_ && !isTaking_ && (!timer_.isActive() || untried() != wanted_.end())) takeNext();
}

void LiveStills::setWatched(bool isWatched) {
    if (std::exchange(isWatched_, isWatched) == isWatched) return;
    timer_.stop();
    if (isWatched_ && !isTaking_) takeNext();
}

std::vector<LiveStills::Wanted>::const_iterator LiveStills::untried() const {
    return std::ranges::find_if(wanted_, [&](Wanted const& wanted) { return !tried_.contains(wanted.id); });
}

void LiveStills::takeNext() {
    if (!isWatched_ || wanted_.empty()) return;
    timer_.stop();
    auto const fresh = untried();
    auto const wanted = fresh != wanted_.end() ? *fresh : wanted_[next_++ % wanted_.size()];
    tried_.insert(wanted.id);
    isTaking_ = true;
    side_.ask([take = take_, wanted] { return take(wanted.source, wanted.size); },
              [this, id = wanted.id](Outcome<QImage> const& outcome) {
                  isTaking_ = false;
                  if (!isWatched_) return;
                  if (!outcome.failure()) Q_EMIT taken(id, outcome.value());
                  auto const shared = round / static_cast<int>(std::max<std::size_t>(wanted_.size(), 1));
                  timer_.start(untried() != wanted_.end() ? leastRest : std::max(leastRest, shared));
              });
}

}
