#include <TavaroCore/Package/ProjectPackage.h>

#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Files/FileBytes.h>
#include <TavaroCore/Files/MoveUnlessTaken.h>
#include <TavaroCore/Files/PendingFile.h>
#include <TavaroCore/Files/PlainFile.h>
#include <TavaroCore/Package/EditorState.h>
#include <TavaroCore/Package/Private/DocumentText.h>
#include <TavaroCore/Package/TypedText.h>
#include <TavaroCore/Project/DemoProject.h>
#include <TavaroCore/Recording/MaskedTyping.h>
#include <TavaroCore/Records/JSONError.h>

#include <fmt/format.h>
#include <optional>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

/// The document as it is saved today; one that cannot be read loses the text alone.
std::string withoutFormerText(std::string_view document) {
    try {
        return encodeProject(decodeProject(document));
    } catch (JSONError const&) {
        return withoutFormerTypedText(document).value_or(std::string(document));
    }
}

/// Without a backup, which would keep the very text that has to go.
void removeFormerTypedText(fs::path const& file) {
    auto const document = FileBytes::read(file);
    if (document && holdsFormerTypedText(document->bytes()))
        writeFileAtomically(file, withoutFormerText(document->bytes()));
}

[[noreturn]] void failImporting(fs::path const& from, std::string const& reason,
                                FileError::Kind kind = FileError::Kind::cannotWrite) {
    throw FileError(kind, fmt::format("Could not bring “{}” into the project: {}.", from.string(), reason));
}

/// "take.mov", or "take 2.mov" and so on when that is taken.
std::string freeName(fs::path const& folder, std::string const& wanted) {
    auto const isTaken = [&](std::string const& name) { return fs::exists(fs::symlink_status(folder / name)); };
    auto candidate = wanted;
    fs::path const name(wanted);
    for (int number = 2; isTaken(candidate); ++number) {
        candidate = fmt::format("{} {}{}", name.stem().string(), number, name.extension().string());
    }
    return candidate;
}

/// Brings the file into the folder and returns its name there, also when somebody else takes that name meanwhile.
template<class Place> std::string placedUnderFreeName(fs::path const& folder, std::string const& wanted, Place place) {
    while (true) {
        auto const name = freeName(folder, wanted);
        if (place(folder / name)) return name;
    }
}

PendingFile copied(fs::path const& from, fs::path const& to, FileDescriptor::CopyWatch const& proceed) {
    PendingFile copy(to, fs::status(from).permissions());
    copy.copy(from, proceed);
    return copy;
}

/// Where the file is to go.
struct Wanted {
    fs::path folder;
    std::string name;
};

std::string broughtInto(Wanted const& wanted, fs::path const& from, ImportMode mode,
                        FileDescriptor::CopyWatch const& proceed) {
    auto const& [folder, name] = wanted;
    try {
        auto const to = folder / freeName(folder, name);
        auto asset = mode == ImportMode::link ? PendingFile::twin(from, to) : copied(from, to, proceed);
        return placedUnderFreeName(folder, name, [&](fs::path const& to) { return asset.commitUnlessTaken(to); });
    } catch (FileError const& error) {
        bool const isFull = error.kind == FileError::Kind::diskFull;
        failImporting(from, systemReason(error.errorNumber), isFull ? error.kind : FileError::Kind::cannotWrite);
    }
}

/// None where it lies on another disk, or for another reason cannot be moved.
std::optional<std::string> movedInto(fs::path const& folder, fs::path const& from, std::string const& wanted) {
    try {
        return placedUnderFreeName(folder, wanted, [&](fs::path const& to) { return moveUnlessTaken(from, to); });
    } catch (FileError const&) {
        return std::nullopt;
    }
}

