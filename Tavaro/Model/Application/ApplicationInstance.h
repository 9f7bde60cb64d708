#pragma once

#include <TavaroCore/Files/FileDescriptor.h>

#include <filesystem>
#include <optional>
#include <utility>

namespace tavaro {

/// The one application that a user runs. Ends with the object, and with the process however that dies.
class ApplicationInstance {
public:
    /// "application.lock" beside the user's recordings.
    static std::filesystem::path usualFile();
    /// None while another process has it. Throws `FileError` where it cannot be known.
    static std::optional<ApplicationInstance> claim(std::filesystem::path const& file = usualFile());

private:
    explicit ApplicationInstance(FileDescriptor file) : file_(std::move(file)) {}

    FileDescriptor file_;
};

}
