#pragma once

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Records/FunctionRef.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// A project as one zip file, for sharing. The package's folder is the only thing at the top of the archive.
namespace tavaro {

class ProjectPackage;

class ArchiveError : public Error {
public:
    enum class Kind {
        cannotPackage,
        leadsOutside,    // a link of the package, to what is not in it
        damagedDocument, // so that what was typed cannot be taken out
        nameTaken,
        cannotUnpack,
        notThere,
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

/// Where a project is packed to, and what of it.
struct PackingRequest {
    enum class IfTaken { addNumber, refuse, replace };
    enum class Links { insideOnly, followed };
    enum class TypedText { masked, kept };

    std::filesystem::path file;
    IfTaken ifTaken = IfTaken::addNumber;
    Links links = Links::insideOnly;
    /// Masked: the keys of plain typing read "•" in every log of the package, their times and shortcuts stay.
    TypedText typedText = TypedText::masked;
};

struct PackedProject {
    std::filesystem::path file;
    std::vector<std::string> remarks; // sentences on what of the package is not in it
};

/// Packs the whole package into a zip file, which appears only when complete. Media is stored as it is, the rest
/// deflated; any size. Links are packed as what they lead to, those that lead out of the package only when asked for.
/// Throws `ArchiveError`, "Couldn't package the project: …".
PackedProject archiveProject(ProjectPackage const& package, PackingRequest const& request, ArchiveWatch proceed);

struct UnpackedProject {
    std::filesystem::path package;
    std::optional<std::string> problem; // with its document, as a sentence
};

/// Unpacks an archive into `folder`, under the project's own name or with a number added where that is taken. It
/// appears only when complete, for its owner only. Nothing is written outside of it, whatever the archive says: entries
/// with absolute or climbing names, links and special files are refused, and so is an archive that unfolds to far more
/// than media and documents do. A project whose document is damaged is unpacked all the same, for its media and its
/// previous save. Throws `ArchiveError`, "Couldn't unpack “…”: …".
UnpackedProject unpackProject(std::filesystem::path const& archive, std::filesystem::path const& folder,
                              ArchiveWatch proceed);

}
