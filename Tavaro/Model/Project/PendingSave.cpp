#include <Tavaro/Model/Project/PendingSave.h>

#include <Tavaro/Model/Project/ProjectInUse.h>

#include <utility>

namespace tavaro {

void PendingSave::run() {
    std::call_once(once_, [this] {
        modifiedBefore_ = parts_.document.modifiedAt;
        written_ = Outcome<WrittenDocument>::of([this] { return write(); });
        if (!written_->failure() && !written_->value().isChangedOutside) writeState();
    });
}

DemoProject PendingSave::takeDocument() {
    parts_.document.modifiedAt = modifiedBefore_;
    return std::move(parts_.document);
}

std::optional<FolderLock> PendingSave::lock() const {
    if (!parts_.locks) return std::nullopt;
    if (parts_.waitsForLock) return parts_.package.lockForEditing();
    auto lock = parts_.package.lockForEditingUnlessTaken();
    if (!lock) throw ProjectInUse(parts_.package.url());
    return lock;
}

WrittenDocument PendingSave::write() {
    auto const locked = lock();
    auto const& package = parts_.package;
    if (stampOf(package.projectFileURL()) != parts_.stamp) return {.isChangedOutside = true};
    WrittenDocument written{.modifiedAt = Date::now()};
    parts_.document.modifiedAt = written.modifiedAt;
    if (parts_.isDamaged)
        package.saveOverDamaged(parts_.document);
    else
        written.saved = package.save(parts_.document, parts_.before);
    written.stamp = stampOf(package.projectFileURL());
    return written;
}

void PendingSave::writeState() {
    try {
        if (parts_.state) parts_.package.saveEditorState(*parts_.state);
    } catch (...) {
        stateFailure_ = std::current_exception();
    }
}

}
