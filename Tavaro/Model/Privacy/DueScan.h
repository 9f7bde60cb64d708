#pragma once

#include <TavaroCore/Files/FileDescriptor.h>

#include <filesystem>
#include <optional>

namespace tavaro {

class ProjectPackage;
struct DemoProject;

/// A new take that is yet to be looked at for private text, since its user wants that of each, or of this one, has an
/// empty file "scan.due" in its package, from the moment at which there is a package. However the program ends that
/// looks at it, the next one knows. Who looks holds the claim; it ends with the process.
class DueScan {
public:
    /// In a package that is being made, or in the working folder of a take, for who recovers it. Throws `FileError`.
    static void note(std::filesystem::path const& folder);
    static bool isNoted(std::filesystem::path const& folder);
    /// Whether it is noted and something was indeed not looked at.
    static bool isDue(ProjectPackage const& package, DemoProject const& project);
    /// What cannot be removed stays.
    static void forget(ProjectPackage const& package);
    /// None where nothing is due any more, or somebody else looks at it, in this process or another.
    static std::optional<DueScan> claim(ProjectPackage const& package, DemoProject const& project);

    /// It was looked at, or is not to be.
    void settle();

private:
    DueScan(std::filesystem::path file, FileDescriptor claimed)
        : file_(std::move(file))
        , claimed_(std::move(claimed)) {}

    std::filesystem::path file_;
    FileDescriptor claimed_; // locked where the disk knows locks
};

}
