#include <TavaroCapture/Segments/Private/TakeManifest.h>

#include <algorithm>

namespace tavaro {

namespace {

StreamRecord* streamOf(RecordingManifest& manifest, StreamRole role) {
    auto const found =
        std::ranges::find_if(manifest.streams, [&](StreamRecord const& stream) { return stream.role == role; });
    return found == manifest.streams.end() ? nullptr : &*found;
}

}

TakeManifest::TakeManifest(std::filesystem::path directory, UUID const& recordingID)
    : directory_(std::move(directory)) {
    record_.recordingID = recordingID;
    record_.createdAt = Date::now();
}

std::filesystem::path TakeManifest::segmentPath(StreamRole role, std::int64_t index) const {
    return directory_ / segmentFileName(index, role);
}

RecordingManifest TakeManifest::record() const {
    std::lock_guard const guard(lock_);
    return record_;
}

void TakeManifest::enter(StreamRecord const& stream) {
    std::lock_guard const guard(lock_);
    if (stream.role == StreamRole::screen) {
        record_.width = stream.width;
        record_.height = stream.height;
        record_.fps = stream.fps;
    } else if (auto* const known = streamOf(record_, stream.role)) {
        *known = stream;
    } else {
        record_.streams.push_back(stream);
    }
}

void TakeManifest::enter(StreamRole role, double offset) {
    std::lock_guard const guard(lock_);
    if (auto* const stream = streamOf(record_, role)) stream->offset = offset;
}

void TakeManifest::add(StreamRole role, SegmentRecord segment) {
    std::lock_guard const guard(lock_);
    auto* const stream = streamOf(record_, role);
    (stream ? stream->segments : record_.segments).push_back(std::move(segment));
}

void TakeManifest::complete() {
    std::lock_guard const guard(lock_);
    record_.isComplete = true;
}

std::vector<TakeManifest::OpenSegment> TakeManifest::open() const {
    std::lock_guard const guard(lock_);
    std::vector<OpenSegment> result{{StreamRole::screen, std::ssize(record_.segments)}};
    for (auto const& stream : record_.streams) result.push_back({stream.role, std::ssize(stream.segments)});
    return result;
}

std::int64_t TakeManifest::segments() const {
    std::int64_t result = 0;
    for (auto const& stream : open()) result += stream.index;
    return result;
}

void TakeManifest::write() {
    std::lock_guard const guard(writing_); // what was entered last is written last
    auto const now = record();
    written_ = 0;
    for (auto const& stream : streamsOf(now)) written_ += std::ssize(stream.segments);
    writeManifest(directory_, now);
}

void TakeManifest::writeIfDue() {
    constexpr std::int64_t leastShare = 64; // of the segments, one in so many
    {
        std::lock_guard const guard(writing_);
        auto const all = segments();
        if ((all - written_) * leastShare < all) return;
    }
    write();
}

}
