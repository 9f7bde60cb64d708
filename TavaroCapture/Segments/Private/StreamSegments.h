#pragma once

#include <TavaroCapture/Segments/Private/TakeManifest.h>
#include <TavaroCapture/Sources/CaptureError.h>
#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroMedia/Errors/MediaError.h>

#include <exception>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace tavaro {

[[noreturn]] void failWriting(std::string detail);

/// Runs a step of writing, and gives its failures the recording's own words.
template<class Step> auto writing(Step step) {
    try {
        return step();
    } catch (MediaError const& error) {
        failWriting(error.detail());
    } catch (FileError const& error) {
        failWriting(error.what());
    }
}

/// The segments of one stream as they close. Belongs to the thread that writes the stream; what finishes the files runs
/// in the background.
class StreamSegments {
public:
    StreamSegments(std::shared_ptr<TakeManifest> manifest, StreamRole role);
    /// Waits for the files.
    ~StreamSegments();
    StreamSegments(StreamSegments const&) = delete;
    StreamSegments& operator=(StreamSegments const&) = delete;

    TakeManifest& manifest() const { return *manifest_; }
    StreamRole role() const { return role_; }
    std::vector<SegmentRecord> const& closed() const { return closed_; }
    /// The file of the first segment that is not closed, or of a later one.
    std::filesystem::path openPath(std::int64_t later = 0) const;

    /// Lists the open segment in the manifest at once, and finishes its file in the background.
    void close(double start, double duration, std::function<void()> finishFile);
    /// Throws the `CaptureError` of a file that could not be finished.
    void rethrowFailure();
    /// Waits for the files, and throws what `rethrowFailure` does.
    void wait();

private:
    void inBackground(std::function<void()> step);

    std::shared_ptr<TakeManifest> const manifest_;
    StreamRole const role_;
    std::vector<SegmentRecord> closed_;
    std::mutex failureLock_;
    std::exception_ptr failure_; // guarded by failureLock_
};

}
