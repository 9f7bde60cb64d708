#pragma once

#include <TavaroCore/Package/FileStamp.h>
#include <TavaroCore/Project/DemoMode.h>
#include <TavaroCore/Records/Fields.h>
#include <TavaroCore/Records/UUID.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

/// What the library remembers of one project, and what has to be unchanged for that to hold.
struct IndexedProject {
    FileStamp document;
    std::int64_t folderModified = 0; // of the package, where thumbnails appear
    std::int64_t assetsModified = 0;

    std::optional<UUID> id; // of a document that can be read
    std::string name;
    double duration = 0;
    DemoMode mode = DemoMode::website;
    std::int64_t size = 0; // bytes of the whole package
    bool hasThumbnail = false;
    std::optional<std::string> problem;

    static constexpr auto fields = std::tuple{
        field("document", &IndexedProject::document),
        field("folderModified", &IndexedProject::folderModified),
        field("assetsModified", &IndexedProject::assetsModified),
        field("id", &IndexedProject::id),
        field("name", &IndexedProject::name),
        field("duration", &IndexedProject::duration),
        field("mode", &IndexedProject::mode),
        field("size", &IndexedProject::size),
        field("hasThumbnail", &IndexedProject::hasThumbnail),
        field("problem", &IndexedProject::problem),
    };
    bool operator==(IndexedProject const&) const = default;
};
static_assert(listsEveryField<IndexedProject>);

/// The library's cache: one file for all folders. Nothing in it cannot be found out again, so a file that is missing
/// or damaged is an empty index.
struct LibraryIndex {
    static constexpr std::int64_t currentVersion = 2;

    std::int64_t version = 0;
    std::map<std::string, IndexedProject> projects; // by absolute path

    static LibraryIndex decode(std::string_view json);
    static LibraryIndex read(std::filesystem::path const& file);
    /// In one step, so that programs at work at once each leave a whole index; the last one's stays. Failures, as on a
    /// full disk, are none.
    void write(std::filesystem::path const& file) const;

    static constexpr auto fields =
        std::tuple{field("version", &LibraryIndex::version), field("projects", &LibraryIndex::projects)};
    bool operator==(LibraryIndex const&) const = default;
};
static_assert(listsEveryField<LibraryIndex>);

}
