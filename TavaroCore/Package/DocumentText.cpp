#include <TavaroCore/Package/Private/DocumentText.h>

#include <TavaroCore/Files/PendingFile.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSON.h>

#include <span>

namespace tavaro {

namespace {

constexpr std::string_view logKey = "metadata";

bool hasAt(FileDescriptor const& file, std::int64_t offset, std::string_view text) {
    std::string found(text.size(), '\0');
    auto const count = file.readAt(offset, std::as_writable_bytes(std::span(found)));
    return count == static_cast<std::ptrdiff_t>(text.size()) && found == text;
}

}

DocumentText::DocumentText(DemoProject const& project) : metadata_(project.metadata.shared()) {
    JSONWriter before, after;
    before.beginObject();
    detail::writeMembers(before, project, [](std::string_view name) { return name < logKey; });
    before.key(logKey);
    detail::writeMembers(after, project, [](std::string_view name) { return name > logKey; });
    after.endObject();
    before_ = before.take();
    after_.append(1, ',').append(after.take());
}

std::string const& DocumentText::log() {
    constexpr std::size_t bytesASample = 128; // a pointer sample with full fractions takes about 110
    if (!log_.empty()) return log_;
    auto const& raw = metadata_->rawCursorSamples;
    JSONWriter writer;
    writer.expect(bytesASample * (metadata_->cursorSamples.size() + (raw ? raw->size() : 0)));
    writeJSON(writer, *metadata_);
    return log_ = writer.take();
}

void DocumentText::appendTo(PendingFile& file) {
    file.append(before_);
    file.append(log());
    file.append(after_);
}

bool DocumentText::appendTo(PendingFile& file, FileDescriptor const& before, SavedDocument const& saved) const {
    file.append(before_);
    if (!file.copyRange(before, saved.logBegin, saved.logEnd)) return false;
    file.append(after_);
    return stampOf(before) == saved.stamp;
}

bool DocumentText::is(std::string_view bytes) {
    auto const& log = this->log();
    return bytes.size() == before_.size() + log.size() + after_.size() && bytes.starts_with(before_) &&
           bytes.ends_with(after_) && bytes.substr(before_.size()).starts_with(log);
}

bool DocumentText::isIn(FileDescriptor const& file, SavedDocument const& saved) const {
    return saved.logBegin == logBegin() && saved.logEnd == behindLog(saved.stamp) && hasAt(file, 0, before_) &&
           hasAt(file, saved.logEnd, after_);
}

SavedDocument DocumentText::saved(FileStamp const& stamp) const {
    return {.stamp = stamp, .log = metadata_, .logBegin = logBegin(), .logEnd = behindLog(stamp)};
}

}
