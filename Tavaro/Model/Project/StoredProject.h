#pragma once

#include <TavaroCore/Files/FolderLock.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <filesystem>

namespace tavaro {

/// A project on the disk and its document as it was read, for who only looks at it.
struct StoredProject {
    ProjectPackage package;
    DemoProject project;
};

/// Reads "NAME.recproj"; the ending may be missing. Throws `FileError` with the project's name in the sentence, also
/// for a document that is damaged.
StoredProject openProject(std::filesystem::path const& given);

/// The document alone, with the same failures.
DemoProject loadDocument(ProjectPackage const& package);

/// For who loads, changes and saves: until it ends, edits of the project by other processes wait.
FolderLock lockForEditing(std::filesystem::path const& given);

}
