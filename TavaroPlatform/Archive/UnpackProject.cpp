#include <TavaroPlatform/Archive/ProjectArchive.h>

#include <TavaroPlatform/Archive/Private/ArchiveLimits.h>
#include <TavaroPlatform/Archive/Private/LibArchive.h>

#include <TavaroCore/Errors/Excerpt.h>
#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/HiddenFolder.h>
#include <TavaroCore/Files/MoveUnlessTaken.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Records/JSONError.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <fmt/format.h>
#include <optional>
#include <set>
#include <sys/stat.h>
#include <system_error>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

// Documents deflate to a tenth, media hardly at all; what unfolds further was made to fill a disk.
constexpr std::uint64_t largestGrowth = 100;
constexpr std::uint64_t alwaysAllowedBytes = std::uint64_t{64} << 20;
using archiveLimits::deepestPath;
using archiveLimits::mostEntries;

constexpr auto ownerWrites = fs::perms(0644);

using Kind = ArchiveError::Kind;

/// Work folders of earlier versions, which nobody held; one that is old was left by a killed process.
void removeFormerWorkFolders(fs::path const& folder) {
    constexpr std::string_view beginning = ".unpacking-";
    constexpr std::size_t randomCharacters = 6;
    auto const someTimeAgo = fs::file_time_type::clock::now() - std::chrono::hours(1);
    std::error_code error;
    for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
        auto const name = entry->path().filename().string();
        std::error_code gone;
        if (name.starts_with(beginning) && name.size() == beginning.size() + randomCharacters &&
            fs::is_directory(entry->symlink_status(gone)) && fs::last_write_time(entry->path(), gone) < someTimeAgo)
            fs::remove_all(entry->path(), gone);
    }
}

class Unpacking {
public:
    Unpacking(fs::path const& archive, fs::path const& folder, ArchiveWatch proceed)
        : archive_(archive)
        , folder_(folder)
        , proceed_(proceed)
        , reader_(archive_read_new())
        , work_(madeIn(folder)) {
        if (!reader_) throw std::bad_alloc();
    }

    fs::path run() {
        open();
        archive_entry* entry = nullptr;
        for (int code; (code = archive_read_next_header(reader_.get(), &entry)) != ARCHIVE_EOF;) {
            if (code < ARCHIVE_WARN) fail(Kind::cannotUnpack, problemOf(reader_.get()));
            if (++entries_ > mostEntries) fail(Kind::unsafe, fmt::format("it has more than {} entries", mostEntries));
            unpack(entry);
        }
        if (top_.empty() || !fs::is_regular_file(fs::symlink_status(work_.path() / top_ / "project.json")))
            fail(Kind::notAProject, "it holds no project");
        return moveIntoPlace();
    }

private:
    [[noreturn]] void fail(Kind kind, std::string const& problem) const {
        throw ArchiveError(kind, fmt::format("Couldn't unpack “{}”: {}.", archive_.string(), problem));
    }
    [[noreturn]] void failWith(int code, fs::path const& file) const {
        constexpr std::size_t longestShown = 500; // a user's own path, but not all that an archive can call a file
        fail(code == ENOSPC || code == EDQUOT ? Kind::diskFull : Kind::cannotUnpack,
             fmt::format("{}: {}", excerpt(file.string(), longestShown), systemReason(code)));
    }

    HiddenFolder madeIn(fs::path const& folder) const {
        std::error_code code;
        fs::create_directories(folder, code);
        if (code) failWith(code.value(), folder);
        removeFormerWorkFolders(folder);
        try {
            return HiddenFolder(folder / "unpacking");
        } catch (FileError const& error) {
            failWith(error.errorNumber, folder);
        }
    }

    void open() {
        struct stat about {};
        if (stat(archive_.c_str(), &about) != 0) {
            fail(errno == ENOENT || errno == ENOTDIR ? Kind::notThere : Kind::cannotUnpack, systemReason(errno));
        }
        if (!S_ISREG(about.st_mode)) fail(Kind::cannotUnpack, "it is not a file");
        progress_.bytesTotal = static_cast<std::uint64_t>(about.st_size);
        allowedBytes_ = progress_.bytesTotal * largestGrowth + alwaysAllowedBytes;
        archive_read_support_format_zip_seekable(reader_.get());
        constexpr std::size_t block = 1 << 18;
        if (archive_read_open_filename(reader_.get(), archive_.c_str(), block) != ARCHIVE_OK)
            fail(Kind::cannotUnpack, "it is not a zip archive that can be read");
    }

