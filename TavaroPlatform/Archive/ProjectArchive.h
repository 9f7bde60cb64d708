#pragma once

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Records/FunctionRef.h>

#include <cstdint>
#include <filesystem>

/// A project as one zip file, for sharing. The package's folder is the only thing at the top of the archive.
namespace tavaro {

class ProjectPackage;

class ArchiveError : public Error {
public:
    enum class Kind {
        cannotPackage,
        cannotUnpack,
        notAProject, // a sound archive, but not of one project
        unsafe,      // names or kinds of entries that would reach outside, or far more data than the archive's size
        diskFull,
        cancelled
    };
    ArchiveError(Kind kind, std::string const& sentence) : Error(sentence), kind(kind) {}
    Kind const kind;
};

struct ArchiveProgress {
    std::uint64_t bytesDone = 0;
    std::uint64_t bytesTotal = 0;
};

/// Called about once a mebibyte; false cancels.
using ArchiveWatch = FunctionRef<bool(ArchiveProgress const&)>;

/// Packs the whole package into the zip file `to`, which appears only when complete and replaces what was there.
/// Media is stored as it is, the rest deflated; any size. Throws `ArchiveError`, "Couldn't package the project: …".
void archiveProject(ProjectPackage const& package, std::filesystem::path const& to, ArchiveWatch proceed);

/// Unpacks an archive into `folder`, under the project's own name or with a number added where that is taken, and
/// returns the package's path. It appears only when complete. Nothing is written outside of it, whatever the archive
/// says: entries with absolute or climbing names, links and special files are refused, and so is an archive that
/// unfolds to far more than media and documents do. Throws `ArchiveError`, "Couldn't unpack “…”: …".
std::filesystem::path unpackProject(std::filesystem::path const& archive, std::filesystem::path const& folder,
                                    ArchiveWatch proceed);

}
