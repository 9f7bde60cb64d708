#include <Tavaro/Studio/Exports/AwaitedScans.h>

#include <Tavaro/Model/Application/Application.h>
#include <Tavaro/Model/Privacy/DueScan.h>
#include <Tavaro/Model/Privacy/NewTakeScans.h>

#include <QPointer>

#include <algorithm>
#include <utility>

namespace tavaro {

AwaitedScans::AwaitedScans(Application& application, std::chrono::milliseconds pause, Over over)
    : application_(application)
    , over_(std::move(over)) {
    timer_.setInterval(pause);
    connect(&timer_, &QTimer::timeout, this, &AwaitedScans::look);
}

void AwaitedScans::add(UUID const& id, std::filesystem::path const& package) {
    awaited_.push_back({id, package});
    timer_.start();
}

void AwaitedScans::remove(UUID const& id) {
    std::erase_if(awaited_, [&](auto const& each) { return each.id == id; });
    if (awaited_.empty()) timer_.stop();
}

bool AwaitedScans::contains(UUID const& id) const {
    return std::ranges::find(awaited_, id, &Awaited::id) != awaited_.end();
}

/// The project's window may have been closed meanwhile, and its scan with it: then the application goes on with that.
void AwaitedScans::look() {
    auto& scans = application_.newTakes();
    for (auto& each : awaited_) {
        if (each.isOver) continue;
        if (!DueScan::isNoted(each.package))
            open(each);
        else if (!scans.isExpected(each.package))
            scans.add(each.package);
    }
}

void AwaitedScans::open(Awaited& awaited) {
    awaited.isOver = true;
    QPointer<AwaitedScans> const self(this);
    application_.projects().open(awaited.package, [self, id = awaited.id](auto const& opened) {
        if (!self || !self->contains(id)) return;
        self->remove(id);
        self->over_(id, opened);
    });
}

}
