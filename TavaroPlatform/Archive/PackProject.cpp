#include <TavaroPlatform/Archive/ProjectArchive.h>

#include <TavaroPlatform/Archive/Private/LibArchive.h>
#include <TavaroPlatform/Archive/Private/PackageContents.h>
#include <TavaroPlatform/Archive/Private/PackagingFailure.h>
#include <TavaroPlatform/Archive/Private/SharedText.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/PendingFile.h>
#include <TavaroCore/Package/ProjectPackage.h>

#include <algorithm>
#include <array>
#include <span>
#include <system_error>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

using IfTaken = PackingRequest::IfTaken;

constexpr std::size_t pieceBytes = 1 << 20;
constexpr auto ownerWrites = fs::perms(0644);

/// Runs a step of writing the archive, and puts the file's failure into this library's words.
auto writing(fs::path const& file, auto step) {
    try {
        return step();
    } catch (FileError const& error) {
        failPackaging(file, error.errorNumber);
    }
}

[[noreturn]] void failTaken(fs::path const& file) {
    failPackaging(fmt::format("something with the name “{}” exists already", file.string()),
                  ArchiveError::Kind::nameTaken);
}

fs::path firstName(PackingRequest const& request) {
    if (request.ifTaken == IfTaken::addNumber) return unusedFile(request.file);
    std::error_code ignored;
    if (request.ifTaken == IfTaken::refuse && fs::exists(fs::symlink_status(request.file, ignored)))
        failTaken(request.file);
    return request.file;
}

/// The archive while it is written.
class Output {
public:
    explicit Output(PackingRequest const& request)
        : request_(request)
        , file_(writing(request.file, [&] { return PendingFile(firstName(request), ownerWrites); })) {}

    void openIn(archive* writer) {
        archive_write_set_bytes_in_last_block(writer, 1); // no padding
        if (archive_write_open(writer, this, nullptr, &Output::writeSome, nullptr) != ARCHIVE_OK)
            failPackaging(problemOf(writer));
    }
    /// Why writing stopped; 0 when it did not.
    int failure() const { return failure_; }
    fs::path const& path() const { return request_.file; }