    /// Where the entry goes, below the work folder; none for what other systems add beside the project.
    std::optional<fs::path> placeOf(archive_entry* entry) {
        char const* const given = archive_entry_pathname(entry);
        std::string const name = given ? given : "";
        auto const refuse = [&](char const* why) {
            fail(Kind::unsafe, fmt::format("its entry “{}” {}", excerpt(name), why));
        };
        if (name.empty()) refuse("has no name that can be read");
        if (name.front() == '/') refuse("has an absolute path");
        fs::path place;
        for (auto const& part : fs::path(name)) {
            if (part == "..") refuse("climbs out of its folder");
            if (!part.empty() && part != ".") place /= part;
        }
        if (place.empty() || *place.begin() == "__MACOSX" || place.filename() == ".DS_Store") return std::nullopt;
        if (std::distance(place.begin(), place.end()) > deepestPath) refuse("lies too deep");
        auto const type = archive_entry_filetype(entry);
        if (type != AE_IFREG && type != AE_IFDIR) refuse("is neither a file nor a folder");
        if (archive_entry_is_encrypted(entry)) refuse("is encrypted");
        auto const top = place.begin()->string();
        if (top_.empty()) top_ = top;
        if (top != top_ || fs::path(top).extension() != ProjectPackage::directoryExtension)
            fail(Kind::notAProject, "it does not hold one project and nothing else");
        return place;
    }

    void unpack(archive_entry* entry) {
        auto const place = placeOf(entry);
        if (!place) return;
        bool const isFolder = archive_entry_filetype(entry) == AE_IFDIR;
        auto const target = work_.path() / *place;
        std::error_code code;
        // The work folder is new and nothing in it is a link, so no name below it leads elsewhere.
        fs::create_directories(isFolder ? target : target.parent_path(), code);
        if (code) failWith(code.value(), target);
        if (!isFolder) writeFile(target);
    }

    void writeFile(fs::path const& target) {
        auto const file = FileDescriptor::open(target, FileDescriptor::Opening::newFile, ownerWrites);
        if (!file.isOpen() && errno == EEXIST)
            fail(Kind::unsafe, fmt::format("it has “{}” twice", target.filename().string()));
        if (!file.isOpen()) failWith(errno, target);
        void const* bytes = nullptr;
        std::size_t count = 0;
        la_int64_t at = 0;
        for (int code; (code = archive_read_data_block(reader_.get(), &bytes, &count, &at)) != ARCHIVE_EOF;) {
            // A warning about data is a checksum or a length that does not fit: the file is damaged.
            if (code < ARCHIVE_OK) fail(Kind::cannotUnpack, problemOf(reader_.get()));
            written_ += count;
            if (written_ > allowedBytes_) fail(Kind::unsafe, "it unfolds to far more than a project of its size would");
            if (int const failure = file.write({static_cast<std::byte const*>(bytes), count}))
                failWith(failure, target);
            report();
        }
        if (int const failure = file.sync()) failWith(failure, target);
    }

    void report() {
        progress_.bytesDone =
            static_cast<std::uint64_t>(std::max<la_int64_t>(archive_filter_bytes(reader_.get(), -1), 0));
        if (written_ >= nextReport_) {
            nextReport_ = written_ + (1 << 20);
            if (!proceed_(progress_)) fail(Kind::cancelled, "it was cancelled");
        }
    }

    fs::path moveIntoPlace() const {
        auto const stem = fs::path(top_).stem().string();
        auto target = folder_ / top_;
        std::error_code ignored; // disks without permissions
        fs::permissions(work_.path() / top_, fs::perms::owner_all, ignored);
        try {
            for (int number = 2; !moveUnlessTaken(work_.path() / top_, target); ++number)
                target = folder_ / fmt::format("{} {}{}", stem, number, ProjectPackage::directoryExtension);
        } catch (FileError const& error) {
            failWith(error.errorNumber, target);
        }
        FileDescriptor::syncFolderOf(target);
        return target;
    }

    fs::path const archive_;
    fs::path const folder_;
    ArchiveWatch proceed_;
    ArchiveReader reader_;
    HiddenFolder work_;
    ArchiveProgress progress_;
    std::string top_; // the project's folder
    std::size_t entries_ = 0;
    std::uint64_t written_ = 0;
    std::uint64_t allowedBytes_ = 0;
    std::uint64_t nextReport_ = 0;
};

/// What was typed also leaves an older document here.
std::optional<std::string> documentProblem(ProjectPackage const& package) {
    try {
        package.load();
        return std::nullopt;
    } catch (JSONError const& error) {
        return fmt::format("The document of “{}” is damaged: {}.", package.url().string(), error.what());
    } catch (FileError const& error) {
        return error.what();
    }
}

}

UnpackedProject unpackProject(fs::path const& archive, fs::path const& folder, ArchiveWatch proceed) {
    UTF8Names const names;
    auto package = Unpacking(archive, folder, proceed).run();
    auto problem = documentProblem(ProjectPackage(package));
    return {std::move(package), std::move(problem)};
}

}
