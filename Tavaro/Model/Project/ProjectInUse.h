#pragma once

#include <TavaroCore/Files/FileError.h>

#include <fmt/format.h>

namespace tavaro {

/// Another program has the lock of the project, and nothing was saved; it may be free a moment later.
class ProjectInUse : public FileError {
public:
    explicit ProjectInUse(std::filesystem::path const& package)
        : FileError(Kind::cannotWrite,
                    fmt::format("Could not save the project “{}”: another program is editing it.", package.string())) {}
};

}