/// The document of that file, where it or the other one masks typing; else it need not be read.
std::optional<DemoProject> documentWithMasks(fs::path const& file, DemoProject const& other) {
    auto const present = FileBytes::read(file);
    if (!present) return std::nullopt;
    bool const mayMask = present->bytes().find(maskedKey) != std::string_view::npos || masksTyping(*other.metadata);
    if (!mayMask) return std::nullopt;
    try {
        return decodeProject(present->bytes());
    } catch (JSONError const&) {
        return std::nullopt;
    }
}

SavedDocument saveWhole(ProjectPackage const& package, DemoProject const& project) {
    DocumentText document(project);
    // Stamps are of the very file that was read or written: another program may have put its own there meanwhile.
    auto stamp = stampOf(package.projectFileURL());
    if (auto const present = FileBytes::read(package.projectFileURL())) {
        if (document.is(present->bytes())) return document.saved(stamp.value_or(FileStamp{}));
        if (holdsFormerTypedText(present->bytes())) removeFormerTypedText(package.projectFileURL());
    }
    replaceFileKeepingBackup(package.projectFileURL(), package.backupFileURL(), [&](PendingFile& file) {
        document.appendTo(file);
        stamp = stampOf(file.descriptor());
        return true;
    });
    return document.saved(stamp.value_or(FileStamp{}));
}

}

struct ProjectPackage::Reading {
    DemoProject project;
    bool holdsTypedText = false;
};

std::string ProjectPackage::confinedAssetName(std::string_view name) {
    auto const lastSlash = name.rfind('/');
    auto const last = lastSlash == std::string_view::npos ? name : name.substr(lastSlash + 1);
    bool const isName = !last.empty() && last != "." && last != ".." && last.find('\0') == std::string_view::npos;
    return isName ? std::string(last) : "_invalid-asset";
}

void ProjectPackage::createDirectories() const {
    std::error_code code;
    fs::create_directories(assetsURL(), code);
    if (code) {
        throw FileError(FileError::Kind::cannotWrite, fmt::format("Could not create the project “{}”: {}.",
                                                                  url_.string(), systemReason(code.value())));
    }
}

/// A project without a folder for assets gets one.
fs::path ProjectPackage::folderToLock() const {
    std::error_code ignored;
    if (fs::is_directory(url_, ignored)) fs::create_directory(assetsURL(), ignored);
    return assetsURL();
}

FolderLock ProjectPackage::lockForEditing() const { return FolderLock(folderToLock()); }

std::optional<FolderLock> ProjectPackage::lockForEditingUnlessTaken() const {
    return FolderLock::unlessTaken(folderToLock());
}

SavedDocument ProjectPackage::save(DemoProject const& project, std::optional<SavedDocument> const& before) const {
    if (before && before->log == project.metadata.shared()) {
        if (auto const saved = saveWithLogOf(*before, DocumentText(project))) return *saved;
    }
    auto stored = documentWithMasks(projectFileURL(), project);
    // Nor does the backup tell it: what is replaced here is without it already.
    if (stored && tellsWhatIsMasked(*stored->metadata, *project.metadata)) {
        maskTypingAsIn(stored->metadata.edit(), *project.metadata);
        saveWhole(*this, *stored);
    }
    if (!stored || !tellsWhatIsMasked(*project.metadata, *stored->metadata)) return saveWhole(*this, project);
    auto masked = project;
    maskTypingAsIn(masked.metadata.edit(), *stored->metadata);
    return saveWhole(*this, masked);
}

/// None, with nothing done, where the present file is not that one.
std::optional<SavedDocument> ProjectPackage::saveWithLogOf(SavedDocument const& before,
                                                           DocumentText const& document) const {
    auto const present = PlainFile::open(projectFileURL(), PlainFile::anySize);
    if (!present || stampOf(present->descriptor) != before.stamp) return std::nullopt;
    if (document.isIn(present->descriptor, before)) return before;
    std::optional<FileStamp> stamp;
    bool const isDone = replaceFileKeepingBackup(projectFileURL(), backupFileURL(), [&](PendingFile& file) {
        bool const isWhole = document.appendTo(file, present->descriptor, before);
        stamp = stampOf(file.descriptor());
        return isWhole;
    });
    return isDone ? std::optional(document.saved(stamp.value_or(FileStamp{}))) : std::nullopt;
}

