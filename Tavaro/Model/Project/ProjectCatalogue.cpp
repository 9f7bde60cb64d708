#include <Tavaro/Model/Project/ProjectCatalogue.h>

#include <TavaroCore/Files/FileError.h>

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <utility>

namespace tavaro {

namespace fs = std::filesystem;

NoSuchProject::NoSuchProject(UUID const& id) : Error(fmt::format("There is no project “{}”.", id.text())) {}

struct ProjectCatalogue::Search {
    std::vector<fs::path> folders;
    ProjectLibrary library;
    std::map<UUID, fs::path> known = {}; // where each was found the last time

    Listed found() const;
    Listed all();
    std::optional<LibraryItem> whereKnown(UUID const& id) const;
    LibraryItem find(UUID const& id);
};

ProjectCatalogue::Listed ProjectCatalogue::Search::found() const {
    std::vector<fs::path> there;
    std::error_code ignored;
    std::copy_if(folders.begin(), folders.end(), std::back_inserter(there),
                 [&](fs::path const& folder) { return fs::is_directory(folder, ignored); });
    return library.list(there);
}

ProjectCatalogue::Listed ProjectCatalogue::Search::all() {
    auto listed = found();
    std::erase_if(listed, [](LibraryItem const& item) { return !item.id || item.problem; });
    // What was meant before goes before what is newer.
    std::map<UUID, fs::path> meant;
    for (auto const& item : listed) {
        auto const before = known.find(*item.id);
        if (before != known.end() && before->second == item.path) meant.insert_or_assign(*item.id, item.path);
        meant.try_emplace(*item.id, item.path);
    }
    known = std::move(meant);
    std::erase_if(listed, [&](LibraryItem const& item) { return known.at(*item.id) != item.path; });
    return listed;
}

std::optional<LibraryItem> ProjectCatalogue::Search::whereKnown(UUID const& id) const {
    auto const found = known.find(id);
    if (found == known.end()) return std::nullopt;
    try {
        auto listed = library.list({found->second});
        if (listed.size() == 1 && listed[0].id == id && !listed[0].problem) return std::move(listed[0]);
    } catch (FileError const&) {
        // it has moved
    }
    return std::nullopt;
}

LibraryItem ProjectCatalogue::Search::find(UUID const& id) {
    if (auto item = whereKnown(id)) return std::move(*item);
    auto listed = all();
    auto const found = std::find_if(listed.begin(), listed.end(), [&](auto const& item) { return item.id == id; });
    if (found == listed.end()) throw NoSuchProject(id);
    return std::move(*found);
}

ProjectCatalogue::ProjectCatalogue(MainQueue& queue, std::vector<fs::path> folders, fs::path index)
    : search_(std::make_shared<Search>(Search{std::move(folders), ProjectLibrary(std::move(index))}))
    , side_(queue, "com.tavaro.library") {}

void ProjectCatalogue::list(std::size_t atMost, std::function<void(Outcome<Listed> const&)> answer) {
    side_.ask(
        [search = search_, atMost] {
            auto listed = search->all();
            if (listed.size() > atMost) listed.resize(atMost);
            return listed;
        },
        std::move(answer));
}

void ProjectCatalogue::listAll(std::function<void(Outcome<Listed> const&)> answer) {
    side_.ask([search = search_] { return search->found(); }, std::move(answer));
}

void ProjectCatalogue::find(UUID const& id, std::function<void(Outcome<LibraryItem> const&)> answer) {
    side_.ask([search = search_, id] { return search->find(id); }, std::move(answer));
}

}