    /// Others may have taken the name while it was written.
    fs::path keep() {
        return writing(path(), [&] {
            if (request_.ifTaken == IfTaken::addNumber) return commitUnderUnusedName(file_, request_.file);
            if (request_.ifTaken == IfTaken::replace)
                file_.commit();
            else if (!file_.commitUnlessTaken())
                failTaken(request_.file);
            return request_.file;
        });
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

    PackingRequest const& request_;
    PendingFile file_;
    int failure_ = 0;
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

bool isFolder(PackageItem const& item) { return S_ISDIR(item.about.st_mode); }

std::uint64_t bytesOf(PackageItem const& item) {
    return isFolder(item) ? 0 : static_cast<std::uint64_t>(item.about.st_size);
}

std::uint64_t bytesOf(std::vector<PackageItem> const& items) {
    std::uint64_t sum = 0;
    for (auto const& item : items) sum += bytesOf(item);
    return sum;
}

/// Writes items one after another.
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

    void addFolder(PackageItem const& item) {
        writeHeader(item, 0);
        check(archive_write_finish_entry(writer_.get()));
    }

    void addFile(PackageItem const& item) {
        writeHeader(item, bytesOf(item));
        copyContent(item);
        check(archive_write_finish_entry(writer_.get()));
    }

    void addText(PackageItem const& item, std::string_view text) {
        writeHeader(item, text.size());
        for (std::size_t at = 0; at < text.size(); at += pieceBytes) writeData(text.substr(at, pieceBytes));
        check(archive_write_finish_entry(writer_.get()));
        report(bytesOf(item));
    }

    void finish() { check(archive_write_close(writer_.get())); }

private:
    /// A warning is no failure: the entry is there.
    void check(int code) const {
        if (code >= ARCHIVE_WARN) return;
        if (output_.failure()) failPackaging(output_.path(), output_.failure());
        failPackaging(problemOf(writer_.get()));
    }

    void writeHeader(PackageItem const& item, std::uint64_t bytes) {
        if (!isFolder(item) && isCompressed(item.name))
            check(archive_write_zip_set_compression_store(writer_.get()));
        else
            check(archive_write_zip_set_compression_deflate(writer_.get()));
        ArchiveEntry const entry(archive_entry_new());
        archive_entry_set_pathname(entry.get(), item.name.c_str());
        archive_entry_set_filetype(entry.get(), isFolder(item) ? AE_IFDIR : AE_IFREG);
        archive_entry_set_perm(entry.get(), isFolder(item) ? 0755 : 0644);
        archive_entry_set_mtime(entry.get(), item.about.st_mtim.tv_sec, 0);
        if (!isFolder(item)) archive_entry_set_size(entry.get(), static_cast<la_int64_t>(bytes));
        check(archive_write_header(writer_.get(), entry.get()));
    }

    void writeData(std::string_view bytes) {
        check(static_cast<int>(
            std::min<la_ssize_t>(archive_write_data(writer_.get(), bytes.data(), bytes.size()), ARCHIVE_OK)));
    }

    FileDescriptor opened(PackageItem const& item) const {
        auto file = FileDescriptor::open(item.path, FileDescriptor::Opening::reading);
        if (!file.isOpen()) failPackaging(item.path, errno);
        struct stat now {};
        if (fstat(file.get(), &now) != 0) failPackaging(item.path, errno);
        // What was looked at may be a link to elsewhere by now.
        if (now.st_dev != item.about.st_dev || now.st_ino != item.about.st_ino) failChanged(item);
        return file;
    }

    [[noreturn]] static void failChanged(PackageItem const& item) {
        failPackaging(fmt::format("“{}” changed while it was packed", item.path.filename().string()));
    }

    void copyContent(PackageItem const& item) {
        auto const file = opened(item);
        for (auto left = bytesOf(item); left > 0;) {
            auto const piece = std::span(piece_).first(std::min<std::uint64_t>(left, piece_.size()));
            auto const got = file.read(std::as_writable_bytes(piece));
            if (got < 0) failPackaging(item.path, static_cast<int>(-got));
            if (got == 0) failChanged(item);
            writeData({piece.data(), static_cast<std::size_t>(got)});
            left -= static_cast<std::uint64_t>(got);
            report(static_cast<std::uint64_t>(got));
        }
    }

    void report(std::uint64_t bytes) {
        progress_.bytesDone += bytes;
        if (!proceed_(progress_)) failPackaging("it was cancelled", ArchiveError::Kind::cancelled);
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

fs::path folderOf(ProjectPackage const& package) {
    auto folder = package.url().has_filename() ? package.url() : package.url().parent_path();
    std::error_code code;
    bool const isProject = fs::exists(package.projectFileURL(), code);
    if (code) failPackaging(package.projectFileURL(), code.value());
    if (!isProject) failPackaging(fmt::format("“{}” is no project", folder.string()));
    return folder;
}

/// Before gigabytes are written for nothing.
void expectMaskable(ProjectPackage const& package) {
    if (auto const problem = SharedText(package.projectFileURL()).problem())
        failPackaging(
            fmt::format("its document is damaged ({}), so that what was typed cannot be taken out of it", *problem),
            ArchiveError::Kind::damagedDocument);
}

void addMasked(Packing& packing, PackageItem const& item, std::vector<std::string>& remarks) {
    SharedText const text(item.path);
    if (!text.problem()) return packing.addText(item, text.bytes());
    remarks.push_back(fmt::format("“{}” was left out: it is damaged ({}), so that what was typed cannot be taken out "
                                  "of it.",
                                  fs::path(item.name).filename().string(), *text.problem()));
}

}

PackedProject archiveProject(ProjectPackage const& package, PackingRequest const& request, ArchiveWatch proceed) {
    auto const folder = folderOf(package);
    if (liesInside(request.file, folder)) failPackaging("the archive cannot lie inside the project");
    bool const isMasked = request.typedText == PackingRequest::TypedText::masked;
    auto contents = contentsOf(folder, request.links);
    if (isMasked) expectMaskable(package);
    UTF8Names const names;
    Output output(request);
    {
        Packing packing(output, proceed, bytesOf(contents.items));
        for (auto const& item : contents.items) {
            if (isFolder(item))
                packing.addFolder(item);
            else if (isMasked && couldBeLog(item))
                addMasked(packing, item, contents.remarks);
            else
                packing.addFile(item);
        }
        packing.finish();
    }
    return {output.keep(), std::move(contents.remarks)};
}

}
