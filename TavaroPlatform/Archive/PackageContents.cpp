#include <TavaroPlatform/Archive/Private/PackageContents.h>

#include <TavaroPlatform/Archive/Private/ArchiveLimits.h>
#include <TavaroPlatform/Archive/Private/PackagingFailure.h>

#include <TavaroCore/Files/PendingFile.h>

#include <algorithm>
#include <array>
#include <cerrno>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

bool isBelow(fs::path const& path, fs::path const& folder) {
    auto const relative = path.lexically_relative(folder);
    return !relative.empty() && *relative.begin() != "..";
}

struct stat statusOf(fs::path const& path) {
    struct stat about {};
    if (::stat(path.c_str(), &about) != 0) failPackaging(path, errno);
    return about;
}

/// Goes through the package and what its links lead to.
class PackageWalk {
public:
    PackageWalk(fs::path const& package, PackingRequest::Links links) : links_(links) {
        std::error_code code;
        root_ = fs::canonical(package, code);
        if (code) failPackaging(package, code.value());
        top_ = package.filename().string();
    }

    PackageContents run() && {
        addFolder(root_, top_);
        std::ranges::sort(contents_.items, {}, &PackageItem::name);
        return std::move(contents_);
    }

private:
    void addFolder(fs::path const& folder, std::string const& name) {
        auto const slashes = std::ranges::count(name, '/');
        if (slashes >= archiveLimits::deepestPath) failPackaging(fmt::format("“{}” lies too deep", inPackage(name)));
        add(folder, name, statusOf(folder));
        open_.push_back(folder);
        std::error_code code;
        for (fs::directory_iterator entry(folder, code), end; !code && entry != end; entry.increment(code))
            look(entry->path(), name + "/" + entry->path().filename().string());
        if (code) failPackaging(folder, code.value());
        open_.pop_back();
    }

    void look(fs::path const& path, std::string const& name) {
        if (isHalfWritten(name)) return;
        struct stat about {};
        if (::lstat(path.c_str(), &about) != 0) failPackaging(path, errno);
        if (S_ISLNK(about.st_mode)) return follow(path, name);
        take(path, name, about);
    }

    void take(fs::path const& path, std::string const& name, struct stat const& about) {
        if (S_ISDIR(about.st_mode)) return addFolder(path, name);
        if (!S_ISREG(about.st_mode)) failPackaging(fmt::format("“{}” is neither a file nor a folder", inPackage(name)));
        add(path, name, about);
    }

    void follow(fs::path const& link, std::string const& name) {
        std::error_code code;
        auto const shown = fmt::format("the link “{}” to “{}”", inPackage(name), fs::read_symlink(link, code).string());
        auto const target = fs::canonical(link, code);
        if (code) failPackaging(fmt::format("{} leads nowhere", shown));
        if (links_ == PackingRequest::Links::insideOnly && !isBelow(target, root_))
            failPackaging(fmt::format("{} leads out of it", shown), ArchiveError::Kind::leadsOutside);
        if (std::ranges::find(open_, target) != open_.end())
            failPackaging(fmt::format("{} leads to a folder that it lies in", shown));
        take(target, name, statusOf(target));
    }

    void add(fs::path const& path, std::string name, struct stat const& about) {
        if (contents_.items.size() == archiveLimits::mostEntries)
            failPackaging(fmt::format("it holds more than {} files", archiveLimits::mostEntries));
        contents_.items.push_back({path, std::move(name), about});
    }

    /// What a save under way, or one that was killed, has beside the documents; earlier versions called it after them.
    bool isHalfWritten(std::string const& name) {
        constexpr std::array<std::string_view, 3> formerNames{"project.json.tmp", "project.previous.json.tmp",
                                                              "editor.json.tmp"};
        auto const place = inPackage(name);
        if (std::ranges::find(formerNames, place) != formerNames.end()) return true;
        if (!PendingFile::isPendingName(fs::path(place).filename().string())) return false;
        if (place.find('/') != place.npos)
            contents_.remarks.push_back(fmt::format("“{}” is half written and was left out.", place));
        return true;
    }

    std::string inPackage(std::string const& name) const { return name.substr(std::min(name.size(), top_.size() + 1)); }

    PackingRequest::Links links_;
    fs::path root_;
    std::string top_;
    std::vector<fs::path> open_; // the folders on the way to where the walk is, without links
    PackageContents contents_;
};

}

PackageContents contentsOf(fs::path const& package, PackingRequest::Links links) {
    return PackageWalk(package, links).run();
}

}
