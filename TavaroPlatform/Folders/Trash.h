#pragma once

#include <filesystem>

/// The desktop's trash, as freedesktop.org describes it: file managers show what is in there, and can bring it back.
namespace tavaro::trash {

/// Something in the trash, and what is needed to bring it back.
struct Trashed {
    std::filesystem::path from;  // absolute
    std::filesystem::path files; // where it is now
    std::filesystem::path info;  // the note that says where it came from
};

/// Moves a file or folder there in one step: into the user's trash where that is on the same disk, else into one of
/// that disk. Throws `FileError`, and then it is where it was.
Trashed put(std::filesystem::path const& file);
/// Back to where it was, or beside what has that place by now, under the first free one of "Name 2", "Name 3", ….
/// Returns where it is. Throws `FileError`.
std::filesystem::path restore(Trashed const& trashed);

}
