#include <TavaroMCP/Protocol/Private/Turnstile.h>

#include <utility>

namespace tavaro {

void Turnstile::enter(Task task) {
    waiting_.push_back(std::move(task));
    letIn();
}

void Turnstile::leave() {
    isTaken_ = false;
    letIn();
}

/// A task that is over at once leaves from inside itself; the next one is let in behind it, and not deeper.
void Turnstile::letIn() {
    if (std::exchange(isLettingIn_, true)) return;
    while (!isTaken_ && !waiting_.empty()) {
        isTaken_ = true;
        auto const next = std::move(waiting_.front());
        waiting_.pop_front();
        next();
    }
    isLettingIn_ = false;
}

}
