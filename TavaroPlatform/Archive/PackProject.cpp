#include <TavaroPlatform/Archive/ProjectArchive.h>

#include <TavaroPlatform/Archive/Private/LibArchive.h>

#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/PendingFile.h>
#include <TavaroCore/Package/ProjectPackage.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <fmt/format.h>
#include <span>
#include <sys/stat.h>
#include <system_error>
#include <vector>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

constexpr std::size_t pieceBytes = 1 << 20;
constexpr auto ownerWrites = fs::perms(0644);

[[noreturn]] void fail(std::string const& problem, int code = 0) {
    auto const kind =
        code == ENOSPC || code == EDQUOT ? ArchiveError::Kind::diskFull : ArchiveError::Kind::cannotPackage;
    throw ArchiveError(kind, fmt::format("Couldn't package the project: {}", problem));
}

[[noreturn]] void failWith(int code, fs::path const& file) {
    fail(fmt::format("{}: {}", file.string(), std::system_category().message(code)), code);
}

/// Runs a step of writing the archive, and puts the file's failure into this library's words.
auto writing(fs::path const& file, auto step) {
    try {
        return step();
    } catch (FileError const& error) {
        failWith(error.errorNumber, file);
    }
}

/// The archive while it is written.
class Output {
public:
    explicit Output(fs::path const& to) : file_(writing(to, [&] { return PendingFile(to, ownerWrites); })) {}

    void openIn(archive* writer) {
        archive_write_set_bytes_in_last_block(writer, 1); // no padding
        if (archive_write_open(writer, this, nullptr, &Output::writeSome, nullptr) != ARCHIVE_OK)
            fail(problemOf(writer));
    }
    /// Why writing stopped; 0 when it did not.
    int failure() const { return failure_; }
    fs::path const& path() const { return file_.file(); }

    void keep() {
        writing(path(), [&] { file_.commit(); });
    }

private:
    static la_ssize_t writeSome(archive* writer, void* self, void const* bytes, std::size_t count) {
        auto& output = *static_cast<Output*>(self);
        int const failure = output.file_.write({static_cast<std::byte const*>(bytes), count});
        if (failure == 0) return static_cast<la_ssize_t>(count);
        output.failure_ = failure;
        archive_set_error(writer, failure, "%s", "the archive could not be written");
        return -1;
    }

    PendingFile file_;
    int failure_ = 0;
};

struct Item {
    fs::path path;
    std::string name; // in the archive
    struct stat about;
};

/// Media is compressed already; deflating it would cost minutes and save nothing.
bool isCompressed(fs::path const& file) {
    constexpr std::array<std::string_view, 17> endings{".mp4",  ".mov", ".m4v",  ".m4a",  ".mkv",  ".webm",
                                                       ".mp3",  ".aac", ".flac", ".ogg",  ".opus", ".png",
                                                       ".jpeg", ".jpg", ".gif",  ".webp", ".zip"};
    auto ending = file.extension().string();
    for (auto& c : ending) c = c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
    return std::find(endings.begin(), endings.end(), ending) != endings.end();
}

/// What a save under way, or one that was killed, has beside the documents; earlier versions called it after them.
bool isHalfWritten(fs::path const& file) {
    constexpr std::array<std::string_view, 3> formerNames{"project.json.tmp", "project.previous.json.tmp",
                                                          "editor.json.tmp"};
    auto const name = file.filename().string();
    return PendingFile::isPendingName(name) || std::ranges::find(formerNames, name) != formerNames.end();
}

/// Folders and files of the package, each folder before what it holds. Links to files count as the files; half-written
/// files do not count.
std::vector<Item> itemsOf(fs::path const& package) {
    std::vector<Item> items;
    auto const add = [&](fs::path const& path, std::string name) {
        Item item{path, std::move(name), {}};
        if (stat(path.c_str(), &item.about) != 0) failWith(errno, path);
        items.push_back(std::move(item));
    };
    auto const top = package.filename().string();
    add(package, top);
    std::error_code code;
    fs::recursive_directory_iterator entry(package, code), end;
    for (; !code && entry != end; entry.increment(code)) {
        std::error_code gone;
        bool const isFolder = entry->is_directory(gone) && !entry->is_symlink(gone);
        bool const isFile = entry->is_regular_file(gone) && !isHalfWritten(entry->path());
        if (isFolder || isFile) add(entry->path(), top + "/" + entry->path().lexically_relative(package).string());
    }
    if (code) fail(fmt::format("{}: {}", package.string(), code.message()));
    std::sort(items.begin(), items.end(), [](Item const& a, Item const& b) { return a.name < b.name; });
    return items;
}