/// The second name takes no room, so that a full disk stops this before anything changed.
void ProjectPackage::saveOverDamaged(DemoProject const& project) const {
    std::error_code ignored;
    if (fs::exists(projectFileURL(), ignored)) PendingFile::twin(projectFileURL(), damagedFileURL()).commit();
    auto const earlier = fs::status(backupFileURL(), ignored);
    PendingFile document(projectFileURL(), fs::exists(earlier) ? earlier.permissions() : FileDescriptor::everyone);
    document.append(encodeProject(project));
    document.commit();
}

DemoProject ProjectPackage::load() const {
    auto found = read();
    if (!found.holdsTypedText && !backupHoldsFormerTypedText()) return std::move(found.project);
    auto const lock = FolderLock::ifFree(folderToLock());
    if (!lock) return std::move(found.project);
    removeTypedText();
    return read().project; // somebody may have saved before the lock was had
}

ProjectPackage::Reading ProjectPackage::read() const {
    auto const document = FileBytes::read(projectFileURL());
    if (!document) {
        throw FileError(FileError::Kind::cannotRead,
                        fmt::format("Could not open the project “{}”: it has no project.json.", url_.string()));
    }
    return {decodeProject(document->bytes()), holdsFormerTypedText(document->bytes())};
}

bool ProjectPackage::backupHoldsFormerTypedText() const {
    try {
        auto const backup = FileBytes::read(backupFileURL());
        return backup && holdsFormerTypedText(backup->bytes());
    } catch (FileError const&) {
        return false;
    }
}

void ProjectPackage::removeTypedText() const {
    for (auto const& file : {projectFileURL(), backupFileURL()}) {
        try {
            removeFormerTypedText(file);
        } catch (FileError const&) {
            // The next who opens the project tries again.
        }
    }
}

DemoProject ProjectPackage::loadBackup() const {
    auto const document = FileBytes::read(backupFileURL());
    if (!document) {
        throw FileError(FileError::Kind::cannotRead,
                        fmt::format("Could not restore the project “{}”: it has no previous save.", url_.string()));
    }
    return decodeProject(document->bytes());
}

DemoProject ProjectPackage::restoreBackup() const {
    removeTypedText();
    auto project = loadBackup();
    bool const presentIsSound = [&] {
        try {
            load();
            return true;
        } catch (Error const&) {
            return false;
        }
    }();
    if (presentIsSound)
        exchangeFiles(projectFileURL(), backupFileURL());
    else
        saveOverDamaged(project);
    return project;
}

void ProjectPackage::saveEditorState(EditorState const& state) const {
    writeFileAtomically(editorStateURL(), encodeEditorState(state));
}

EditorState ProjectPackage::loadEditorState() const {
    constexpr std::uint64_t largest = 1 << 20;
    try {
        return decodeEditorState(readWholeFile(editorStateURL(), largest).value_or("{}"));
    } catch (FileError const&) {
        return {};
    }
}

std::string ProjectPackage::importAsset(fs::path const& from, ImportMode mode,
                                        FileDescriptor::CopyWatch const& proceed) const {
    std::error_code code;
    if (!fs::is_regular_file(from, code)) failImporting(from, code ? systemReason(code.value()) : "it is not a file");
    createDirectories();
    auto const wanted = confinedAssetName(from.filename().string());
    if (fs::equivalent(from, assetsURL() / wanted, code)) return wanted;
    if (mode == ImportMode::move) {
        if (auto name = movedInto(assetsURL(), from, wanted)) return *name;
    }
    auto const name = broughtInto({assetsURL(), wanted}, from, mode, proceed);
    if (mode == ImportMode::move) fs::remove(from, code);
    return name;
}

}
