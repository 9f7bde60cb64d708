#pragma once

#include <memory>
#include <optional>
#include <string>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Package/ProjectPackage.h>

namespace tavaro {

struct CubeLUT;
struct DemoProject;

/// A colour table that cannot be used.
class CameraTableError : public Error {
public:
    enum class Kind { missing, unreadable };

    CameraTableError(Kind kind, std::string const& sentence) : Error(sentence), kind_(kind) {}
    Kind kind() const { return kind_; }

private:
    Kind kind_;
};

/// The colour table of the camera's look, read from the package when it is first asked for and kept.
class CameraTable {
public:
    explicit CameraTable(ProjectPackage package) : package_(std::move(package)) {}

    /// Whether the project's look has one.
    static bool isUsed(DemoProject const& project);

    /// Null where it has none. Throws `CameraTableError`, again and again without another look at the file.
    std::shared_ptr<CubeLUT const> ensure(DemoProject const& project);

    /// The next call looks again for a table that could not be used.
    void retry();

private:
    ProjectPackage package_;
    std::optional<std::string> asset_; // that `table_` was read from, or could not be
    std::shared_ptr<CubeLUT const> table_;
    std::optional<CameraTableError> failure_;
};

}
