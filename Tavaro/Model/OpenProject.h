#pragma once

#include <TavaroCore/Files/FolderLock.h>
#include <TavaroCore/Package/ProjectPackage.h>
#include <TavaroCore/Project/DemoProject.h>

#include <filesystem>

namespace tavaro {

/// A project that lies on the disk, with its document.
struct OpenProject {
    ProjectPackage package;
    DemoProject project;
};

/// Opens "NAME.recproj"; the ending may be missing. Throws `FileError` with the project's name in the sentence, also
/// for a document that is damaged.
OpenProject openProject(std::filesystem::path const& given);

/// For who loads, changes and saves: until it ends, edits of the project by other processes wait.
FolderLock lockForEditing(std::filesystem::path const& given);

}
