#include <TavaroMCP/Protocol/Private/Turnstile.h>

#include <utility>

namespace tavaro {

void Turnstile::enter(Task task) {
    if (isTaken_) return waiting_.push_back(std::move(task));
    isTaken_ = true;
    task();
}

void Turnstile::leave() {
    isTaken_ = !waiting_.empty();
    if (!isTaken_) return;
    auto const next = std::move(waiting_.front());
    waiting_.pop_front();
    next();
}

}
