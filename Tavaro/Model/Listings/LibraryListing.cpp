#include <Tavaro/Model/Listings/LibraryListing.h>

#include <TavaroCore/Library/ProjectLibrary.h>
#include <TavaroPlatform/Folders/Folders.h>

namespace tavaro {

namespace fs = std::filesystem;

std::vector<fs::path> usualProjectFolders() {
    std::vector<fs::path> usual;
    std::error_code code;
    for (auto const& folder : {fs::current_path(code), folders::movies() / "Tavaro", folders::unsavedProjects()}) {
        if (fs::is_directory(folder, code)) usual.push_back(folder);
    }
    return usual;
}

std::vector<ListedProject> listProjects(std::vector<fs::path> const& folders) {
    std::vector<ListedProject> listed;
    for (auto const& item : ProjectLibrary(folders::caches() / "library.json").list(folders)) {
        listed.push_back(
            {item.path.string(), item.name, item.duration, item.modified, item.size, item.mode, {}, item.problem});
        if (item.thumbnail) listed.back().thumbnail = item.thumbnail->string();
    }
    return listed;
}

}
