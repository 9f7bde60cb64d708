#pragma once

#include <Tavaro/Model/Jobs/SideQueue.h>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Library/ProjectLibrary.h>
#include <TavaroCore/Records/UUID.h>

#include <cstddef>
#include <filesystem>
#include <functional>
#include <memory>
#include <vector>

namespace tavaro {

class NoSuchProject : public Error {
public:
    explicit NoSuchProject(UUID const& id);
};

/// The projects of an application's library, by their ids. Folders are searched beside the main queue, to which it
/// belongs. Of copies of one project, which share its id, the one that was saved last is meant, and stays meant.
class ProjectCatalogue {
public:
    /// Folders that are not there hold nothing. `index` is the file where the library remembers what documents say.
    ProjectCatalogue(MainQueue& queue, std::vector<std::filesystem::path> folders, std::filesystem::path index);

    /// Those that can be opened, the newest first, each id once.
    using Listed = std::vector<LibraryItem>;
    void list(std::size_t atMost, std::function<void(Outcome<Listed> const&)> answer);
    /// All that is there, the newest first: also copies that share an id, and what cannot be opened, with why not.
    void listAll(std::function<void(Outcome<Listed> const&)> answer);
    /// Costs a look at the project alone when it was found before. The failure is `NoSuchProject`.
    void find(UUID const& id, std::function<void(Outcome<LibraryItem> const&)> answer);

private:
    struct Search;

    std::shared_ptr<Search> search_; // the side's
    SideQueue side_;
};

}
