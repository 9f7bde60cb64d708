#pragma once

#include <TavaroCore/Package/FileStamp.h>

#include <cstdint>
#include <memory>

namespace tavaro {

struct RecordingMetadata;

/// What a save knows of the file that it wrote, for the next one.
struct SavedDocument {
    FileStamp stamp;                              // it is good for as long as the file has this
    std::shared_ptr<RecordingMetadata const> log; // of the document
    std::int64_t logBegin = 0;                    // where in the file the log's text is, bytes
    std::int64_t logEnd = 0;
};

}
