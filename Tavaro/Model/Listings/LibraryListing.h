#pragma once

#include <TavaroCore/Project/DemoMode.h>
#include <TavaroCore/Records/Date.h>
#include <TavaroCore/Records/Fields.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace tavaro {

/// A project of the library.
struct ListedProject {
    std::string path; // of the package, absolute
    std::string name;
    double duration = 0;   // output seconds
    Date modified;         // of the document's last save
    std::int64_t size = 0; // bytes of the whole package
    DemoMode mode = DemoMode::website;
    std::optional<std::string> thumbnail;
    std::optional<std::string> problem; // why it cannot be opened; the rest is then only what the files tell

    static constexpr auto fields = std::tuple{
        field("path", &ListedProject::path),           field("name", &ListedProject::name),
        field("duration", &ListedProject::duration),   field("modified", &ListedProject::modified),
        field("size", &ListedProject::size),           field("mode", &ListedProject::mode),
        field("thumbnail", &ListedProject::thumbnail), field("problem", &ListedProject::problem),
    };
    bool operator==(ListedProject const&) const = default;
};
static_assert(listsEveryField<ListedProject>);

/// Where projects are when nobody says: the current folder, the films of the user, and what was never put anywhere.
std::vector<std::filesystem::path> usualProjectFolders();

/// The projects below the folders, newest first. Throws `FileError` for a folder that is not there.
std::vector<ListedProject> listProjects(std::vector<std::filesystem::path> const& folders);

}
