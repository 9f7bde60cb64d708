#pragma once

#include <TavaroPlatform/Archive/ProjectArchive.h>

#include <filesystem>
#include <string>
#include <sys/stat.h>
#include <vector>

namespace tavaro {

/// A file or folder that goes into an archive.
struct PackageItem {
    std::filesystem::path path; // of what is packed; no link
    std::string name;           // in the archive
    struct stat about;
};

struct PackageContents {
    std::vector<PackageItem> items; // each folder before what it holds
    std::vector<std::string> remarks;
};

/// Everything in the package but what a save under way, or one that was killed, has beside the documents. Throws
/// `ArchiveError` for a link that leads where it may not, and for what cannot be in an archive.
PackageContents contentsOf(std::filesystem::path const& package, PackingRequest::Links links);

}
