#include <TavaroPlatform/Archive/ProjectArchive.h>

#include <TavaroPlatform/Archive/Private/LibArchive.h>

#include <TavaroCore/Package/ProjectPackage.h>

#include <algorithm>
#include <cerrno>
#include <fcntl.h>
#include <fmt/format.h>
#include <optional>
#include <set>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

// Documents deflate to a tenth, media hardly at all; what unfolds further was made to fill a disk.
constexpr std::uint64_t largestGrowth = 100;
constexpr std::uint64_t alwaysAllowedBytes = std::uint64_t{64} << 20;
constexpr std::size_t mostEntries = 20'000;
constexpr std::ptrdiff_t deepestPath = 16;

using Kind = ArchiveError::Kind;

/// A folder beside the final place, removed again with all it holds.
class WorkFolder {
public:
    WorkFolder(fs::path const& folder, auto const& failed) {
        std::error_code code;
        fs::create_directories(folder, code);
        auto pattern = (folder / ".unpacking-XXXXXX").string();
        if (code || !mkdtemp(pattern.data())) failed(code ? code.value() : errno, folder);
        path = pattern;
    }
    ~WorkFolder() {
        std::error_code ignored;
        fs::remove_all(path, ignored);
    }
    WorkFolder(WorkFolder const&) = delete;
    WorkFolder& operator=(WorkFolder const&) = delete;

    fs::path path;
};

class Unpacking {
public:
    Unpacking(fs::path const& archive, fs::path const& folder, ArchiveWatch proceed)
        : archive_(archive)
        , folder_(folder)
        , proceed_(proceed)
        , reader_(archive_read_new())
        , work_(folder, [&](int code, fs::path const& file) { failWith(code, file); }) {
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
        if (top_.empty() || !fs::is_regular_file(fs::symlink_status(work_.path / top_ / "project.json")))
            fail(Kind::notAProject, "it holds no project");
        return moveIntoPlace();
    }

private:
    [[noreturn]] void fail(Kind kind, std::string const& problem) const {
        throw ArchiveError(kind, fmt::format("Couldn't unpack “{}”: {}.", archive_.string(), problem));
    }
    [[noreturn]] void failWith(int code, fs::path const& file) const {
        fail(code == ENOSPC || code == EDQUOT ? Kind::diskFull : Kind::cannotUnpack,
             fmt::format("{}: {}", file.string(), std::system_category().message(code)));
    }

    void open() {
        struct stat about {};
        if (stat(archive_.c_str(), &about) != 0) failWith(errno, archive_);
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
        auto const refuse = [&](char const* why) { fail(Kind::unsafe, fmt::format("its entry “{}” {}", name, why)); };
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
        auto const target = work_.path / *place;
        std::error_code code;
        // The work folder is new and nothing in it is a link, so no name below it leads elsewhere.
        fs::create_directories(isFolder ? target : target.parent_path(), code);
        if (code) failWith(code.value(), target);
        if (!isFolder) writeFile(target);
    }

    void writeFile(fs::path const& target) {
        int const descriptor = ::open(target.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0644);
        if (descriptor < 0) {
            if (errno == EEXIST) fail(Kind::unsafe, fmt::format("it has “{}” twice", target.filename().string()));
            failWith(errno, target);
        }
        struct Closing {
            int descriptor;
            ~Closing() { close(descriptor); }
        } const closing{descriptor};
        void const* bytes = nullptr;
        std::size_t count = 0;
        la_int64_t at = 0;
        for (int code; (code = archive_read_data_block(reader_.get(), &bytes, &count, &at)) != ARCHIVE_EOF;) {
            // A warning about data is a checksum or a length that does not fit: the file is damaged.
            if (code < ARCHIVE_OK) fail(Kind::cannotUnpack, problemOf(reader_.get()));
            writeAll(descriptor, static_cast<char const*>(bytes), count, target);
        }
        if (fsync(descriptor) != 0) failWith(errno, target);
    }

    void writeAll(int descriptor, char const* bytes, std::size_t count, fs::path const& target) {
        written_ += count;
        if (written_ > allowedBytes_) fail(Kind::unsafe, "it unfolds to far more than a project of its size would");
        while (count > 0) {
            auto const wrote = write(descriptor, bytes, count);
            if (wrote < 0 && errno == EINTR) continue;
            if (wrote < 0) failWith(errno, target);
            bytes += wrote;
            count -= static_cast<std::size_t>(wrote);
        }
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
        for (int number = 2; fs::exists(fs::symlink_status(target)); ++number)
            target = folder_ / fmt::format("{} {}{}", stem, number, ProjectPackage::directoryExtension);
        std::error_code code;
        fs::rename(work_.path / top_, target, code);
        if (code) failWith(code.value(), target);
        return target;
    }

    fs::path const archive_;
    fs::path const folder_;
    ArchiveWatch proceed_;
    ArchiveReader reader_;
    WorkFolder work_;
    ArchiveProgress progress_;
    std::string top_; // the project's folder
    std::size_t entries_ = 0;
    std::uint64_t written_ = 0;
    std::uint64_t allowedBytes_ = 0;
    std::uint64_t nextReport_ = 0;
};

}

fs::path unpackProject(fs::path const& archive, fs::path const& folder, ArchiveWatch proceed) {
    UTF8Names const names;
    return Unpacking(archive, folder, proceed).run();
}

}
