#pragma once

#include <TavaroCore/Project/DemoMode.h>
#include <TavaroCore/Records/Date.h>
#include <TavaroCore/Records/UUID.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// A project as the library shows it.
struct LibraryItem {
    std::filesystem::path path; // of the package, absolute
    std::optional<UUID> id;     // of a document that can be read; a copy of a package has the same
    std::string name;
    double duration = 0;   // output seconds
    Date modified;         // of the document's last save
    std::int64_t size = 0; // bytes of the whole package
    DemoMode mode = DemoMode::website;
    std::optional<std::filesystem::path> thumbnail;
    std::optional<std::string> problem; // why it cannot be opened; the rest is then only what the files tell
};

/// Lists the projects below folders. What documents say is remembered in an index file, so that a second listing reads
/// none of them; a document that was saved, moved, replaced or removed by anybody is noticed. The index is only a
/// cache, safe to delete at any time and to share between programs.
class ProjectLibrary {
public:
    /// Without a file name nothing is remembered.
    explicit ProjectLibrary(std::filesystem::path indexFile = {}) : indexFile_(std::move(indexFile)) {}

    /// Folders in folders that are searched; each a package itself, or a place for packages.
    static constexpr int depth = 4;

    /// Newest first. Looks into folders in folders down to `depth`, not into hidden ones and not through links to
    /// folders; a package that is given is listed itself. Projects that cannot be read are in the list with their
    /// problem. Throws `FileError` for a folder that is not there or cannot be searched.
    std::vector<LibraryItem> list(std::vector<std::filesystem::path> const& folders) const;

private:
    std::filesystem::path indexFile_;
};

}
