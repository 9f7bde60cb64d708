#include <TavaroCore/Package/ProjectPackage.h>

#include <TavaroCore/Errors/SystemReason.h>
#include <TavaroCore/Files/AtomicFile.h>
#include <TavaroCore/Files/MappedFile.h>
#include <TavaroCore/Files/MoveUnlessTaken.h>
#include <TavaroCore/Files/PendingFile.h>
#include <TavaroCore/Package/EditorState.h>
#include <TavaroCore/Project/DemoProject.h>

#include <fmt/format.h>
#include <optional>

namespace tavaro {

namespace fs = std::filesystem;

namespace {

// A field of keystrokes in older documents that held what was typed.
constexpr std::string_view typedTextKey = "\"characters\":";

/// Looks for the key behind its quote: a document is full of quotes, at each of which a search would stop.
bool holdsTypedText(std::string_view document) {
    auto const key = typedTextKey.substr(1);
    for (auto at = document.find(key); at != document.npos; at = document.find(key, at + 1)) {
        if (at > 0 && document[at - 1] == typedTextKey[0]) return true;
    }
    return false;
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

PendingFile copied(fs::path const& from, fs::path const& to) {
    PendingFile copy(to, fs::status(from).permissions());
    copy.copy(from);
    return copy;
}

std::string broughtInto(fs::path const& folder, fs::path const& from, std::string const& wanted, ImportMode mode) {
    try {
        auto const to = folder / freeName(folder, wanted);
        auto asset = mode == ImportMode::link ? PendingFile::twin(from, to) : copied(from, to);
        return placedUnderFreeName(folder, wanted, [&](fs::path const& to) { return asset.commitUnlessTaken(to); });
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

}

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

void ProjectPackage::save(DemoProject const& project) const {
    auto const document = encodeProject(project);
    if (auto const before = MappedFile::open(projectFileURL()); before && before->bytes() == document) return;
    replaceFileKeepingBackup(projectFileURL(), backupFileURL(), document);
}

DemoProject ProjectPackage::load() const {
    auto const document = MappedFile::open(projectFileURL());
    if (!document) {
        throw FileError(FileError::Kind::cannotRead,
                        fmt::format("Could not open the project “{}”: it has no project.json.", url_.string()));
    }
    auto project = decodeProject(document->bytes());
    scrubTypedTextIfNeeded(document->bytes(), project);
    return project;
}

DemoProject ProjectPackage::loadBackup() const {
    auto const document = MappedFile::open(backupFileURL());
    if (!document) {
        throw FileError(FileError::Kind::cannotRead,
                        fmt::format("Could not restore the project “{}”: it has no previous save.", url_.string()));
    }
    return decodeProject(document->bytes());
}

DemoProject ProjectPackage::restoreBackup() const {
    auto project = loadBackup();
    bool const presentIsSound = [&] {
        try {
            load(); // removes typed text from both files, too
            return true;
        } catch (Error const&) {
            return false;
        }
    }();
    if (presentIsSound)
        exchangeFiles(projectFileURL(), backupFileURL());
    else
        writeFileAtomically(projectFileURL(), encodeProject(project));
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

void ProjectPackage::scrubTypedTextIfNeeded(std::string_view document, DemoProject const& project) const {
    if (!holdsTypedText(document)) return;
    try {
        // Without a backup of its own, which would keep the very text that has to go.
        writeFileAtomically(projectFileURL(), encodeProject(project));
        auto const backup = readWholeFile(backupFileURL());
        if (backup && holdsTypedText(*backup)) {
            writeFileAtomically(backupFileURL(), encodeProject(decodeProject(*backup)));
        }
    } catch (Error const&) {
        // A package that cannot be written, or a damaged backup, must still open; the next load tries again.
    }
}

std::string ProjectPackage::importAsset(fs::path const& from, ImportMode mode) const {
    std::error_code code;
    if (!fs::is_regular_file(from, code)) failImporting(from, code ? systemReason(code.value()) : "it is not a file");
    createDirectories();
    auto const wanted = confinedAssetName(from.filename().string());
    if (fs::equivalent(from, assetsURL() / wanted, code)) return wanted;
    if (mode == ImportMode::move) {
        if (auto name = movedInto(assetsURL(), from, wanted)) return *name;
    }
    auto const name = broughtInto(assetsURL(), from, wanted, mode);
    if (mode == ImportMode::move) fs::remove(from, code);
    return name;
}

}
