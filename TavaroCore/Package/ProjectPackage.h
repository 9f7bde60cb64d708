#pragma once

#include <TavaroCore/Files/FileDescriptor.h>
#include <TavaroCore/Files/FolderLock.h>
#include <TavaroCore/Package/SavedDocument.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace tavaro {

class DocumentText;
struct DemoProject;
struct EditorState;

/// What importing a file into a package does with the original.
enum class ImportMode {
    copy,
    move,
    link, // the asset is the same file under a second name; a copy where the disks differ
};

/// One project on disk: a directory "NAME.recproj" with the document, the one before it, and every media file the
/// document names. Nothing here holds files open; two objects for the same folder are fine on one thread.
/// File failures throw `FileError`, documents that cannot be read `JSONError`, both unchanged.
class ProjectPackage {
public:
    static constexpr std::string_view directoryExtension = ".recproj";

    explicit ProjectPackage(std::filesystem::path url) : url_(std::move(url)) {}

    std::filesystem::path const& url() const { return url_; }
    std::filesystem::path projectFileURL() const { return url_ / "project.json"; }
    std::filesystem::path backupFileURL() const { return url_ / "project.previous.json"; }
    std::filesystem::path assetsURL() const { return url_ / "assets"; }
    std::filesystem::path damagedFileURL() const { return url_ / "project.damaged.json"; }
    std::filesystem::path thumbnailURL() const { return url_ / "thumbnail.png"; }
    std::filesystem::path editorStateURL() const { return url_ / "editor.json"; }
    /// Where the asset of that name lies; never outside the package, whatever the document says.
    std::filesystem::path assetURL(std::string_view name) const { return assetsURL() / confinedAssetName(name); }

    /// The last component of the name; "_invalid-asset" for what is no file name at all.
    static std::string confinedAssetName(std::string_view name);

    /// The lock that an edit holds from loading to saving, so that edits of several processes follow each other; waits
    /// for it. A project without a folder for assets gets one.
    FolderLock lockForEditing() const;
    /// The same without waiting: none when another has it.
    std::optional<FolderLock> lockForEditingUnlessTaken() const;

    /// Makes the package's folders, with those above it.
    void createDirectories() const;

    /// Writes the document. When it differs from the one on disk, that one becomes the backup. A crash or a full disk
    /// at any instant leaves a complete old or new document and a complete backup. Who saved before hands in what that
    /// returned: a log that is still the same is then copied from the file before.
    SavedDocument save(DemoProject const& project, std::optional<SavedDocument> const& before = {}) const;
    /// The same where the document on the disk cannot be read: it is kept as "project.damaged.json", and the backup
    /// stays what it is, the last document that could be read.
    void saveOverDamaged(DemoProject const& project) const;

    /// Reads the document. Text that older versions logged with keystrokes is removed from the disk at once, unless
    /// somebody edits: who does calls `removeTypedText` under the lock, and saving does so, too.
    DemoProject load() const;
    /// Removes such text from the document and the backup. The caller holds the lock for editing. What cannot be
    /// written stays, so that a project on a disk that only reads still opens.
    void removeTypedText() const;

    /// Reads the document as it stood before the last save that changed it.
    DemoProject loadBackup() const;
    /// Goes back to the previous save and returns it. The present document becomes the backup, so doing this twice
    /// changes nothing; one that cannot be read is kept as "project.damaged.json". As crash-safe as `save`.
    DemoProject restoreBackup() const;

    void saveEditorState(EditorState const& state) const;
    /// A state like new where there is none, or none that can be read.
    EditorState loadEditorState() const;

    /// Brings a media file into the package and returns its asset name: the file's own name, or with a number added
    /// ("take 2.mov") when another asset has it. Moving falls back to a copy across file systems. `proceed` hears of
    /// what is copied, and can end that; it then fails.
    std::string importAsset(std::filesystem::path const& from, ImportMode mode = ImportMode::copy,
                            FileDescriptor::CopyWatch const& proceed = {}) const;

private:
    struct Reading;

    Reading read() const;
    std::optional<SavedDocument> saveWithLogOf(SavedDocument const& before, DocumentText const& document) const;
    std::filesystem::path folderToLock() const;
    bool backupHoldsFormerTypedText() const;

    std::filesystem::path url_;
};

}
