#include <TavaroCore/Library/ProjectLibrary.h>

#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Library/Private/LibraryIndex.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSONError.h>

#include <algorithm>
#include <fmt/format.h>
#include <set>
#include <sys/stat.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

// Far more than anybody has; keeps an index of places that came and went from growing for ever.
constexpr std::size_t mostRemembered = 50'000;

std::int64_t nanoseconds(timespec const& time) { return time.tv_sec * 1'000'000'000 + time.tv_nsec; }

std::optional<struct stat> about(fs::path const& path) {
    struct stat result {};
    return stat(path.c_str(), &result) == 0 ? std::optional(result) : std::nullopt;
}

bool isPackage(fs::path const& path) { return path.extension() == ProjectPackage::directoryExtension; }

/// Every package below the folder; problems inside of it leave out what they concern.
void findPackages(fs::path const& folder, int depth, std::set<fs::path>& found) {
    std::error_code code;
    for (fs::directory_iterator entry(folder, code), end; !code && entry != end; entry.increment(code)) {
        auto const& path = entry->path();
        std::error_code gone;
        if (path.filename().native().front() == '.') continue;
        if (isPackage(path)) {
            if (entry->is_directory(gone)) found.insert(path);
        } else if (depth > 1 && entry->is_directory(gone) && !entry->is_symlink(gone)) {
            findPackages(path, depth - 1, found);
        }
    }
}

std::set<fs::path> packagesIn(std::vector<fs::path> const& folders) {
    std::set<fs::path> found;
    for (auto const& folder : folders) {
        std::error_code code;
        auto path = fs::absolute(folder).lexically_normal();
        if (!path.has_filename()) path = path.parent_path(); // "folder/"
        fs::directory_iterator const probe(path, code);
        if (code) {
            throw FileError(FileError::Kind::cannotRead,
                            fmt::format("Could not list the projects in “{}”: {}.", path.string(), code.message()));
        }
        if (isPackage(path))
            found.insert(path);
        else
            findPackages(path, ProjectLibrary::depth, found);
    }
    return found;
}

std::int64_t bytesIn(fs::path const& package) {
    std::int64_t sum = 0;
    std::error_code code;
    for (fs::recursive_directory_iterator entry(package, code), end; !code && entry != end; entry.increment(code)) {
        std::error_code gone;
        if (!entry->is_regular_file(gone)) continue;
        auto const bytes = entry->file_size(gone);
        if (!gone) sum += static_cast<std::int64_t>(bytes);
    }
    return sum;
}

/// What the document says. False when that cannot be remembered, as the reason may go away without a trace.
bool readDocument(ProjectPackage const& package, IndexedProject& project) {
    project.name = package.url().stem().string();
    project.id.reset();
    project.duration = 0;
    project.mode = {};
    project.problem.reset();
    try {
        // Not by the package, whose `load` may rewrite: looking at a library changes nothing in it.
        auto const text = readWholeFile(package.projectFileURL());
        auto const document = decodeProject(text.value_or(""));
        project.id = document.id;
        project.name = document.name;
        project.duration = document.duration();
        project.mode = document.mode;
        return true;
    } catch (JSONError const& error) {
        project.problem = fmt::format("Could not open the project “{}”: {}.", package.url().string(), error.what());
        return true;
    } catch (FileError const& error) {
        project.problem = error.what();
        return false;
    }
}

class Listing {
public:
    explicit Listing(LibraryIndex const& before) : before_(before) {}

    LibraryItem item(fs::path const& path) {
        ProjectPackage const package(path);
        auto const document = stampOf(package.projectFileURL());
        if (!document) {
            return {.path = path,
                    .name = path.stem().string(),
                    .problem = fmt::format("Could not open the project “{}”: it has no project.json.", path.string())};
        }
        auto const& project = remembered(package, *document);
        LibraryItem item{.path = path,
                         .id = project.id,
                         .name = project.name,
                         .duration = project.duration,
                         .modified = {project.document.modified / 1'000'000},
                         .size = project.size,
                         .mode = project.mode,
                         .problem = project.problem};
        if (project.hasThumbnail) item.thumbnail = package.thumbnailURL();
        return item;
    }

    /// The index as it should be from now on, given what was listed; nothing when it is so already.
    std::optional<LibraryIndex> changed(std::vector<fs::path> const& folders) {
        std::set<std::string> roots;
        for (auto const& folder : folders) roots.insert((fs::absolute(folder).lexically_normal() / "").string());
        bool isChanged = hasNews_;
        for (auto const& [path, project] : before_.projects) {
            if (now_.contains(path)) continue;
            auto const isBelow = [&path = path](std::string const& root) { return (path + "/").starts_with(root); };
            bool const isGone = std::any_of(roots.begin(), roots.end(), isBelow);
            if (!isGone && now_.size() < mostRemembered)
                now_.emplace(path, project);
            else
                isChanged = true;
        }
        if (!isChanged) return std::nullopt;
        return LibraryIndex{LibraryIndex::currentVersion, std::move(now_)};
    }

private:
    IndexedProject const& remembered(ProjectPackage const& package, FileStamp const& stamp) {
        auto const folder = about(package.url()), assets = about(package.assetsURL());
        auto const folderModified = folder ? nanoseconds(folder->st_mtim) : 0;
        auto const assetsModified = assets ? nanoseconds(assets->st_mtim) : 0;
        auto const& key = package.url().native();
        auto const known = before_.projects.find(key);
        bool const isSame = known != before_.projects.end() && known->second.document == stamp;
        if (isSame && known->second.folderModified == folderModified && known->second.assetsModified == assetsModified)
            return now_.emplace(key, known->second).first->second;

        auto project = isSame ? known->second : IndexedProject{};
        bool const lasts = isSame || readDocument(package, project);
        project.document = lasts ? stamp : FileStamp{stamp.modified, 0, 0};
        project.folderModified = folderModified;
        project.assetsModified = assetsModified;
        project.size = bytesIn(package.url());
        project.hasThumbnail = about(package.thumbnailURL()).has_value();
        hasNews_ = true;
        return now_.insert_or_assign(key, std::move(project)).first->second;
    }

    LibraryIndex const& before_;
    std::map<std::string, IndexedProject> now_;
    bool hasNews_ = false;
};

}

std::vector<LibraryItem> ProjectLibrary::list(std::vector<fs::path> const& folders) const {
    auto const packages = packagesIn(folders);
    auto const index = indexFile_.empty() ? LibraryIndex{} : LibraryIndex::read(indexFile_);
    Listing listing(index);
    std::vector<LibraryItem> items;
    items.reserve(packages.size());
    for (auto const& package : packages) items.push_back(listing.item(package));
    if (!indexFile_.empty()) {
        if (auto const changed = listing.changed(folders)) changed->write(indexFile_);
    }
    std::stable_sort(items.begin(), items.end(),
                     [](LibraryItem const& a, LibraryItem const& b) { return a.modified > b.modified; });
    return items;
}

}
