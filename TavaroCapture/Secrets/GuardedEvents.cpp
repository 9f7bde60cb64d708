#include <TavaroCapture/Secrets/Private/GuardedEvents.h>

#include <TavaroPlatform/Clocks/MediaClock.h>

#include <algorithm>
#include <poll.h>
#include <utility>

namespace tavaro {

namespace {

/// How long a program usually takes to handle the keys before this one: some handle them with their next frame only,
/// and answer questions before that.
constexpr double settlingSeconds = 0.3;
/// How soon a field shows what was typed, which it may lose again by the key that ends its dialog.
constexpr double showingSeconds = 0.06;
/// At the take's end, keys that nobody could place by then are left out.
constexpr double patienceAtEnd = 0.6;

}

GuardedEvents::GuardedEvents(std::unique_ptr<EventSource> source, LoggedKeys keys, std::unique_ptr<FieldFocus> focus,
                             TerminalPrompts terminals)
    : source_(std::move(source))
    , keys_(std::move(keys))
    , focus_(std::move(focus))
    , terminals_(std::move(terminals)) {}

GuardedEvents::~GuardedEvents() { stop(); }

void GuardedEvents::start(EventHandlers handlers) {
    handlers_ = std::move(handlers);
    auto passedOn = handlers_;
    passedOn.frontmost = [this](FrontWindow window) {
        front_ = window.process;
        isFrontSecret_ = window.asksForSecret;
        if (window.asksForSecret) wasFrontSecret_ = true;
        handlers_.frontmost(std::move(window));
    };
    passedOn.key = [this](double at, Chord chord) {
        bool const isForLog = keys_.logging == KeyLogging::all || chord.isShortcut();
        if (!isForLog || std::ranges::find(keys_.never, chord) != keys_.never.end()) return;
        std::lock_guard const lock(arriving_);
        arrived_.push_back({at, std::move(chord), front_, mediaClockNow(), isFrontSecret_});
        wake_.ring();
    };
    source_->start(std::move(passedOn));
    queue_.async([this] { run(); });
}

void GuardedEvents::stop() {
    source_->stop();
    if (endedAt_ == 0) endedAt_ = mediaClockNow();
    wake_.ring();
    queue_.sync([] {});
}

bool GuardedEvents::isOver() const {
    return endedAt_ > 0 && (held_.empty() || mediaClockNow() > endedAt_ + patienceAtEnd);
}

void GuardedEvents::run() {
    do {
        waitForNews();
        takeArrived();
        if (focus_ && !focus_->listen()) loseFocus();
        noteSecrets();
        lookForDots();
        askForOldest();
    } while (!isOver());
}

/// From here on only windows and terminals tell.
void GuardedEvents::loseFocus() {
    focus_.reset();
    settle(FieldFocus::Content::unknown);
}

void GuardedEvents::waitForNews() {
    constexpr int lookAgain = 20; // milliseconds, while keys are held
    int patience = held_.empty() ? -1 : lookAgain;
    pollfd watched[] = {{wake_.descriptor(), POLLIN, 0}, {-1, 0, 0}};
    if (focus_) {
        watched[1] = {focus_->descriptor(), focus_->awaited(), 0};
        int const due = focus_->patience();
        if (due >= 0) patience = patience < 0 ? due : std::min(patience, due);
    }
    poll(watched, std::size(watched), patience);
    wake_.hush();
}

void GuardedEvents::takeArrived() {
    std::lock_guard const lock(arriving_);
    std::ranges::move(arrived_, std::back_inserter(held_));
    arrived_.clear();
}

/// Keys that are held while a secret is asked for are part of it, or near enough.
void GuardedEvents::noteSecrets() {
    bool const isFieldSecret = focus_ && focus_->takeSecret();
    bool const isSecret = wasFrontSecret_.exchange(isFrontSecret_) || isFieldSecret;
    int process = -1;
    bool asks = false; // its terminal
    for (auto& key : held_) {
        if (std::exchange(process, key.process) != key.process) asks = terminalAsks(process);
        key.isSecret = key.isSecret || isSecret || asks;
    }
}

/// Where the window in front is a guess, any prompt may be what the keys go to.
bool GuardedEvents::terminalAsks(int process) {
    return source_->knowsFront() ? terminals_.asksForSecret(process) : terminals_.anyoneAsks();
}

void GuardedEvents::lookForDots() {
    double const now = mediaClockNow();
    bool isDue = false;
    for (auto& key : held_) {
        if (now < key.arrivedAt + showingSeconds) break;
        isDue = !std::exchange(key.isLookedAt, true) || isDue;
    }
    if (!isDue || !focus_) return;
    focus_->ask([this](FieldFocus::Content content) {
        if (content != FieldFocus::Content::hidden) return;
        for (auto& key : held_) key.isSecret = true;
    });
}

void GuardedEvents::askForOldest() {
    if (asked_ > 0 || (focus_ && focus_->isSearching())) return;
    double const now = mediaClockNow();
    auto const firstYoung =
        std::ranges::find_if(held_, [&](HeldKey const& key) { return now < key.arrivedAt + settlingSeconds; });
    asked_ = static_cast<std::size_t>(firstYoung - held_.begin());
    if (asked_ == 0) return;
    if (!focus_) return settle(FieldFocus::Content::open);
    focus_->ask([this](FieldFocus::Content content) { settle(content); });
}

void GuardedEvents::settle(FieldFocus::Content content) {
    noteSecrets();
    for (; asked_ > 0; --asked_) {
        auto key = std::move(held_.front());
        held_.pop_front();
        if (!key.isSecret && content == FieldFocus::Content::open) handlers_.key(key.at, std::move(key.chord));
    }
}

std::unique_ptr<EventSource> guarded(std::unique_ptr<EventSource> source, LoggedKeys const& keys,
                                     std::string const& display) {
    if (keys.logging == KeyLogging::none) return source;
    auto const address = atspi::busAddress(display);
    auto bus = address.empty() ? nullptr : atspi::openBus(address);
    auto focus = bus ? std::make_unique<FieldFocus>(std::move(bus)) : nullptr;
    return std::make_unique<GuardedEvents>(std::move(source), keys, std::move(focus));
}

}