class Packing {
public:
    Packing(Output& output, ArchiveWatch proceed, std::uint64_t total)
        : output_(output)
        , writer_(archive_write_new())
        , proceed_(proceed)
        , progress_{0, total}
        , piece_(pieceBytes) {
        if (!writer_) throw std::bad_alloc();
        check(archive_write_set_format_zip(writer_.get()));
        output_.openIn(writer_.get());
    }

    void add(Item const& item) {
        bool const isFolder = S_ISDIR(item.about.st_mode);
        if (!isFolder && isCompressed(item.path))
            check(archive_write_zip_set_compression_store(writer_.get()));
        else
            check(archive_write_zip_set_compression_deflate(writer_.get()));
        ArchiveEntry const entry(archive_entry_new());
        archive_entry_set_pathname(entry.get(), item.name.c_str());
        archive_entry_set_filetype(entry.get(), isFolder ? AE_IFDIR : AE_IFREG);
        archive_entry_set_perm(entry.get(), isFolder ? 0755 : 0644);
        archive_entry_set_mtime(entry.get(), item.about.st_mtim.tv_sec, 0);
        if (!isFolder) archive_entry_set_size(entry.get(), item.about.st_size);
        check(archive_write_header(writer_.get(), entry.get()));
        if (!isFolder) addContent(item);
        check(archive_write_finish_entry(writer_.get()));
    }

    void finish() { check(archive_write_close(writer_.get())); }

private:
    /// A warning is no failure: the entry is there.
    void check(int code) const {
        if (code >= ARCHIVE_WARN) return;
        if (output_.failure()) failWith(output_.failure(), output_.path());
        fail(problemOf(writer_.get()));
    }

    void addContent(Item const& item) {
        auto const file = FileDescriptor::open(item.path, FileDescriptor::Opening::reading);
        if (!file.isOpen()) failWith(errno, item.path);
        auto left = static_cast<std::uint64_t>(item.about.st_size);
        while (left > 0) {
            auto const piece = std::span(piece_).first(std::min<std::uint64_t>(left, piece_.size()));
            auto const got = file.read(std::as_writable_bytes(piece));
            if (got < 0) failWith(static_cast<int>(-got), item.path);
            if (got == 0) fail(fmt::format("“{}” changed while it was packed", item.path.filename().string()));
            check(static_cast<int>(std::min<la_ssize_t>(
                archive_write_data(writer_.get(), piece_.data(), static_cast<std::size_t>(got)), ARCHIVE_OK)));
            left -= static_cast<std::uint64_t>(got);
            progress_.bytesDone += static_cast<std::uint64_t>(got);
            if (!proceed_(progress_))
                throw ArchiveError(ArchiveError::Kind::cancelled, "Couldn't package the project: it was cancelled");
        }
    }

    Output& output_;
    ArchiveWriter writer_;
    ArchiveWatch proceed_;
    ArchiveProgress progress_;
    std::vector<char> piece_;
};

bool liesInside(fs::path const& file, fs::path const& folder) {
    std::error_code code;
    auto const inside = fs::weakly_canonical(file, code).lexically_relative(fs::weakly_canonical(folder, code));
    return !inside.empty() && *inside.begin() != "..";
}

}

void archiveProject(ProjectPackage const& package, fs::path const& to, ArchiveWatch proceed) {
    auto const folder = package.url().has_filename() ? package.url() : package.url().parent_path();
    if (!fs::exists(package.projectFileURL())) fail(fmt::format("“{}” is no project", folder.string()));
    if (liesInside(to, folder)) fail("the archive cannot lie inside the project");
    UTF8Names const names;
    auto const items = itemsOf(folder);
    std::uint64_t total = 0;
    for (auto const& item : items)
        total += S_ISREG(item.about.st_mode) ? static_cast<std::uint64_t>(item.about.st_size) : 0;
    Output output(to);
    {
        Packing packing(output, proceed, total);
        for (auto const& item : items) packing.add(item);
        packing.finish();
    }
    output.keep();
}

}
