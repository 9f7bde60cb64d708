#include <Tavaro/Model/Project/DuplicatedProject.h>

#include <Tavaro/Model/Project/StoredProject.h>

#include <TavaroCore/Export/ExportFile.h>
#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/PendingFile.h>
#include <TavaroCore/Package/PendingPackage.h>

#include <fmt/format.h>

#include <set>
#include <utility>
#include <vector>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

/// What is copied of a package: all but its documents, of which the copy gets its own.
struct Contents {
    std::vector<fs::path> entries; // relative to the package, folders before what is in them
    std::uint64_t bytes = 0;
};

Contents contentsOf(ProjectPackage const& package) {
    std::set<fs::path> const left{package.projectFileURL(), package.backupFileURL(), package.damagedFileURL()};
    Contents contents;
    std::error_code code;
    for (fs::recursive_directory_iterator entry(package.url(), code), end; !code && entry != end;
         entry.increment(code)) {
        auto const name = entry->path().filename().string();
        if (left.contains(entry->path()) || PendingFile::isPendingName(name)) continue;
        contents.entries.push_back(entry->path().lexically_relative(package.url()));
        std::error_code none;
        if (entry->is_regular_file(none)) contents.bytes += entry->file_size(none);
    }
    if (code) throw FileError::reading(package.url(), code.value());
    return contents;
}

class Copying {
public:
    Copying(fs::path from, fs::path to, JobReporter<CopyProgress>& reporter)
        : from_(std::move(from))
        , to_(std::move(to))
        , reporter_(reporter) {}

    void run(Contents const& contents) {
        progress_.bytesTotal = contents.bytes;
        for (auto const& entry : contents.entries) copy(entry);
    }

private:
    void copy(fs::path const& entry) {
        auto const from = from_ / entry, to = to_ / entry;
        std::error_code code;
        auto const kind = fs::symlink_status(from).type();
        if (kind == fs::file_type::directory) fs::create_directories(to, code);
        if (kind == fs::file_type::symlink) fs::copy_symlink(from, to, code);
        if (code) throw FileError::writing(to, code.value());
        if (kind == fs::file_type::regular) copyFile(from, to);
    }
    void copyFile(fs::path const& from, fs::path const& to) {
        auto const before = progress_.bytesDone;
        PendingFile file(to);
        file.copy(from, [&](std::uint64_t copied) {
            progress_.bytesDone = before + copied;
            reporter_.progress(progress_);
            return !reporter_.isCancelled();
        });
        file.commit(PendingFile::FolderFlush::withNext);
        std::error_code none;
        progress_.bytesDone = before + fs::file_size(from, none);
        reporter_.progress(progress_);
    }

    fs::path const from_, to_;
    JobReporter<CopyProgress>& reporter_;
    CopyProgress progress_;
};

fs::path duplicate(fs::path const& given, JobReporter<CopyProgress>& reporter) {
    constexpr char const* cancelled = "The project was not duplicated.";
    auto [package, project] = openProject(given);
    auto const name = (project.name.empty() ? package.url().stem().string() : project.name) + " copy";
    auto const stem = fileNamePart(name);
    auto const to = unusedFile(package.url().parent_path() / (stem + std::string(ProjectPackage::directoryExtension)));
    PendingPackage pending{ProjectPackage(to)};
    pending.package().createDirectories();
    try {
        Copying(package.url(), pending.package().url(), reporter).run(contentsOf(package));
        project.id = UUID::random();
        project.name = to.stem() == stem ? name : to.stem().string();
        pending.package().save(project);
    } catch (FileError const& failure) {
        reporter.stopIfCancelled(cancelled);
        throw pending.named(failure);
    }
    reporter.stopIfCancelled(cancelled);
    pending.complete();
    return to;
}

}

Job<fs::path, CopyProgress> duplicationJob(MainQueue& queue, fs::path package) {
    return {queue, "com.tavaro.job.duplicate", [package = std::move(package)](JobReporter<CopyProgress>& reporter) {
                return duplicate(package, reporter);
            }};
}

}
