#pragma once

#include <memory>
#include <optional>
#include <string>

#include <TavaroCore/Errors/Error.h>
#include <TavaroCore/Package/ProjectPackage.h>

namespace tavaro {

struct CubeLUT;
struct DemoProject;

/// What happens when something that a frame asks for cannot be used.
enum class EffectFailure {
    drop, // it is left out, and the log says so once: a preview goes on
    stop, // the failure is thrown: what is exported is what was asked for
};

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
    CameraTable(ProjectPackage package, EffectFailure failure) : package_(std::move(package)), failure_(failure) {}

    /// Null where the project's look has none. Where failures stop, throws `CameraTableError`.
    CubeLUT const* ensure(DemoProject const& project);

private:
    ProjectPackage package_;
    EffectFailure failure_;
    std::optional<std::string> asset_; // that `table_` was read from, or could not be
    std::shared_ptr<CubeLUT const> table_;
};

}
