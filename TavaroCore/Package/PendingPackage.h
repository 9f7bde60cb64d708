#pragma once

#include <TavaroCore/Files/FileError.h>
#include <TavaroCore/Files/HiddenFolder.h>
#include <TavaroCore/Package/ProjectPackage.h>

namespace tavaro {

/// A package that appears under its name only when complete, whatever ends the process before; else nothing stays of
/// it. What a killed process leaves is hidden, and goes when a package of that name is made again. Failures are
/// `FileError`s.
class PendingPackage {
public:
    explicit PendingPackage(ProjectPackage const& wanted);

    /// The package while it is filled, under the wanted name in a hidden folder.
    ProjectPackage const& package() const { return package_; }
    /// Fails when something has taken the name.
    void complete();

    /// A failure of the hidden package, with the place that the user knows of.
    FileError named(FileError const& failure) const;

private:
    ProjectPackage wanted_;
    HiddenFolder hidden_;
    ProjectPackage package_;
};

}
