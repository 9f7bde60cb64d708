#pragma once

#include <TavaroCore/Package/SavedDocument.h>
#include <TavaroCore/Records/CopyOnWrite.h>

#include <memory>
#include <string>
#include <string_view>

namespace tavaro {

class FileDescriptor;
class PendingFile;
struct DemoProject;

/// The text of a document in three parts, as it is saved: what is before the log, the log, of which an hour has 45 MB
/// and which hardly ever changes, and the rest.
class DocumentText {
public:
    explicit DocumentText(DemoProject const& project);

    void appendTo(PendingFile& file);
    /// The same, with the log copied from the file that was saved before. False, with some of it appended, where that
    /// is not the file any more.
    [[nodiscard]] bool appendTo(PendingFile& file, FileDescriptor const& before, SavedDocument const& saved) const;

    /// Whether a file has this text.
    bool is(std::string_view bytes);
    /// The same of one that was saved with this log.
    bool isIn(FileDescriptor const& file, SavedDocument const& saved) const;

    /// Of a file with this text.
    SavedDocument saved(FileStamp const& stamp) const;

private:
    std::string const& log();
    std::int64_t logBegin() const { return static_cast<std::int64_t>(before_.size()); }
    std::int64_t behindLog(FileStamp const& stamp) const {
        return stamp.bytes - static_cast<std::int64_t>(after_.size());
    }

    std::shared_ptr<RecordingMetadata const> metadata_;
    std::string before_, log_, after_; // the log's is empty until it is needed
};

}
