#include <TavaroCapture/Wayland/Private/FrontWatch.h>

#include <TavaroCapture/Accessibility/Private/ActiveWindow.h>
#include <TavaroCapture/Compositor/Private/Connection.h>
#include <TavaroCapture/Wayland/Private/ActiveToplevel.h>
#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <poll.h>
#include <utility>

namespace tavaro::wayland {

namespace {

std::unique_ptr<FrontTeller> programs() {
    auto const address = atspi::busAddress({});
    auto bus = address.empty() ? nullptr : atspi::openBus(address);
    if (!bus) return nullptr;
    compositor::Connection const desktop;
    return std::make_unique<atspi::ActiveWindow>(std::move(bus), desktop.isOpen() ? desktop.process() : 0);
}

}

FrontWatch::FrontWatch() : teller_(ActiveToplevel::open()) {
    if (teller_) {
        kind_ = Teller::compositor;
        return;
    }
    teller_ = programs();
    if (teller_) kind_ = Teller::programs;
}

FrontWatch::FrontWatch(std::unique_ptr<FrontTeller> teller)
    : kind_(teller ? Teller::programs : Teller::nobody)
    , teller_(std::move(teller)) {}

FrontWatch::~FrontWatch() { stop(); }

void FrontWatch::start(std::function<void(FrontWindow)> report) {
    report_ = std::move(report);
    if (!teller_) return;
    reportChange();
    queue_.async([this] { run(); });
}

void FrontWatch::stop() {
    isEnding_ = true;
    wake_.ring();
    queue_.sync([] {});
}

void FrontWatch::run() {
    bool isTold = true;
    while (!isEnding_ && isTold) {
        waitForNews();
        isTold = teller_->listen();
        if (!isEnding_ && isTold) reportChange();
    }
    if (!isTold && !isEnding_ && reported_ != FrontWindow()) report_({});
}

void FrontWatch::waitForNews() {
    int patience = teller_->patience();
    if (goneAt_ > 0) {
        double const left = std::clamp(goneAt_ + changeSeconds - mediaClockNow(), 0.0, changeSeconds);
        int const due = static_cast<int>(std::ceil(left * 1000));
        patience = patience < 0 ? due : std::min(patience, due);
    }
    pollfd watched[] = {{wake_.descriptor(), POLLIN, 0}, {teller_->descriptor(), teller_->awaited(), 0}};
    poll(watched, std::size(watched), patience);
}

void FrontWatch::reportChange() {
    auto window = teller_->window();
    bool const isNone = window == FrontWindow();
    if (window == reported_) {
        goneAt_ = 0;
        return;
    }
    if (isNone && goneAt_ == 0) goneAt_ = mediaClockNow();
    if (isNone && mediaClockNow() - goneAt_ < changeSeconds) return;
    goneAt_ = 0;
    reported_ = window;
    report_(std::move(window));
}

}
